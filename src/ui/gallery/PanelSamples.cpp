#include "ui/gallery/PanelSamples.h"

#include "ui/gallery/ShownState.h"
#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/kit/style/MenuDrawing.h"
#include "ui/kit/theme/IconSet.h"

#include <QAbstractItemView>
#include <QActionGroup>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kPanelWidth = 240;
constexpr int kListHeight = 200;
constexpr QSize kChoicesStage(256, 216);
constexpr QSize kQuestionStage(400, 180);

/// Stands for the window that a panel opens over.
QWidget* makeStage(const QSize& size, const Theme& theme, QWidget* parent) {
    auto* const stage = new QWidget(parent);
    stage->setFixedSize(theme.scaled(size.width()), theme.scaled(size.height()));
    return stage;
}

/// A tip, which otherwise is a window of its own.
class Tip final : public QLabel {
public:
    Tip(const Theme& theme, QWidget* parent)
        : QLabel(QStringLiteral("Schedule (Ctrl+D)"), parent), m_theme(theme) {
        setFont(theme.smallFont());
        setMargin(theme.space(Space::small));
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        MenuDrawing::paintPanel(painter, rect(), m_theme.radius(Radius::medium), m_theme);
        painter.end();
        QLabel::paintEvent(event);
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
    auto* const stage = makeStage(kChoicesStage, theme, parent);
    auto* const panel = new Popover(theme, stage);
    panel->setFixedSize(theme.scaled(kPanelWidth), theme.scaled(kListHeight));
    auto* const column = new QVBoxLayout(panel);
    auto* const field = new QLineEdit;
    field->setPlaceholderText(QStringLiteral("Go to a board"));
    column->addWidget(field);
    column->addWidget(makeList(12));
    panel->show();
    return stage;
}

/// The list that a choice opens, as a part of this window.
QWidget* makeOpenList(const Theme& theme, QWidget* parent) {
    auto* const choice = new ListChoice;
    choice->addItems(
        {QStringLiteral("All boards"), QStringLiteral("Inbox"), QStringLiteral("Trip to Lisbon")});
    choice->setCurrentIndex(1);
    auto* const list = choice->view()->parentWidget();
    list->setParent(parent, Qt::Widget);
    choice->setParent(list);
    choice->hide();
    choice->view()->setCurrentIndex(choice->model()->index(1, 0));
    list->setFixedSize(theme.scaled(kPanelWidth), choice->count() * theme.extent(Extent::control) +
                                                      2 * theme.space(Space::medium));
    return list;
}

QWidget* makeQuestion(const Theme& theme, QWidget* parent) {
    auto* const stage = makeStage(kQuestionStage, theme, parent);
    auto* const sheet = new ConfirmationSheet(
        QStringLiteral("Delete “Lisbon” with three open todos and one completed?"),
        QStringLiteral("Delete"), theme, stage);
    sheet->show();
    return stage;
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
    banners->addStretch();
    grid->addLayout(banners, 1, 1, Qt::AlignTop);
    grid->addWidget(makeOpenList(theme, table), 2, 0, Qt::AlignTop);
    grid->addWidget(new Tip(theme, table), 2, 1, Qt::AlignTop | Qt::AlignLeft);
    auto* const lists = new QHBoxLayout;
    lists->addWidget(makeList(30));
    lists->addWidget(makeHeldList(theme));
    grid->addLayout(lists, 3, 0, 1, 2);
    return table;
}

} // namespace korvex::ui
