#pragma once

#include "base/RunLoop.h"
#include "base/TextFolding.h"
#include "model/EntryPlacement.h"
#include "services/BoardService.h"
#include "services/UndoManager.h"
#include "store/ModelContext.h"
#include "ui/attachments/AttachmentActions.h"
#include "ui/entries/EntryEditing.h"
#include "ui/kit/pages/Page.h"
#include "ui/todos/LingeringTicks.h"
#include "ui/todos/TodoActions.h"

#include <QObject>

#include <algorithm>

namespace korvex::ui {

/// What the user asks of the entries on a board's page, of its list and of its editors: carries it
/// out, tells on the page why it was refused, and leaves the list where one can go on. Main thread.
class EntryActions final : public QObject, private LingeringTicks::List {
    Q_OBJECT

public:
    /// The parts of the page, which outlive the actions.
    struct Parts {
        Page& page;
        EntryListModel& model;
        EntryListView& list;
        EntryEditing& editing;
        AttachmentActions& attachments;
    };
    /// What the actions work with; all of it outlives them.
    struct Services {
        store::ModelContext& context;
        const services::BoardService& boards;
        services::UndoManager& undo;
        const base::TextFolding& folding;
        base::RunLoop& runLoop;
        TodoServices todos;
    };
    EntryActions(const Parts& parts, const Services& services, const Theme& theme);

    /// Completes the todo: that is stored at once, but its row stays a little longer.
    void complete(model::Entry& entry) { m_ticks.toggle(entry); }
    /// Opens the todo again, at the end of its board; where its row still stays, in its old place.
    void restore(model::Entry& entry);
    /// Moves the entry by this many places among the open ones.
    void move(model::Entry& entry, int offset);
    /// Makes a text of a todo and a todo of a text.
    void changeType(model::Entry& entry);
    void remove(model::Entry& entry);
    /// Does nothing for what has no schedule.
    void openSchedule(model::Entry& entry);
    /// Lets the user choose the board that the entry goes to.
    void chooseBoard(model::Entry& entry);
    void moveToBoard(const base::Uuid& id, model::Board& board);
    /// Asks for files for what is edited, or else for the current entry.
    void attachFiles();
    /// Attaches files or a picture to what is edited.
    void attachOffered(const QMimeData& offered);
    /// Ticks the todo of a row, or takes the tick away.
    void toggle(int row);
    /// Puts an entry of the board beside a row.
    void drop(const base::Uuid& id, const EntryReordering::Place& place);

Q_SIGNALS:
    /// Words that the user had given up are to be gone on with.
    void discardedWanted(const korvex::app::Draft& draft);

private:
    void connectEditing();
    /// The user has given these words up, which is a step of undo like a deletion.
    void registerDiscarded(const app::Draft& draft);
    template <typename Attach>
    void attachToEdited(Attach&& attach);
    bool belongs(const model::Entry& entry) const override { return !entry.isCompleted(); }
    void hold(model::Entry& entry) override { m_parts.model.linger(entry); }
    void letGo(model::Entry& entry) override { m_parts.model.release(entry); }
    int tickedRow(const model::Entry& entry) const override;
    int rowAfter(int row) const override { return std::min(row, m_parts.model.rowCount() - 1); }

    Parts m_parts;
    Services m_services;
    const Theme& m_theme;
    TodoActions m_todos;
    LingeringTicks m_ticks;
};

} // namespace korvex::ui
