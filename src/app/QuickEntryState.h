#pragma once

#include "app/AppPreferences.h"
#include "app/QuickEntryDraft.h"
#include "base/Clock.h"
#include "base/Error.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "base/Uuid.h"
#include "model/Board.h"
#include "services/AttachmentFiles.h"
#include "services/BoardService.h"
#include "services/EntryService.h"
#include "store/ModelContext.h"

#include <chrono>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace korvex::app {

/// What stands in the Quick Entry panel, where it is to go, and how it gets there. The draft is
/// kept beside the store while it is typed, so that it outlives the program. Lives as long as the
/// panel's window; main thread.
class QuickEntryState {
public:
    /// No more than what was typed in so long a time is lost when the program is killed.
    static constexpr std::chrono::duration<double> kDraftDelay{1.0};
    /// So long after a failure it is tried again, then after twice as long each time: a disk that
    /// is full stays so for a while, and whoever writes meanwhile keeps the window waiting.
    static constexpr std::chrono::duration<double> kDraftAgain{3.0};
    static constexpr std::chrono::duration<double> kDraftAgainAtMost{60.0};

    /// What it works with. All of it must outlive this object; what `inBackground` starts may last
    /// longer than that, and than the run loop.
    struct Surroundings {
        store::ModelContext& context;
        AppPreferences& preferences;
        services::ReminderReconciling& reminders;
        services::WidgetReloading& widgets;
        QuickEntryDraftFile& draftFile;
        base::RunLoop& runLoop;
        const base::Clock& clock;
        base::LogSink& log;
        /// Runs what it is given on another thread.
        std::function<void(std::function<void()>)> inBackground;
        /// The store is the one of the user's own data folder, whose boards the preferences name.
        bool isUsersOwn = true;
    };

    /// Begins with the draft that a former program left.
    explicit QuickEntryState(Surroundings surroundings);
    /// The draft is kept.
    ~QuickEntryState();
    QuickEntryState(const QuickEntryState&) = delete;
    QuickEntryState& operator=(const QuickEntryState&) = delete;

    model::EntryType entryType() const { return m_draft.type; }
    /// The lines of todos, or a text's plain text. UTF-8.
    const std::string& content() const { return m_draft.content; }
    /// That of every todo captured.
    const model::TodoSchedule& schedule() const { return m_draft.schedule; }
    /// That of a whole text.
    std::optional<richtext::HeadingLevel> heading() const { return m_draft.heading; }
    const std::vector<model::EntryAttachment>& attachments() const { return m_draft.attachments; }
    /// While files are being read.
    bool isAttachingFiles() const { return m_filesBeingRead > 0; }
    /// Another one whenever the draft was reset: what an editor shows of the former is stale.
    const base::Uuid& draftRevision() const { return m_draftRevision; }
    /// What the panel is to tell the user.
    const std::optional<std::string>& errorMessage() const { return m_errorMessage; }
    const std::optional<base::Uuid>& selectedBoardID() const { return m_selectedBoardID; }
    bool hasDraft() const { return !m_draft.isEmpty(); }

    void setEntryType(model::EntryType type);
    void setContent(std::string content);
    void setSchedule(const model::TodoSchedule& schedule);
    void setHeading(std::optional<richtext::HeadingLevel> heading);
    void removeAttachment(const base::Uuid& id);
    void setSelectedBoardID(std::optional<base::Uuid> id);

    /// The panel opens: a draft keeps its type, else it is the one that the user prefers. What
    /// another program that has ended since left in Quick Entry is there too. What the user is to
    /// be told stays: it may have come while nobody saw it.
    void prepare();
    /// Keeps the destination while it is among these boards, else chooses another.
    void resolveBoard(std::span<model::Board* const> boards);
    /// The same among all that are active; where they cannot be read it stays.
    void resolveBoard();
    /// The active boards, in order, to choose from; none where they cannot be read, which says
    /// nothing of the destination.
    std::vector<model::Board*> boards();
    /// One todo for each line that is not blank.
    std::vector<std::string> todoContents() const;
    /// Reads the files on another thread and adds them to the draft; all of them or none.
    void attachFiles(std::vector<std::filesystem::path> files,
                     services::AttachmentReader read = services::readAttachments);
    /// What is being read is not waited for any more, as where a folder does not answer.
    void cancelAttaching();
    /// The same of what is in memory, such as a pasted picture.
    void attach(std::vector<model::EntryAttachment> attachments);
    /// Whether it was stored, and the draft reset. Else the draft is as it was.
    bool save();
    /// Gives the draft up. Type and board stay.
    void reset();
    /// What was refused, in its own words.
    void report(const base::Error& error);
    /// What the user was told is not so any more, or was read.
    void forgetError() { setErrorMessage(std::nullopt); }

    /// Writes the draft now if it is not kept yet, as before the program ends; the error where it
    /// is not kept then, or not all of it.
    std::error_code keepDraft();

    /// Emitted when something above is different.
    base::Signal<>& didChange() { return m_didChange; }

private:
    /// What a thread that reads files brings back.
    struct Read {
        std::vector<model::EntryAttachment> attachments;
        std::exception_ptr error;
    };

    /// By what threads that read files find this object.
    struct Self {
        std::mutex mutex;
        /// Null once it is gone: then the run loop may be gone as well.
        QuickEntryState* state;
    };

    /// Gives the field of the draft another value.
    template <typename T>
    void edit(T QuickEntryDraft::*field, T value);
    void draftChanged();
    /// Takes in what another program has left.
    void takeLeftDraft();
    std::error_code writeDraft();
    /// Selects the one of these that the preferences name.
    void choose(std::span<model::Board* const> boards);
    void setErrorMessage(std::optional<std::string> message);
    void finishReading(const base::Uuid& reading, Read read);
    /// Takes back that the user is to wait for files.
    void stopWaiting();
    /// Throws what an entry's attachments may not be.
    void append(std::vector<model::EntryAttachment> attachments);
    /// Null where there is none, and then the user was told.
    model::Board* destination();
    /// Whether there was anything to store.
    bool store(model::Board& board);

    store::ModelContext& m_context;
    AppPreferences& m_preferences;
    QuickEntryDraftFile& m_draftFile;
    base::RunLoop& m_runLoop;
    const base::Clock& m_clock;
    base::Logger m_log;
    std::function<void(std::function<void()>)> m_inBackground;
    bool m_isUsersOwn;
    services::BoardService m_boards;
    services::EntryService m_entries;

    QuickEntryDraft m_draft;
    std::optional<base::Uuid> m_selectedBoardID;
    base::Uuid m_draftRevision = base::Uuid::random();
    std::optional<std::string> m_errorMessage;
    /// How many times files are being read at the moment.
    int m_filesBeingRead = 0;
    /// Another one once nobody waits for what was begun before.
    base::Uuid m_reading = base::Uuid::random();
    /// Runs from the first change that is not kept.
    std::unique_ptr<base::RunLoop::Timer> m_draftTimer;
    std::chrono::duration<double> m_draftPause = kDraftAgain;
    bool m_isDraftKept = true;
    std::error_code m_draftError;
    /// The attachments for which there was no room.
    std::optional<std::vector<base::Uuid>> m_refusedFiles;
    base::Signal<> m_didChange;
    std::shared_ptr<Self> m_self;
};

} // namespace korvex::app
