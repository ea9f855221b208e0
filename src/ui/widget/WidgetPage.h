#pragma once

#include "base/Uuid.h"
#include "model/Board.h"
#include "ui/kit/pages/Page.h"
#include "ui/todos/LingeringTicks.h"
#include "ui/widget/WidgetStore.h"
#include "ui/workspace/DateTexts.h"

#include <optional>

namespace korvex::ui {

class WidgetTodoList;
class WidgetTodoModel;

/// What a widget shows of the open store: one board's open todos, or why there are none. Follows
/// the store and the clock. Main thread; the store stays open for as long as this lives.
class WidgetPage final : public Page, LingeringTicks::List, TodoTicking {
    Q_OBJECT

public:
    /// What it works with; all of it outlives the page.
    struct Parts {
        WidgetStore& store;
        const DateTexts& dates;
        base::RunLoop& runLoop;
    };
    /// Shows this board; the Inbox where it is absent.
    WidgetPage(std::optional<base::Uuid> board, const Parts& parts, const Theme& theme,
               QWidget* parent);
    ~WidgetPage() override;

    void setBoard(std::optional<base::Uuid> board);
    /// The board while it is there, archived or not; null else.
    const model::Board* board() const { return m_board; }
    int openCount() const { return m_openCount; }

    QString title() const override;
    void takeKeyboard() override;

Q_SIGNALS:
    /// The board's look or name, or its count, is another.
    void changed();
    void entryOpenRequested(const korvex::base::Uuid& entry);

private:
    bool belongs(const model::Entry& entry) const override { return !entry.isCompleted(); }
    void hold(model::Entry& entry) override;
    void letGo(model::Entry& entry) override;
    int tickedRow(const model::Entry& entry) const override;
    int rowAfter(int row) const override;
    bool complete(model::Entry& entry, std::optional<base::Instant> completedAt) override;
    bool restore(model::Entry& entry, std::optional<std::int64_t> position) override;

    /// Takes in what the store says now.
    void refresh();
    const model::Board* boardThere() const;
    void showHint();

    std::optional<base::Uuid> m_wanted;
    Parts m_parts;
    WidgetStore::Open& m_open;
    WidgetTodoModel* m_model;
    WidgetTodoList* m_list;
    LingeringTicks m_ticks;
    const model::Board* m_board = nullptr;
    int m_openCount = 0;
    base::Subscription m_changes;
    base::Subscription m_clockTicks;
};

} // namespace korvex::ui
