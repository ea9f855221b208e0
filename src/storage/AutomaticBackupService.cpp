#include "storage/AutomaticBackupService.h"

#include "storage/BackupHistory.h"

#include <chrono>
#include <utility>

namespace korvex::storage {

namespace {

using Preference = app::AppPreferences::Property;

constexpr double kDay = 86'400;
constexpr std::chrono::seconds kBetweenLooks{900};
/// So many in a row are passed over where somebody else is making a backup.
constexpr int kQuietLooks = 3;

bool isCase(const base::Error& error, AutomaticBackupErrorCase which) {
    const auto* const typed = dynamic_cast<const AutomaticBackupError*>(&error);
    return typed && typed->which() == which;
}

bool isForFolder(const base::Error& error) {
    return isCase(error, AutomaticBackupErrorCase::chooseAgain) ||
           isCase(error, AutomaticBackupErrorCase::unknownFolder);
}

/// When the newest one of this history was made, by its file; absent where that cannot be told.
std::optional<base::Instant> lastOf(const AutomaticBackup& request, const base::Uuid& history) {
    try {
        const auto backups =
            automaticBackups(FolderBookmark::read(request.bookmark.value()), history).backups;
        return backups.empty() ? std::nullopt : std::optional(backups.front().modifiedAt);
    } catch (const std::exception&) {
        return std::nullopt; // who makes one says why
    }
}

void throwPruningFailure(const std::variant<AutomaticBackupResult, base::Instant>& outcome) {
    const auto* const made = std::get_if<AutomaticBackupResult>(&outcome);
    if (made && made->pruningFailure) {
        std::rethrow_exception(made->pruningFailure);
    }
}

AutomaticBackupError noAnswer() {
    return AutomaticBackupError(AutomaticBackupErrorCase::noAnswer);
}

} // namespace

AutomaticBackupService::AutomaticBackupService(const Surroundings& surroundings)
    : m_surroundings(surroundings),
      m_log(surroundings.log, "automaticBackup"),
      m_settings(surroundings.preferences.didChange().connect(
          [this](Preference changed) { settingChanged(changed); })) {}

void AutomaticBackupService::start() {
    if (!obstacle()) {
        lookSoon();
    }
}

void AutomaticBackupService::lookSoon() {
    m_timer = m_surroundings.runLoop.callAfter(std::chrono::seconds(0), [this] { look(); });
}

void AutomaticBackupService::look() {
    m_timer = m_surroundings.runLoop.callAfter(kBetweenLooks, [this] { look(); });
    runIfDue(m_surroundings.clock.now());
}

void AutomaticBackupService::settingChanged(Preference property) {
    const auto isFolder = property == Preference::automaticBackupBookmark;
    const auto isSuccess = property == Preference::automaticBackupLastSuccess;
    if (!isFolder && !isSuccess && property != Preference::automaticBackupEnabled) {
        return;
    }
    if (isFolder) {
        m_ownSuccess.reset();
        m_seen = FolderState::notLookedAt;
        m_folderLook.reset();
        m_choiceRefusal.clear(); // one was chosen since
    }
    if (isFolder || (isSuccess && !tellsOfAnotherStore() && lastSuccess())) {
        forgetFailure(); // whoever has chosen or made it
    }
    if (isSuccess && m_seen == FolderState::gone) {
        m_folderLook.reset(); // it may have begun before
        lookAtFolder();       // another program found it
    }
    if (!isSuccess && m_timer) {
        lookSoon();
    }
    m_didChange.emit();
}

bool AutomaticBackupService::isDue(std::optional<base::Instant> last, base::Instant now) {
    return !last || now - *last >= kDay || *last > now;
}

std::optional<base::Instant> AutomaticBackupService::nextDue(base::Instant now) const {
    const auto& preferences = m_surroundings.preferences;
    if (!preferences.automaticBackupEnabled() || !preferences.automaticBackupBookmark() ||
        obstacle()) {
        return std::nullopt;
    }
    const auto last = lastSuccess();
    return isDue(last, now) ? now : *last + kDay;
}

std::optional<base::Instant> AutomaticBackupService::lastSuccess() const {
    return tellsOfAnotherStore() ? m_ownSuccess
                                 : m_surroundings.preferences.automaticBackupLastSuccess();
}

bool AutomaticBackupService::tellsOfAnotherStore() const {
    const auto store = m_surroundings.preferences.automaticBackupLastStoreID();
    return store && *store != m_surroundings.container.storeID();
}

std::optional<std::string> AutomaticBackupService::obstacle() const {
    return m_surroundings.store == Store::another
               ? std::optional(descriptionOf(AutomaticBackupErrorCase::anotherStore))
               : std::nullopt;
}

void AutomaticBackupService::runIfDue(base::Instant now) {
    if (nextDue(now) == now) {
        run(now, AskedBy::clock);
    }
}

void AutomaticBackupService::backUpNow() {
    run(m_surroundings.clock.now(), AskedBy::user);
}

void AutomaticBackupService::cancel() {
    if (isSilent()) {
        noteCancelled();
        leave();
    } else if (m_run && !m_isCancelling) {
        m_isCancelling = true;
        m_run->cancel();
        expectAdvance();
    }
}

void AutomaticBackupService::run(base::Instant now, AskedBy asked) {
    if (m_run || obstacle()) {
        return;
    }
    const auto request = automaticBackup(m_surroundings.preferences,
                                         m_surroundings.container.configuration().file, now);
    m_progress = {};
    m_wasCancelled = false;
    m_isCancelling = false;
    // The settings do not tell then: without a look each start of a program would make one.
    const auto looksFirst = asked == AskedBy::clock && tellsOfAnotherStore() && !m_ownSuccess;
    const auto history =
        m_surroundings.preferences.automaticBackupID(m_surroundings.container.storeID());
    m_run = std::make_unique<BackgroundTask>(
        m_surroundings.threads, m_surroundings.runLoop,
        [request, looksFirst, history, defaults = m_surroundings.defaults.forAnotherThread(),
         &log = m_surroundings.log](Work& work) -> Outcome {
            const auto last = looksFirst ? lastOf(request, history) : std::nullopt;
            if (last && !isDue(last, request.now)) {
                return *last;
            }
            return makeAutomaticBackup(request, *defaults, log, work);
        },
        [this, request, asked](std::future<Outcome> result) {
            finish(std::move(result), request, asked);
        },
        [this](const Progress& progress) {
            m_progress = progress;
            expectAdvance();
            m_didChange.emit();
        });
    expectAdvance();
    m_didChange.emit();
}

void AutomaticBackupService::expectAdvance() {
    const std::chrono::seconds patience =
        m_isCancelling ? kLongestSilenceAfterCancel : kLongestSilence;
    m_advance = m_surroundings.runLoop.callAfter(patience, [this] {
        m_advance.reset();
        if (m_isCancelling) {
            cancel();
            return;
        }
        fail(noAnswer(), AskedBy::user);
        m_didChange.emit();
    });
}

/// The run goes on alone, if it does, as far as to where it notices that nobody waits for it.
void AutomaticBackupService::leave() {
    m_run.reset();
    m_didChange.emit();
}

void AutomaticBackupService::finish(std::future<Outcome> result, const AutomaticBackup& request,
                                    AskedBy asked) {
    m_surroundings.preferences.reload(); // another folder may have been chosen meanwhile
    auto next = Next::none;
    if (isOfChosenFolder(request)) {
        take(std::move(result), request, asked);
    } else {
        next = takeFormer(std::move(result));
    }
    // Under way until here: what was noted on the way is no answer yet.
    m_run.reset();
    m_advance.reset();
    if (next == Next::inChosenFolder && asked == AskedBy::user) {
        run(m_surroundings.clock.now(), asked);
    } else if (next == Next::inChosenFolder && m_timer) {
        lookSoon();
    }
    m_didChange.emit();
}

void AutomaticBackupService::take(std::future<Outcome> result, const AutomaticBackup& request,
                                  AskedBy asked) {
    try {
        const auto outcome = result.get();
        if (const auto* const before = std::get_if<base::Instant>(&outcome)) {
            forgetFailure(); // there is one that is recent enough
            m_ownSuccess = *before;
            m_seen = FolderState::there;
            return;
        }
        succeed(request);
        throwPruningFailure(outcome);
    } catch (const base::Error& error) {
        fail(error, asked);
        if (isForFolder(error)) {
            m_seen = FolderState::gone;
        }
    }
}

/// Of a folder that is not the chosen one any more: however it ended, that has none, and gets its
/// own at once where automatic backups are on or the user asked for this one.
AutomaticBackupService::Next AutomaticBackupService::takeFormer(std::future<Outcome> result) {
    try {
        throwPruningFailure(result.get());
    } catch (const Cancelled&) {
        noteCancelled(); // its user wants none now
        return Next::none;
    } catch (const base::Error& error) {
        log(error);
    }
    return Next::inChosenFolder;
}

void AutomaticBackupService::succeed(const AutomaticBackup& request) {
    forgetFailure();
    m_seen = FolderState::there;
    m_ownSuccess = request.now;
    if (isDue(lastSuccess(), request.now)) {
        // Settings that cannot be written hold in this program, or each look would make one more.
        m_surroundings.preferences.setAutomaticBackupLastSuccess(request.now);
    }
}

bool AutomaticBackupService::isOfChosenFolder(const AutomaticBackup& request) const {
    return m_surroundings.preferences.automaticBackupBookmark() == request.bookmark;
}

void AutomaticBackupService::forgetFailure() {
    m_errorMessage.reset();
    m_errorReason.clear();
    m_quietLooks = 0;
    m_wasCancelled = false;
}

void AutomaticBackupService::noteCancelled() {
    forgetFailure();
    m_wasCancelled = true;
}

void AutomaticBackupService::fail(const base::Error& failure, AskedBy asked) {
    if (dynamic_cast<const Cancelled*>(&failure)) {
        noteCancelled();
        return;
    }
    const auto isBeingMade = isCase(failure, AutomaticBackupErrorCase::running);
    if (asked == AskedBy::clock && isBeingMade && m_quietLooks < kQuietLooks) {
        ++m_quietLooks; // if not here; but who hangs makes none
        return;
    }
    m_errorMessage = kFailure;
    m_errorReason = failure.errorDescription();
    m_hasFailedForFolder = isForFolder(failure);
    log(failure);
}

void AutomaticBackupService::log(const base::Error& failure) const {
    m_log.error(std::string("Backup operation failed: ") + failure.what() + " (" +
                std::to_string(failure.code()) + ")");
}

void AutomaticBackupService::chooseFolder(const std::filesystem::path& folder) {
    if (m_choice || obstacle()) {
        return;
    }
    m_choiceRefusal.clear();
    m_choice = std::make_unique<BackgroundTask>(
        m_surroundings.threads, m_surroundings.runLoop,
        [folder](Work&) { return FolderBookmark::make(folder).bytes(); },
        [this](std::future<base::Bytes> bookmark) { choose(std::move(bookmark)); });
    m_choiceAnswer = m_surroundings.runLoop.callAfter(kLongestSilence, [this] {
        std::promise<base::Bytes> none;
        none.set_exception(std::make_exception_ptr(noAnswer()));
        choose(none.get_future());
    });
    m_didChange.emit();
}

void AutomaticBackupService::choose(std::future<base::Bytes> bookmark) {
    m_choice.reset();
    m_choiceAnswer.reset();
    try {
        auto bytes = bookmark.get();
        if (isSilent()) {
            leave(); // in the folder before
        }
        auto& preferences = m_surroundings.preferences;
        // First, or a program that is killed in between would leave the new folder without a backup
        // until tomorrow; and once more, for one that was made in the folder before by then.
        preferences.setAutomaticBackupLastSuccess(std::nullopt);
        preferences.setAutomaticBackupBookmark(std::move(bytes));
        preferences.setAutomaticBackupLastSuccess(std::nullopt);
        m_ownSuccess.reset();
        m_seen = FolderState::there;
        forgetFailure(); // also where it is the same folder
    } catch (const base::Error& error) {
        m_choiceRefusal = error.errorDescription();
    }
    m_didChange.emit();
}

std::optional<FolderBookmark> AutomaticBackupService::bookmark() const {
    const auto& bytes = m_surroundings.preferences.automaticBackupBookmark();
    return bytes ? FolderBookmark::ofBytes(*bytes) : std::nullopt;
}

std::optional<std::filesystem::path> AutomaticBackupService::folder() const {
    const auto known = bookmark();
    return known ? std::optional(known->path()) : std::nullopt;
}

AutomaticBackupService::FolderState AutomaticBackupService::folderState() const {
    return !m_surroundings.preferences.automaticBackupBookmark() ? FolderState::none
           : !bookmark()                                         ? FolderState::unknown
                                                                 : m_seen;
}

bool AutomaticBackupService::isFolderLost() const {
    const auto state = folderState();
    return !obstacle() && (state == FolderState::gone || state == FolderState::unknown);
}

void AutomaticBackupService::lookAtFolder() {
    const auto known = bookmark();
    m_looksAgain = m_folderLook != nullptr;
    if (m_folderLook || !known || obstacle()) {
        return;
    }
    m_folderLook = std::make_unique<BackgroundTask>(
        m_surroundings.threads, m_surroundings.runLoop,
        [folder = *known](Work&) { static_cast<void>(folder.open()); },
        [this](std::future<void> isThere) { seeFolder(std::move(isThere)); });
}

void AutomaticBackupService::seeFolder(std::future<void> isThere) {
    m_folderLook.reset();
    const auto before = m_seen;
    try {
        isThere.get();
        m_seen = FolderState::there;
    } catch (const AutomaticBackupError&) {
        m_seen = FolderState::gone;
    } catch (const base::Error&) {
        // It could not be looked at.
    }
    if (m_looksAgain) {
        lookAtFolder();
    }
    if (m_seen != before) {
        m_didChange.emit();
    }
}

} // namespace korvex::storage
