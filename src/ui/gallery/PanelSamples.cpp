#include "ui/gallery/PanelSamples.h"

#include "ui/gallery/ShownState.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/kit/theme/Danger.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QActionGroup>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kPanelWidth = 240;
constexpr int kListHeight = 200;

/// A panel that has a place in a layout.
class Panel final : public QFrame {
public:
    Panel(const Theme& theme, QWidget* parent) : QFrame(parent), m_theme(theme) {
        const auto margin = theme.space(Space::large);
        auto* const column = new QVBoxLayout(this);
        column->setContentsMargins(margin, margin, margin, margin);
    }
    QVBoxLayout& column() { return static_cast<QVBoxLayout&>(*layout()); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        Shapes::paintPanel(painter, rect(), m_theme.radius(Radius::large), m_theme.colors());
    }

private:
    const Theme& m_theme;
};

QWidget* makeMenu(const Theme& theme) {
    auto* const menu = new QMenu;
    menu->setParent(menu->parentWidget(), Qt::Widget); // a part of the window, not one itself
    const MenuItems items(*menu, *menu);
    items.add(QStringLiteral("New text"), Qt::CTRL | Qt::SHIFT | Qt::Key_T, [] {});
    auto& chosen = items.add(QStringLiteral("Rename board"), Qt::Key_F2, [] {});
    items.add(QStringLiteral("Delete board…"), {}, [] {}).setEnabled(false);
    menu->addSeparator();
    menu->addAction(IconSet::icon(QStringLiteral("list-bullets"), theme.colors().text),
                    QStringLiteral("Bulleted list"));
    auto* const spacing = new QActionGroup(menu);
    for (const auto* const title : {"Compact", "Comfortable"}) {
        auto* const item = menu->addAction(QString::fromLatin1(title));
        item->setCheckable(true);
        item->setActionGroup(spacing);
        item->setChecked(true);
    }
    menu->addMenu(QStringLiteral("Font size"))->addAction(QStringLiteral("13"));
    menu->setActiveAction(&chosen);
    menu->setFixedSize(menu->sizeHint());
    return menu;
}

QListWidget* makeList(int count) {
    auto* const list = new QListWidget;
    list->setFrameShape(QFrame::NoFrame);
    for (int i = 1; i <= count; ++i) {
        list->addItem(QStringLiteral("Board %1").arg(i));
    }
    list->setCurrentRow(1);
    return list;
}

QWidget* makeChoices(const Theme& theme, QWidget* parent) {
    auto* const panel = new Panel(theme, parent);
    auto* const field = new QLineEdit;
    field->setPlaceholderText(QStringLiteral("Go to a board"));
    panel->column().addWidget(field);
    panel->column().addWidget(makeList(12));
    panel->setFixedSize(theme.scaled(kPanelWidth), theme.scaled(kListHeight));
    return panel;
}

QWidget* makeQuestion(const Theme& theme, QWidget* parent) {
    auto* const panel = new Panel(theme, parent);
    panel->setFixedWidth(theme.scaled(kPanelWidth));
    auto* const words =
        new QLabel(QStringLiteral("Delete “Lisbon” with three open todos and one completed?"));
    words->setWordWrap(true);
    auto* const remove = new QPushButton(QStringLiteral("Delete"));
    markDangerous(*remove);
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(new QPushButton(QStringLiteral("Cancel")));
    buttons->addWidget(remove);
    panel->column().addWidget(words);
    panel->column().addLayout(buttons);
    return panel;
}

QWidget* makeBanner(const Theme& theme, QWidget* parent, ErrorBanner::Tone tone) {
    auto* const banner = new ErrorBanner(theme, parent);
    const auto isError = tone == ErrorBanner::Tone::error;
    banner->say({.text = isError ? QStringLiteral("The disk is full.")
                                 : QStringLiteral("“Buy milk” was deleted."),
                 .tone = tone,
                 .action = isError ? QString() : QStringLiteral("Undo"),
                 .perform = [] {}});
    banner->setFixedWidth(theme.scaled(kPanelWidth));
    return banner;
}

/// A list that scrolls, its handle as if the pointer were on it.
QWidget* makeHeldList(const Theme& theme) {
    auto* const list = makeList(30);
    auto* const bar = list->verticalScrollBar();
    bar->setStyle(new ShownState(theme, QStyle::State_MouseOver, bar));
    return list;
}

} // namespace

QWidget* makePanelSamples(const Theme& theme, QWidget* parent) {
    auto* const table = new QWidget(parent);
    auto* const grid = new QGridLayout(table);
    grid->setSpacing(theme.space(Space::wide));
    grid->addWidget(makeMenu(theme), 0, 0, Qt::AlignTop | Qt::AlignLeft);
    grid->addWidget(makeChoices(theme, table), 0, 1, Qt::AlignTop);
    grid->addWidget(makeQuestion(theme, table), 1, 0, Qt::AlignTop);
    auto* const banners = new QVBoxLayout;
    banners->addWidget(makeBanner(theme, table, ErrorBanner::Tone::error));
    banners->addWidget(makeBanner(theme, table, ErrorBanner::Tone::notice));
    grid->addLayout(banners, 1, 1, Qt::AlignTop);
    auto* const lists = new QHBoxLayout;
    lists->addWidget(makeList(30));
    lists->addWidget(makeHeldList(theme));
    grid->addLayout(lists, 2, 0, 1, 2);
    return table;
}

} // namespace korvex::ui
