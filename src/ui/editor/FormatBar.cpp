#include "ui/editor/FormatBar.h"

#include "ui/editor/ColumnResizer.h"
#include "ui/editor/LanguageMenu.h"
#include "ui/editor/ListMenu.h"
#include "ui/editor/TableMenu.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextLook.h"

#include <QActionGroup>
#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMenu>
#include <QPainter>
#include <QShortcut>
#include <QToolButton>

#include <algorithm>

namespace korvex::ui {

using richtext::RichTextAction;
using Kind = RichTextAction::Kind;

FormatBar::FormatBar(RichTextEdit& edit, richtext::CodeHighlighter& code, const Theme& theme,
                     QWidget* parent)
    : QToolBar(parent),
      m_edit(edit),
      m_code(code),
      m_theme(theme),
      m_tables(edit),
      m_lists(new ListMenu(edit, theme, this)),
      m_panels(edit, code, theme) {
    setAccessibleName(tr("Format"));
    setMovable(false);
    // Else a click would give the keyboard to what the bar floats over.
    setFocusPolicy(Qt::ClickFocus);
    setFocusProxy(&edit);
    addHeadings();
    addSeparator();
    addCommand(Kind::bold, QStringLiteral("text-b"), tr("Bold"), tr("Ctrl+B"),
               [](const FormatState& state) { return state.isBold; });
    addCommand(Kind::italic, QStringLiteral("text-italic"), tr("Italic"), tr("Ctrl+I"),
               [](const FormatState& state) { return state.isItalic; });
    addCommand(Kind::underline, QStringLiteral("text-underline"), tr("Underline"), tr("Ctrl+U"),
               [](const FormatState& state) { return state.isUnderlined; });
    addCommand(Kind::strikethrough, QStringLiteral("text-strikethrough"), tr("Strikethrough"),
               tr("Ctrl+Shift+X"), [](const FormatState& state) { return state.isStruckThrough; });
    addSeparator();
    addLists();
    addCommand(Kind::link, QStringLiteral("link"), tr("Link"), tr("Ctrl+Shift+K"),
               [](const FormatState& state) { return !state.link.isEmpty(); });
    addCommand(Kind::code, QStringLiteral("code"), tr("Inline code"), tr("Ctrl+E"),
               [](const FormatState& state) { return state.isCode && !state.isCodeBlock; });
    addCommand(Kind::codeBlock, QStringLiteral("code-block"), tr("Code block"), QString(),
               [](const FormatState& state) { return state.isCodeBlock; });
    // What follows comes and goes with the place of the caret; so nothing else ever moves.
    addTableControls();
    addLanguage();
    prepareButtons();
    new ColumnResizer(edit, this);
    auto* const intoBar = new QShortcut(Qt::Key_F6, &edit, nullptr, nullptr, Qt::WidgetShortcut);
    connect(intoBar, &QShortcut::activated, this, &FormatBar::takeKeyboard);
    connect(this, &QObject::destroyed, intoBar, &QObject::deleteLater);

    connect(&edit, &RichTextEdit::formatStateChanged, this, &FormatBar::showState);
    connect(&edit, &QTextEdit::cursorPositionChanged, this, &FormatBar::showTableState);
    connect(&edit, &QTextEdit::textChanged, this, &FormatBar::showTableState);
    connect(&edit, &RichTextEdit::linkRequested, this,
            [this] { m_panels.openLink(caretAnchor()); });
    connect(&edit, &RichTextEdit::tableRequested, this,
            [this] { m_panels.openTable(anchorOf(m_table)); });
    connect(&edit, &RichTextEdit::listsRequested, this,
            [this] { m_lists->popup(caretAnchor().bottomLeft()); });
    connect(&theme, &Theme::changed, this, &FormatBar::applyTheme);
    m_arrivals = code.arrived().connect([this] { showState(); });
    applyTheme();
}

void FormatBar::takeKeyboard() {
    buttonOf(m_heading)->setFocus(Qt::TabFocusReason);
}

QAction* FormatBar::add(const QString& icon, const QString& title, const QString& keys, IsOn isOn) {
    auto* const action = addAction(withKeys(title, keys));
    action->setToolTip(keys.isEmpty() ? title : tr("%1 (%2)").arg(title, keys));
    action->setCheckable(isOn != nullptr);
    m_controls.push_back({action, icon, isOn});
    return action;
}

void FormatBar::addCommand(Kind kind, const QString& icon, const QString& title,
                           const QString& keys, IsOn isOn) {
    connect(add(icon, title, keys, isOn), &QAction::triggered, this,
            [this, kind] { perform({kind}); });
}

void FormatBar::addHeadings() {
    auto* const menu = new QMenu(this);
    auto* const group = new QActionGroup(this);
    const auto addLevel = [&](const QString& title, std::optional<richtext::HeadingLevel> level) {
        const auto digit = level ? static_cast<int>(*level) : 0;
        auto* const action = menu->addAction(withKeys(title, tr("Ctrl+Alt+%1").arg(digit)));
        action->setCheckable(true);
        action->setActionGroup(group);
        connect(action, &QAction::triggered, this,
                [this, level] { perform(RichTextAction::heading(level)); });
        m_headings.emplace_back(action, level);
    };
    addLevel(tr("Normal text"), std::nullopt);
    for (const auto level : richtext::kHeadingLevels) {
        addLevel(translated(richtext::titleOf(level)), level);
    }
    m_heading = add(QString(), tr("Heading"), QString());
    m_heading->setToolTip(tr("Heading (Ctrl+Alt+1 to 3)"));
    m_heading->setMenu(menu);
}

void FormatBar::addLists() {
    auto* const action = add(QStringLiteral("list-bullets"), tr("Lists"), QString(),
                             [](const FormatState& state) { return state.list != ListKind::none; });
    action->setToolTip(tr("Lists (Ctrl+Shift+7 and 8)"));
    action->setMenu(m_lists);
}

void FormatBar::addTableControls() {
    m_table = add(QStringLiteral("table"), tr("Table"), QString());
    connect(m_table, &QAction::triggered, this, [this] { perform({Kind::table}); });
    m_tableMenu = add(QStringLiteral("table"), tr("Table"), QString());
    m_tableMenu->setMenu(new TableMenu(m_edit, this));
    for (const auto& [what, icon] :
         {std::pair(TableAction::insertRowAbove, "rows-plus-top"),
          std::pair(TableAction::insertRowBelow, "rows-plus-bottom"),
          std::pair(TableAction::insertColumnLeft, "columns-plus-left"),
          std::pair(TableAction::insertColumnRight, "columns-plus-right")}) {
        auto* const action = add(QString::fromLatin1(icon), titleOf(what), QString());
        connect(action, &QAction::triggered, this, [this, each = what] {
            m_edit.setFocus();
            m_tables.perform(each);
        });
        m_tableActions.emplace_back(action, what);
    }
}

void FormatBar::addLanguage() {
    m_language = add(QStringLiteral("caret-down"), tr("Language"), QString());
    m_language->setToolTip(tr("Language of the code"));
    connect(m_language, &QAction::triggered, this,
            [this] { m_panels.openLanguages(anchorOf(m_language)); });
}

QToolButton* FormatBar::buttonOf(const QAction* action) const {
    return qobject_cast<QToolButton*>(widgetForAction(const_cast<QAction*>(action)));
}

QToolButton* FormatBar::moreButton() const {
    return findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"));
}

void FormatBar::prepareButtons() {
    for (const auto& control : m_controls) {
        auto* const button = buttonOf(control.action);
        button->setFocusPolicy(Qt::TabFocus);
        button->setAccessibleName(control.action->text().section(kBeforeKeys, 0, 0));
        button->setPopupMode(QToolButton::InstantPopup);
        button->installEventFilter(this);
    }
    buttonOf(m_heading)->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto* const language = buttonOf(m_language);
    language->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    language->setLayoutDirection(turnedDirection()); // the caret stands behind the name
    auto* const more = moreButton();
    more->setFocusPolicy(Qt::TabFocus);
    more->setAccessibleName(tr("More"));
    more->setToolTip(tr("More"));
    more->installEventFilter(this);
}

void FormatBar::perform(RichTextAction action) {
    m_edit.setFocus();
    m_edit.perform({std::move(action)});
    // A command that was refused has still switched its control.
    showState();
}

void FormatBar::showState() {
    const auto& state = m_edit.formatState();
    for (const auto& control : m_controls) {
        if (control.isOn) {
            control.action->setChecked(control.isOn(state));
        }
    }
    for (const auto& [action, level] : m_headings) {
        action->setChecked(level == state.heading);
        if (level == state.heading) {
            m_heading->setText(action->text().section(kBeforeKeys, 0, 0));
            buttonOf(m_heading)->setAccessibleDescription(m_heading->text());
        }
    }
    m_language->setVisible(state.isCode);
    if (state.isCode) {
        m_language->setText(LanguageMenu::titleOf(m_code, state.codeLanguage));
        auto* const button = buttonOf(m_language);
        button->setAccessibleDescription(m_language->text());
        // Qt asks for room between the name and the caret behind it, which belongs together.
        button->setFixedWidth(fontMetrics().horizontalAdvance(m_language->text()) +
                              button->iconSize().width() + 2 * fontMetrics().averageCharWidth());
    }
    m_table->setVisible(!state.isInTable);
    m_table->setEnabled(!state.isCodeBlock);
    m_tableMenu->setVisible(state.isInTable);
    for (const auto& [action, what] : m_tableActions) {
        action->setVisible(state.isInTable);
    }
    showTableState();
}

void FormatBar::showTableState() {
    if (m_edit.formatState().isInTable) {
        for (const auto& [action, what] : m_tableActions) {
            action->setEnabled(m_tables.isAvailable(what));
        }
    }
}

void FormatBar::applyTheme() {
    const auto& colors = m_theme.colors();
    const auto size = m_theme.extent(Extent::icon);
    setIconSize({size, size});
    const auto around = m_theme.space(Space::small);
    layout()->setContentsMargins(around, around, around, around);
    layout()->setSpacing(m_theme.space(Space::hair));
    setFont(m_theme.font());
    for (const auto& control : m_controls) {
        if (!control.icon.isEmpty()) {
            control.action->setIcon(IconSet::icon(control.icon, colors.text));
        }
    }
    const auto caret = m_theme.extent(Extent::smallIcon);
    buttonOf(m_language)->setIconSize({caret, caret});
    moreButton()->setIcon(IconSet::icon(QStringLiteral("dots-three"), colors.text));
    const TextLook look(m_theme);
    int width = 0;
    for (const auto& [action, level] : m_headings) {
        action->setFont(level ? look.fontOf(richtext::fontOf(*level)) : m_theme.font());
        width = std::max(
            width, fontMetrics().horizontalAdvance(action->text().section(kBeforeKeys, 0, 0)));
    }
    // The other controls stay where they are when the caret comes to a heading.
    buttonOf(m_heading)->setMinimumWidth(width + 2 * fontMetrics().averageCharWidth() + size);
    showState();
}

QRect FormatBar::anchorOf(const QAction* action) const {
    const auto* const button = buttonOf(action);
    const auto* const place = button->isVisible() ? button : moreButton();
    return {place->mapToGlobal(QPoint()), place->size()};
}

QRect FormatBar::caretAnchor() const {
    const auto caret = m_edit.cursorRect();
    return {m_edit.viewport()->mapToGlobal(caret.topLeft()), caret.size()};
}

bool FormatBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Escape:
        case Qt::Key_F6:
            m_edit.setFocus();
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Down: {
            auto* const button = static_cast<QToolButton*>(watched);
            const auto* const action = button->defaultAction();
            if (button->menu() || (action && action->menu())) {
                button->showMenu();
            } else if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_Down) {
                button->click();
            }
            return true;
        }
        default:
            break;
        }
    }
    return QToolBar::eventFilter(watched, event);
}

bool FormatBar::event(QEvent* event) {
    const auto isDone = QToolBar::event(event);
    if (event->type() == QEvent::LayoutRequest) {
        Q_EMIT sizeChanged();
    }
    if (dynamic_cast<const QMouseEvent*>(event)) {
        // A press beside the controls is none on what the bar floats over; a wheel turns that.
        event->accept();
        return true;
    }
    return isDone;
}

void FormatBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Shapes::paintPanel(painter, rect(), m_theme.radius(Radius::large), m_theme.colors());
}

} // namespace korvex::ui
