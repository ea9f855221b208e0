#include "app/QuickEntryState.h"

#include "base/Text.h"
#include "model/ServiceErrors.h"
#include "richtext/stored/RichTextSerializer.h"

#include <algorithm>
#include <utility>

namespace korvex::app {

namespace {

using model::AttachmentError;
using model::AttachmentErrorCase;
using model::EntryType;
using richtext::RichTextSerializer;

constexpr const char* kStillAttaching = "Wait for the files to finish attaching before saving.";
constexpr const char* kNoBoards = "No boards available. Open the main app to create a board.";
constexpr const char* kNoDestination = "Quick Entry has no destination board";

std::exception_ptr unreadable() {
    return std::make_exception_ptr(AttachmentError(AttachmentErrorCase::invalidFile));
}

} // namespace

QuickEntryState::QuickEntryState(Surroundings surroundings)
    : m_context(surroundings.context),
      m_preferences(surroundings.preferences),
      m_draftFile(surroundings.draftFile),
      m_runLoop(surroundings.runLoop),
      m_clock(surroundings.clock),
      m_log(surroundings.log, "QuickEntry"),
      m_inBackground(std::move(surroundings.inBackground)),
      m_isUsersOwn(surroundings.isUsersOwn),
      m_boards(surroundings.context, surroundings.reminders, surroundings.widgets,
               surroundings.log),
      m_entries(surroundings.context, surroundings.reminders, surroundings.widgets,
                surroundings.log),
      m_draft{.type = surroundings.preferences.quickEntryDefaultType()},
      m_self(std::make_shared<Self>()) {
    m_self->state = this;
    if (auto draft = m_draftFile.read()) {
        m_draft = std::move(*draft);
    }
}

QuickEntryState::~QuickEntryState() {
    static_cast<void>(keepDraft());
    const std::lock_guard lock(m_self->mutex);
    m_self->state = nullptr;
}

template <typename T>
void QuickEntryState::edit(T QuickEntryDraft::*field, T value) {
    if (m_draft.*field != value) {
        m_draft.*field = std::move(value);
        draftChanged();
    }
}

void QuickEntryState::draftChanged() {
    m_isDraftKept = false;
    if (!m_draftTimer) {
        m_draftTimer = m_runLoop.callAfter(kDraftDelay, [this] { writeDraft(); });
    }
    m_didChange.emit();
}

void QuickEntryState::takeLeftDraft() {
    if (auto both = m_draftFile.readLeft(m_draft)) {
        m_draft = *std::move(both);
        draftChanged();
    }
}

std::error_code QuickEntryState::keepDraft() {
    m_refusedFiles.reset();
    return writeDraft();
}

std::error_code QuickEntryState::writeDraft() {
    if (!m_isDraftKept) {
        takeLeftDraft();
    }
    m_draftTimer.reset();
    if (m_isDraftKept) {
        return {};
    }
    auto files = m_draft.attachmentIDs();
    // Megabytes, for which there will hardly be room so soon.
    const auto areRefused = !files.empty() && m_refusedFiles == files;
    const auto error = m_draftFile.write(m_draft, m_clock.now(),
                                         areRefused ? QuickEntryDraftFile::Files::left
                                                    : QuickEntryDraftFile::Files::written);
    if (m_draftFile.areWordsKept()) {
        m_draftPause = kDraftAgain;
    } else {
        m_draftTimer = m_runLoop.callAfter(m_draftPause, [this] { writeDraft(); });
        m_draftPause = std::min(2 * m_draftPause, kDraftAgainAtMost);
    }
    if (areRefused && !error) {
        return m_draftError; // not all of it is kept
    }
    m_isDraftKept = !error;
    if (error && error != m_draftError) {
        m_log.error("Quick Entry draft not kept: " + error.message());
    }
    m_refusedFiles = error ? std::optional(std::move(files)) : std::nullopt;
    m_draftError = error;
    return error;
}

void QuickEntryState::setEntryType(EntryType type) {
    edit(&QuickEntryDraft::type, type);
}

void QuickEntryState::setContent(std::string content) {
    edit(&QuickEntryDraft::content, std::move(content));
}

void QuickEntryState::setSchedule(const model::TodoSchedule& schedule) {
    edit(&QuickEntryDraft::schedule, schedule);
}

void QuickEntryState::setHeading(std::optional<richtext::HeadingLevel> heading) {
    edit(&QuickEntryDraft::heading, heading);
}

void QuickEntryState::removeAttachment(const base::Uuid& id) {
    auto rest = m_draft.attachments;
    std::erase_if(rest, [&](const auto& each) { return each.id == id; });
    edit(&QuickEntryDraft::attachments, std::move(rest));
}

void QuickEntryState::setSelectedBoardID(std::optional<base::Uuid> id) {
    if (m_selectedBoardID != id) {
        m_selectedBoardID = id;
        m_didChange.emit();
    }
}

void QuickEntryState::setErrorMessage(std::optional<std::string> message) {
    if (m_errorMessage != message) {
        m_errorMessage = std::move(message);
        m_didChange.emit();
    }
}

void QuickEntryState::prepare() {
    takeLeftDraft();
    if (!hasDraft()) {
        setEntryType(m_preferences.quickEntryDefaultType());
    }
    try {
        m_context.refresh();
        choose(services::BoardService::activeBoards(m_boards.boards()));
    } catch (const base::Error& error) {
        report(error);
    }
}

std::vector<model::Board*> QuickEntryState::boards() {
    try {
        m_context.refresh();
        return services::BoardService::activeBoards(m_boards.boards());
    } catch (const base::Error& error) {
        report(error);
        return {};
    }
}

void QuickEntryState::resolveBoard(std::span<model::Board* const> boards) {
    if (std::any_of(boards.begin(), boards.end(),
                    [&](const auto* board) { return board->id() == m_selectedBoardID; })) {
        return;
    }
    if (m_selectedBoardID) {
        m_log.info("Missing Quick Entry board; selecting fallback");
    }
    choose(boards);
}

void QuickEntryState::resolveBoard() {
    try {
        m_context.refresh();
        resolveBoard(services::BoardService::activeBoards(m_boards.boards()));
    } catch (const base::Error& error) {
        report(error);
    }
}

void QuickEntryState::choose(std::span<model::Board* const> boards) {
    // Which boards the preferences mean is known in the user's own store only; elsewhere they would
    // be forgotten as gone.
    const auto* const board = m_isUsersOwn ? m_preferences.quickEntryBoard(boards)
                                           : AppPreferences::fallbackBoard(boards);
    setSelectedBoardID(board ? std::optional(board->id()) : std::nullopt);
}

std::vector<std::string> QuickEntryState::todoContents() const {
    const auto lines = base::filledLines(m_draft.content);
    return {lines.begin(), lines.end()};
}

void QuickEntryState::attachFiles(std::vector<std::filesystem::path> files,
                                  services::AttachmentReader read) {
    ++m_filesBeingRead;
    m_didChange.emit();
    auto work = [self = m_self, reading = m_reading, files = std::move(files),
                 read = std::move(read)] {
        const auto outcome = std::make_shared<Read>();
        try {
            outcome->attachments = read(files);
        } catch (const base::Error&) {
            outcome->error = std::current_exception();
        } catch (const std::exception&) {
            outcome->error = unreadable();
        }
        const std::lock_guard lock(self->mutex);
        if (self->state) {
            self->state->m_runLoop.post([self, reading, outcome] {
                if (self->state) {
                    self->state->finishReading(reading, std::move(*outcome));
                }
            });
        }
    };
    try {
        m_inBackground(std::move(work));
    } catch (const std::exception&) { // as where the system has no thread for it
        finishReading(m_reading, {.error = unreadable()});
    }
}

void QuickEntryState::cancelAttaching() {
    m_reading = base::Uuid::random();
    if (std::exchange(m_filesBeingRead, 0) > 0) {
        stopWaiting();
        m_didChange.emit();
    }
}

void QuickEntryState::stopWaiting() {
    if (m_errorMessage == kStillAttaching) {
        setErrorMessage({});
    }
}

void QuickEntryState::finishReading(const base::Uuid& reading, Read read) {
    if (reading != m_reading) {
        return; // nobody waits for them any more
    }
    --m_filesBeingRead;
    try {
        if (read.error) {
            std::rethrow_exception(read.error);
        }
        append(std::move(read.attachments));
        if (!isAttachingFiles()) {
            stopWaiting();
        }
    } catch (const base::Error& error) {
        report(error);
    }
    m_didChange.emit(); // also where the same was refused before
}

void QuickEntryState::attach(std::vector<model::EntryAttachment> attachments) {
    try {
        append(std::move(attachments));
    } catch (const base::Error& error) {
        report(error);
    }
}

void QuickEntryState::append(std::vector<model::EntryAttachment> attachments) {
    auto all = m_draft.attachments;
    std::move(attachments.begin(), attachments.end(), std::back_inserter(all));
    model::EntryAttachment::validate(all);
    edit(&QuickEntryDraft::attachments, std::move(all));
}

bool QuickEntryState::save() {
    setErrorMessage({});
    if (isAttachingFiles()) {
        setErrorMessage(kStillAttaching);
        return false;
    }
    try {
        auto* const board = destination();
        if (!board || !store(*board)) {
            return false;
        }
        const auto id = board->id();
        reset();            // first: until then a program that is killed offers the same again
        if (m_isUsersOwn) { // of no other store's boards do the preferences tell
            m_preferences.setQuickEntryDefaultBoardID(id);
        }
        return true;
    } catch (const base::Error& error) {
        report(error);
        return false;
    }
}

model::Board* QuickEntryState::destination() {
    m_context.refresh();
    const auto boards = m_boards.boards();
    const auto active = services::BoardService::activeBoards(boards);
    resolveBoard(active);
    if (boards.empty()) {
        setErrorMessage(kNoBoards);
        return nullptr;
    }
    const auto found = std::find_if(active.begin(), active.end(), [&](const auto* board) {
        return board->id() == m_selectedBoardID;
    });
    if (found == active.end()) {
        setErrorMessage(kNoDestination);
        return nullptr;
    }
    return *found;
}

bool QuickEntryState::store(model::Board& board) {
    if (m_draft.type == EntryType::text) {
        m_entries.createText(
            {.rich = RichTextSerializer::applyingHeading(
                 m_draft.heading, RichTextSerializer::plainRichText(m_draft.content)),
             .board = board,
             .now = m_clock.now(),
             .attachments = m_draft.attachments});
        return true;
    }
    auto contents = todoContents();
    if (contents.empty()) {
        return false;
    }
    m_entries.createTodos({.contents = std::move(contents),
                           .board = board,
                           .now = m_clock.now(),
                           .schedule = m_draft.schedule,
                           .attachments = m_draft.attachments});
    return true;
}

void QuickEntryState::reset() {
    m_draft = {.type = m_draft.type};
    m_filesBeingRead = 0;
    m_reading = base::Uuid::random();
    m_errorMessage.reset();
    m_draftRevision = base::Uuid::random();
    // At once: what was captured must not be offered again after a crash.
    m_draftTimer.reset();
    m_draftFile.remove();
    m_isDraftKept = true;
    m_draftError.clear();
    m_draftPause = kDraftAgain;
    m_refusedFiles.reset();
    m_didChange.emit();
}

void QuickEntryState::report(const base::Error& error) {
    m_log.error("Quick Entry failed: " + error.domain() + " (" + std::to_string(error.code()) +
                ")");
    if (error.errorDescription() != error.what()) {
        m_log.warning(error.what()); // the user is spared what a library says
    }
    setErrorMessage(error.errorDescription());
}

} // namespace korvex::app
