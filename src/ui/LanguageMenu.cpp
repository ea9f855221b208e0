#include "ui/LanguageMenu.h"

#include "ui/IconSet.h"
#include "ui/Text.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace korvex::ui {

namespace {

constexpr int kPanelWidth = 240;
constexpr int kListHeight = 280;
constexpr int kSmallestListHeight = 60;
/// What a window has to have room for besides the list.
constexpr int kAroundList = 80;
constexpr int kMargin = 10;

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
    const bool isOurs = language.id == richtext::CodeSyntax::kAutomatic ||
                        language.id == richtext::CodeSyntax::kPlainText;
    return isOurs ? QCoreApplication::translate("korvex::ui::LanguageMenu", language.name.c_str())
                  : toQString(language.name);
}

} // namespace

LanguageMenu::LanguageMenu(richtext::CodeHighlighter& code, const QString& current,
                           const Theme& theme, QWidget* window)
    : Popover(theme, window),
      m_code(code),
      m_current(current),
      m_search(new QLineEdit(this)),
      m_list(new QListWidget(this)) {
    setAccessibleName(tr("Language of the code"));
    setFixedWidth(theme.scaled(kPanelWidth));
    m_search->setPlaceholderText(tr("Search languages"));
    m_search->setAccessibleName(tr("Search languages"));
    m_search->setClearButtonEnabled(true);
    m_search->setMaxLength(100);
    m_search->installEventFilter(this);
    m_list->setAccessibleName(tr("Languages"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->setUniformItemSizes(true);
    m_list->setFixedHeight(std::clamp(window->height() - theme.scaled(kAroundList),
                                      theme.scaled(kSmallestListHeight),
                                      theme.scaled(kListHeight)));
    auto quiet = m_list->palette();
    quiet.setColor(QPalette::Base, theme.colors().content);
    m_list->setPalette(quiet);
    m_list->setFocusPolicy(Qt::NoFocus); // the keys of the search field walk in it
    const int size = theme.scaled(14);
    m_list->setIconSize({size, size});
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->setSpacing(6);
    column->addWidget(m_search);
    column->addWidget(m_list);
    connect(m_search, &QLineEdit::textChanged, this, &LanguageMenu::fill);
    connect(m_list, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        m_list->setCurrentItem(item);
        choose();
    });
    connect(m_list, &QListWidget::currentRowChanged, this, [this](int row) {
        // The list never has the keyboard; a screen reader is told where the keys have come to.
        QAccessibleEvent event(m_list, QAccessible::Focus);
        event.setChild(row);
        QAccessible::updateAccessibility(&event);
    });
    m_arrivals = m_code.arrived().connect([this] {
        if (static_cast<std::size_t>(m_list->count()) < m_code.languages().size()) {
            fill();
        }
    });
    fill();
    m_search->setFocus();
    setFocusProxy(m_search);
}

QString LanguageMenu::titleOf(richtext::CodeHighlighter& code, const QString& id) {
    const auto& languages = code.languages();
    const auto found =
        std::find_if(languages.begin(), languages.end(),
                     [utf8 = toUtf8(id)](const auto& each) { return each.id == utf8; });
    return found == languages.end() ? id : nameOf(*found);
}

void LanguageMenu::fill() {
    const auto searched = m_search->text().trimmed();
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

    const auto& colors = theme().colors();
    const auto check = [&](const QColor& color) {
        return IconSet::pixmap(QStringLiteral("check"), color, m_list->iconSize().width(),
                               devicePixelRatioF());
    };
    QIcon tick(check(colors.text));
    tick.addPixmap(check(colors.onAccent), QIcon::Selected);
    // An empty icon of the same size, so that all names begin at one edge.
    QPixmap nothing(m_list->iconSize());
    nothing.fill(Qt::transparent);
    m_list->clear();
    for (const auto& [fit, language] : fitting) {
        const auto id = toQString(language->id);
        const bool isCurrent = id == m_current;
        auto* const item =
            new QListWidgetItem(isCurrent ? tick : QIcon(nothing), nameOf(*language), m_list);
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

bool LanguageMenu::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_search && event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            QApplication::sendEvent(m_list, event);
            return true;
        default:
            break;
        }
    }
    return Popover::eventFilter(watched, event);
}

void LanguageMenu::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        choose();
    } else {
        Popover::keyPressEvent(event);
    }
}

} // namespace korvex::ui
