#pragma once

#include "base/Clock.h"
#include "schedule/CompletedFilter.h"
#include "services/BoardService.h"
#include "ui/kit/theme/Theme.h"
#include "ui/workspace/DateTexts.h"

#include <QWidget>

#include <optional>
#include <vector>

class QPushButton;

namespace korvex::ui {

class DateField;
class FilterChoice;
class FlowLayout;
class SearchField;

/// Chooses which completed todos are shown: by words, board, due date and completion date. Main
/// thread.
class CompletedFilterBar final : public QWidget {
    Q_OBJECT

public:
    CompletedFilterBar(const services::BoardService& boards, const DateTexts& dates,
                       const base::Clock& clock, const Theme& theme, QWidget* parent = nullptr);

    const schedule::CompletedFilter& filter() const { return m_filter; }
    /// Offers the boards that there are now; where the chosen one is gone, all are chosen again.
    /// Throws StoreError.
    void followBoards();

Q_SIGNALS:
    void changed();
    /// A key in the search field asks for the list.
    void listRequested();

private:
    struct BoardChoice {
        base::Uuid id;
        QString label;
        QString icon;
        QColor color;

        bool operator==(const BoardChoice&) const = default;
    };

    template <typename Case>
    FilterChoice* makePicker(const QString& name, std::initializer_list<Case> cases);
    DateField* makeDay(const QString& name);
    void layOut();
    void connectFields();
    void fillBoards();
    void showFilter();
    void take();
    /// The days of the range. The last day does not come before the first: the one that the user
    /// has not touched follows.
    void takeRange(const schedule::CompletedFilter& before);
    void reset();
    void applyTheme();

    const services::BoardService& m_service;
    const DateTexts& m_dates;
    const base::Clock& m_clock;
    const Theme& m_theme;
    schedule::CompletedFilter m_filter;
    std::vector<BoardChoice> m_boards;
    bool m_isShowing = false;

    FlowLayout* m_pickers;
    SearchField* m_search;
    FilterChoice* m_boardStatus;
    FilterChoice* m_board;
    FilterChoice* m_schedule;
    FilterChoice* m_period;
    DateField* m_start;
    /// Both days, side by side where there is room.
    QWidget* m_range;
    /// The first day, with a dash behind it.
    QWidget* m_fromStart;
    DateField* m_end;
    QPushButton* m_reset;
};

} // namespace korvex::ui
