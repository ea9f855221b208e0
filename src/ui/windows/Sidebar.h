#pragma once

#include "base/Clock.h"
#include "base/Uuid.h"
#include "model/EntryPlacement.h"
#include "services/BoardService.h"
#include "store/ModelContext.h"
#include "ui/boards/BoardListView.h"
#include "ui/boards/BoardListing.h"
#include "ui/boards/BoardRenaming.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/windows/PageKind.h"

#include <QWidget>

#include <optional>

class QBoxLayout;
class QLabel;
class QToolButton;

namespace korvex::ui {

class SearchField;
class SidebarRow;

/// The window's left: the search, the pages over all boards, the boards, and the way to the
/// archived ones. Carries out what the user asks of the list of boards.
class Sidebar final : public QWidget, public BoardListing {
    Q_OBJECT

public:
    Sidebar(services::BoardService& boards, store::ModelContext& context, const base::Clock& clock,
            const Theme& theme, QWidget* parent = nullptr);

    BoardListModel& boards() { return m_model; }
    SearchField& searchField() { return *m_search; }
    /// Marks what the window shows; `board` is the one of a board's page.
    void showChoice(PageKind page, const model::Board* board);
    /// How many todos are upcoming, and of how many of them a reminder was not shown yet.
    void setUpcoming(int count, int reminders);
    /// Ends the typing of a board's name, which is taken as it is. False when it was refused: then
    /// it stays in its field, with the reason.
    bool leave();
    /// Gives the keyboard to what is chosen.
    void takeKeyboard();
    /// How much of its height the search takes.
    int searchHeight() const;
    /// The store's records have changed.
    void refresh();

    /// Makes a board and lets its name be typed. Escape there takes the board back.
    void createBoard();
    void rename(model::Board& board, const QString& typed = {}) override;
    std::optional<QRect> placeOf(const model::Board& board) const override;
    /// A larger font needs more room beside a page.
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void boardChosen(korvex::model::Board* board);
    /// The chosen board was clicked, or Return was pressed on it.
    void boardPicked();
    void boardMenuRequested(korvex::model::Board* board, const QPoint& globalPosition);
    void pageRequested(korvex::ui::PageKind page);
    /// The board is to stand this many places further down, or up where it is negative.
    void moveRequested(korvex::model::Board* board, int offset);
    /// An entry was dropped on a board.
    void entryDropped(const korvex::base::Uuid& entry, korvex::model::Board* board);
    /// A new board was taken back before it had a name: what was shown before is shown again.
    void creationGivenUp();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// What the window shows.
    struct Choice {
        PageKind page = PageKind::board;
        std::optional<base::Uuid> board;
    };
    /// A new board whose first name is being typed, and what was shown before.
    struct Creation {
        base::Uuid board;
        Choice before;
    };

    /// Counts the open todos of all boards, soon.
    void countSoon();
    void showMessage(const QString& message);
    void layOut();
    void connectRows();
    void walk(const SidebarRow* from, int direction);
    void walkToEnd(int direction);
    void takeBackCreation();
    void choose(const Choice& choice);
    void move(const base::Uuid& id, const base::Uuid& target, model::EntryPlacement placement);
    void applyTheme();

    services::BoardService& m_boards;
    const base::Clock& m_clock;
    const Theme& m_theme;
    BoardListModel m_model;
    BoardRenaming m_renaming;
    QBoxLayout* m_column;
    QBoxLayout* m_top;
    QBoxLayout* m_heading;
    SearchField* m_search;
    SidebarRow* m_upcoming;
    SidebarRow* m_completed;
    QLabel* m_title;
    QToolButton* m_add;
    BoardListView* m_list;
    ErrorBanner* m_banner;
    ErrorBanner::MessageId m_message = 0;
    SidebarRow* m_archived;
    Choice m_choice;
    std::optional<Creation> m_creation;
    bool m_isCountDue = false;
};

} // namespace korvex::ui
