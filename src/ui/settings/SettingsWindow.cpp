#include "ui/settings/SettingsWindow.h"

#include "ui/boards/SidebarRow.h"
#include "ui/kit/fields/TypedField.h"
#include "ui/kit/pages/NoticeLine.h"
#include "ui/kit/speech/Accessibility.h"

#include <QAction>
#include <QBoxLayout>
#include <QComboBox>
#include <QKeyEvent>
#include <QStackedWidget>

#include <algorithm>
#include <utility>

namespace korvex::ui {

namespace {

constexpr const char* kGeometryKey = "settingsWindowGeometry";
constexpr QSize kFirstSize(760, 600);
constexpr QSize kSmallestSize(360, 320);
/// In pixels at the standard font size: of the list, and of the least window that has room for it.
constexpr int kListWidth = 170;
constexpr int kWidthForList = 600;

} // namespace

SettingsWindow::SettingsWindow(std::vector<SettingsPaneMaker> panes, app::UserDefaults& defaults,
                               const Theme& theme)
    : m_panes(std::move(panes)),
      m_defaults(defaults),
      m_theme(theme),
      m_layout(new QBoxLayout(QBoxLayout::LeftToRight, this)),
      m_side(new QWidget(this)),
      m_list(new QWidget(m_side)),
      m_choice(new QComboBox(m_side)),
      m_stack(new QStackedWidget),
      m_unkept(new NoticeLine({.icon = QStringLiteral("warning-circle"),
                               .text = tr("Settings cannot be saved: their file or folder cannot "
                                          "be written. What is set holds until Korvex ends.")},
                              theme)) {
    setWindowTitle(tr("Settings – Korvex"));
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
    shown->addWidget(m_unkept);
    shown->addWidget(m_stack, 1);
    m_layout->addLayout(shown, 1);
    m_keptChanges = defaults.keptChanged().connect([this] { showKept(); });
    showKept();
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
    showPane(0);
    resize(kFirstSize);
    defaults.mayWait(kGeometryKey);
    if (const auto place = defaults.bytes(kGeometryKey)) {
        restoreGeometry(
            {reinterpret_cast<const char*>(place->data()), static_cast<qsizetype>(place->size())});
    }
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

void SettingsWindow::showKept() {
    m_unkept->setVisible(!m_defaults.isKept());
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
        m_stack->insertWidget(index, std::exchange(make, nullptr)());
        m_stack->removeWidget(empty);
        delete empty;
    }
    m_stack->setCurrentIndex(index);
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        m_rows[i]->setChecked(static_cast<int>(i) == index);
    }
    m_choice->setCurrentIndex(index);
    if (focusWidget() && m_list->isAncestorOf(focusWidget())) {
        focusList(); // it goes along
    }
}

void SettingsWindow::comeForward() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
    if (!focusWidget()) {
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
    const auto place = saveGeometry();
    m_defaults.setBytes(kGeometryKey, {place.begin(), place.end()});
}

void SettingsWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void SettingsWindow::closeEvent(QCloseEvent* event) {
    savePlace();
    event->setAccepted(leave());
}

} // namespace korvex::ui
