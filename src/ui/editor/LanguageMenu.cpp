#include "ui/editor/LanguageMenu.h"

#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QLineEdit>
#include <QListWidget>

#include <algorithm>
#include <vector>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kPanelWidth = 240;
constexpr int kListHeight = 280;
constexpr int kSmallestListHeight = 60;
/// What a window has to have room for besides the list.
constexpr int kAroundList = 80;

/// How well a language fits what is searched: the smaller the better.
enum class Fit { exact, start, part, none };

Fit fitOf(const QString& name, const QString& id, const QString& searched) {
    if (searched.isEmpty()) {
        return Fit::exact; // all of them, in their order
    }
    auto best = Fit::none;
    for (const auto& text : {name, id}) {
        const auto place = text.indexOf(searched, 0, Qt::CaseInsensitive);
        const auto fit = place < 0                       ? Fit::none
                         : place > 0                     ? Fit::part
                         : text.size() > searched.size() ? Fit::start
                                                         : Fit::exact;
        best = std::min(best, fit);
    }
    return best;
}

/// The first two are ours, the others' names are their makers'.
QString nameOf(const richtext::CodeLanguage& language) {
    const auto isOurs = language.id == richtext::CodeSyntax::kAutomatic ||
                        language.id == richtext::CodeSyntax::kPlainText;
    return isOurs ? translated(language.name) : toQString(language.name);
}

} // namespace

LanguageMenu::LanguageMenu(richtext::CodeHighlighter& code, const QString& current,
                           const Theme& theme, QWidget* window)
    : ChoicePopover(new QListWidget, theme, window),
      m_code(code),
      m_current(current),
      m_list(static_cast<QListWidget*>(&list())) {
    setUp({.choice = tr("Language of the code"),
           .field = tr("Search languages"),
           .list = tr("Languages")});
    setPanelWidth(theme.scaled(kPanelWidth));
    m_list->setFixedHeight(std::clamp(window->height() - theme.scaled(kAroundList),
                                      theme.scaled(kSmallestListHeight),
                                      theme.scaled(kListHeight)));
    const auto size = theme.extent(Extent::smallIcon);
    m_list->setIconSize({size, size});
    m_arrivals = m_code.arrived().connect([this] {
        if (static_cast<std::size_t>(m_list->count()) < m_code.languages().size()) {
            fill();
        }
    });
    fill();
    field().setFocus();
}

QString LanguageMenu::titleOf(richtext::CodeHighlighter& code, const QString& id) {
    const auto& languages = code.languages();
    const auto found =
        std::find_if(languages.begin(), languages.end(),
                     [utf8 = toUtf8(id)](const auto& each) { return each.id == utf8; });
    return found == languages.end() ? id : isolated(nameOf(*found));
}

void LanguageMenu::fill() {
    const auto searched = field().text().trimmed();
    const auto* const before = m_list->currentItem();
    // The choice of the user stays where more languages arrive; another search starts anew.
    const auto kept =
        before && searched.isEmpty() ? before->data(Qt::UserRole).toString() : m_current;
    std::vector<std::pair<Fit, const richtext::CodeLanguage*>> fitting;
    for (const auto& language : m_code.languages()) {
        const auto fit = fitOf(nameOf(language), toQString(language.id), searched);
        if (fit != Fit::none) {
            fitting.emplace_back(fit, &language);
        }
    }
    std::stable_sort(fitting.begin(), fitting.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });

    // One selection everywhere: a tint, on which the text keeps its colour.
    const auto check = IconSet::pixmap(QStringLiteral("check"), theme().colors().text,
                                       m_list->iconSize().width(), devicePixelRatioF());
    QIcon tick(check);
    tick.addPixmap(check, QIcon::Selected);
    // An empty icon of the same size, so that all names begin at one edge.
    QPixmap nothing(m_list->iconSize());
    nothing.fill(Qt::transparent);
    m_list->clear();
    for (const auto& [fit, language] : fitting) {
        const auto id = toQString(language->id);
        const auto isCurrent = id == m_current;
        auto* const item = new QListWidgetItem(isCurrent ? tick : QIcon(nothing),
                                               isolated(nameOf(*language)), m_list);
        item->setData(Qt::UserRole, id);
        if (isCurrent) {
            item->setData(Qt::AccessibleDescriptionRole, tr("Chosen"));
        }
        if (searched.isEmpty() && id == kept) {
            m_list->setCurrentItem(item);
        }
    }
    if (!m_list->currentItem() && m_list->count() > 0) {
        m_list->setCurrentRow(0);
    }
    m_list->scrollToItem(m_list->currentItem());
}

void LanguageMenu::choose() {
    if (const auto* const item = m_list->currentItem()) {
        const auto id = item->data(Qt::UserRole).toString();
        closeNow();
        Q_EMIT chosen(id);
    }
}

} // namespace korvex::ui
