#include "ui/settings/SettingsWindow.h"

#include "ui/boards/SidebarRow.h"
#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/fields/TypedField.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/settings/UnkeptLine.h"

#include <QAction>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QStackedWidget>

#include <algorithm>
#include <utility>

namespace korvex::ui {

namespace {

constexpr const char* kGeometryKey = "settingsWindowGeometry";
constexpr const char* kPaneKey = "settingsWindowPane";
constexpr QSize kFirstSize(760, 600);
constexpr QSize kSmallestSize(360, 320);
/// In pixels at the standard font size: of the list, and of the least window that has room for it.
constexpr int kListWidth = 170;
constexpr int kWidthForList = 600;

} // namespace

SettingsWindow::SettingsWindow(std::vector<SettingsPaneMaker> panes, const QString& program,
                               app::UserDefaults& defaults, const Theme& theme)
    : m_panes(std::move(panes)),
      m_defaults(defaults),
      m_place(*this, defaults, kGeometryKey),
      m_theme(theme),
      m_layout(new QBoxLayout(QBoxLayout::LeftToRight, this)),
      m_side(new QWidget(this)),
      m_list(new QWidget(m_side)),
      m_choice(new ListChoice(m_side)),
      m_stack(new QStackedWidget) {
    setWindowTitle(tr("Settings – %1").arg(program));
    Accessibility::setRole(*this, QAccessible::Window);
    setAttribute(Qt::WA_QuitOnClose, false); // the main window is the program
    setMinimumSize(kSmallestSize);
    auto* const side = new QVBoxLayout(m_side);
    side->setContentsMargins(0, 0, 0, 0);
    side->addWidget(m_choice);
    side->addWidget(m_list);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addWidget(m_side);
    auto* const shown = new QVBoxLayout;
    shown->setContentsMargins(0, 0, 0, 0);
    shown->setSpacing(0);
    shown->addWidget(new UnkeptLine(defaults, theme, this));
    shown->addWidget(m_stack, 1);
    m_layout->addLayout(shown, 1);
    addRows();
    Accessibility::setRole(*m_list, QAccessible::List);
    for (auto* const list : {m_list, static_cast<QWidget*>(m_choice)}) {
        list->setAccessibleName(tr("Settings"));
    }
    connect(m_choice, &QComboBox::activated, this, &SettingsWindow::showPane);
    addShortcut(Qt::CTRL | Qt::Key_W, &SettingsWindow::closeByKey);
    addShortcut(Qt::CTRL | Qt::Key_Q, &SettingsWindow::quitRequested);
    connect(&theme, &Theme::changed, this, &SettingsWindow::applyTheme);
    applyTheme();
    defaults.mayWait(kPaneKey);
    showPane(lastPane());
    m_place.restore(kFirstSize);
}

SettingsWindow::~SettingsWindow() {
    if (isVisible()) {
        savePlace();
    }
}

void SettingsWindow::addShortcut(const QKeySequence& keys, void (SettingsWindow::*act)()) {
    auto* const action = new QAction(this);
    action->setShortcut(keys);
    addAction(action);
    connect(action, &QAction::triggered, this, act);
}

void SettingsWindow::closeByKey() {
    close();
}

void SettingsWindow::takeTyped() {
    for (auto* const field : findChildren<TypedField*>()) {
        field->take();
    }
}

bool SettingsWindow::leave() {
    for (auto* const field : findChildren<TypedField*>()) {
        const auto wasTold = field->isVisible() && !field->problem().isEmpty();
        if (field->take()) {
            continue;
        }
        if (!wasTold) {
            for (int i = 0; i < m_stack->count(); ++i) {
                if (m_stack->widget(i)->isAncestorOf(field)) {
                    showPane(i);
                }
            }
            field->setFocus(Qt::OtherFocusReason);
            return false;
        }
        field->discard();
    }
    return true;
}

QString SettingsWindow::loss() const {
    QStringList losses;
    for (const auto* const pane : findChildren<SettingsPane*>()) {
        losses.append(pane->loss());
    }
    losses.removeAll(QString());
    return losses.join(QLatin1Char('\n'));
}

void SettingsWindow::cancelWork() {
    for (auto* const pane : findChildren<SettingsPane*>()) {
        pane->cancelWork();
    }
}

void SettingsWindow::addRows() {
    auto* const column = new QVBoxLayout(m_list);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    for (int i = 0; i < static_cast<int>(m_panes.size()); ++i) {
        const auto& pane = m_panes[static_cast<std::size_t>(i)];
        auto* const row = new SidebarRow(pane.icon, pane.title, m_theme, m_list);
        connect(row, &SidebarRow::clicked, this, [this, i] { showPane(i); });
        connect(row, &SidebarRow::walked, this, [this, i](int direction) {
            showPane(std::clamp(i + direction, 0, m_stack->count() - 1));
        });
        connect(row, &SidebarRow::walkedToEnd, this,
                [this](int direction) { showPane(direction < 0 ? 0 : m_stack->count() - 1); });
        column->addWidget(row);
        m_rows.push_back(row);
        m_choice->addItem(pane.title);
        m_stack->addWidget(new QWidget); // until it is looked at
    }
    column->addStretch();
}

void SettingsWindow::showPane(int index) {
    if (auto& make = m_panes.at(static_cast<std::size_t>(index)).make) {
        auto* const empty = m_stack->widget(index);
        auto* const pane = std::exchange(make, nullptr)();
        connect(pane, &SettingsPane::workEnded, this, &SettingsWindow::workEnded);
        m_stack->insertWidget(index, pane);
        m_stack->removeWidget(empty);
        delete empty;
    }
    m_stack->setCurrentIndex(index);
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const auto isShown = static_cast<int>(i) == index;
        m_rows[i]->setChecked(isShown);
        m_rows[i]->setFocusPolicy(isShown ? Qt::TabFocus : Qt::NoFocus);
    }
    m_choice->setCurrentIndex(index);
    if (focusWidget() && m_list->isAncestorOf(focusWidget())) {
        focusList(); // it goes along
    }
}

void SettingsWindow::comeForward() {
    const auto opens = !isVisible();
    if (opens) {
        m_place.restore(kFirstSize); // window managers put one that comes back elsewhere
    }
    bringForward(*this);
    if (opens || !focusWidget()) {
        focusList();
    }
}

void SettingsWindow::focusList() {
    auto* const row = m_rows[static_cast<std::size_t>(m_stack->currentIndex())];
    (m_list->isHidden() ? static_cast<QWidget*>(m_choice) : row)->setFocus(Qt::TabFocusReason);
}

void SettingsWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

void SettingsWindow::arrange() {
    const auto isWide = width() >= m_theme.scaled(kWidthForList);
    const auto hadKeyboard = focusWidget() && m_side->isAncestorOf(focusWidget());
    m_layout->setDirection(isWide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    m_list->setVisible(isWide);
    m_choice->setVisible(!isWide);
    m_side->setMaximumWidth(isWide ? m_theme.scaled(kListWidth) : QWIDGETSIZE_MAX);
    m_side->setMinimumWidth(isWide ? m_theme.scaled(kListWidth) : 0);
    const auto margin = m_theme.space(Space::wide);
    const auto above = m_theme.space(Space::medium);
    m_side->layout()->setContentsMargins(isWide ? 0 : margin, above, isWide ? 0 : margin, above);
    if (hadKeyboard) {
        focusList();
    }
}

void SettingsWindow::applyTheme() {
    auto ground = m_side->palette();
    ground.setColor(QPalette::Window, m_theme.colors().sidebar);
    m_side->setPalette(ground);
    m_side->setAutoFillBackground(true);
    arrange();
}

void SettingsWindow::savePlace() {
    m_place.save();
    m_defaults.setString(kPaneKey, m_panes[static_cast<std::size_t>(m_stack->currentIndex())].name);
}

int SettingsWindow::lastPane() const {
    const auto name = m_defaults.string(kPaneKey);
    const auto found = std::find_if(m_panes.begin(), m_panes.end(),
                                    [&](const auto& each) { return each.name == name; });
    return found == m_panes.end() ? 0 : static_cast<int>(found - m_panes.begin());
}

void SettingsWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        auto* const field = qobject_cast<TypedField*>(focusWidget());
        if (!field || !field->takeBack()) {
            close();
        }
    } else {
        QWidget::keyPressEvent(event);
    }
}

void SettingsWindow::closeEvent(QCloseEvent* event) {
    savePlace();
    event->setAccepted(leave());
}

} // namespace korvex::ui
