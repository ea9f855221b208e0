#include "storage/AutomaticBackupService.h"

#include "storage/FolderBookmark.h"

#include <chrono>
#include <system_error>

namespace korvex::storage {

namespace {

using Preference = app::AppPreferences::Property;

constexpr double kDay = 86'400;
constexpr std::chrono::seconds kBetweenLooks{900};
/// The slowest disk takes less to put a backup away, or a mark.
constexpr std::chrono::minutes kLongestSilence{3};

std::exception_ptr noAnswer() {
    return std::make_exception_ptr(AutomaticBackupError(AutomaticBackupErrorCase::noAnswer));
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
    if (property == Preference::automaticBackupEnabled ||
        property == Preference::automaticBackupBookmark) {
        if (m_timer) {
            lookSoon();
        }
        m_didChange.emit();
    } else if (property == Preference::automaticBackupLastSuccess) {
        m_didChange.emit();
    }
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
    const auto last = preferences.automaticBackupLastSuccess();
    return isDue(last, now) ? now : *last + kDay;
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
    if (m_run && !m_advance) {
        leave();
    } else if (m_run) {
        m_run->cancel();
    }
}

void AutomaticBackupService::run(base::Instant now, AskedBy asked) {
    if (m_run || obstacle()) {
        return;
    }
    const auto request = automaticBackup(m_surroundings.preferences,
                                         m_surroundings.container.configuration().file, now);
    m_progress = {};
    m_run = std::make_unique<BackgroundTask>(
        m_surroundings.threads, m_surroundings.runLoop,
        [request, defaults = m_surroundings.defaults.forAnotherThread(), &log = m_surroundings.log](
            Work& work) { return makeAutomaticBackup(request, *defaults, log, work); },
        [this, request, asked](std::future<AutomaticBackupResult> result) {
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
    m_advance = m_surroundings.runLoop.callAfter(kLongestSilence, [this] {
        m_advance.reset();
        fail(noAnswer(), AskedBy::user);
        m_didChange.emit();
    });
}

/// The run goes on alone, if it does, as far as to where it notices that nobody waits for it.
void AutomaticBackupService::leave() {
    m_run.reset();
    m_didChange.emit();
}

void AutomaticBackupService::finish(std::future<AutomaticBackupResult> result,
                                    const AutomaticBackup& request, AskedBy asked) {
    m_run.reset();
    m_advance.reset();
    try {
        const auto made = result.get();
        succeed(request);
        if (made.pruningFailure) {
            fail(made.pruningFailure, asked);
        }
    } catch (const std::exception&) {
        fail(std::current_exception(), asked);
    }
    m_didChange.emit();
}

void AutomaticBackupService::succeed(const AutomaticBackup& request) {
    m_errorMessage.reset();
    m_errorReason.clear();
    auto& preferences = m_surroundings.preferences;
    preferences.reload();
    if (preferences.automaticBackupBookmark() != request.bookmark) {
        if (m_timer) {
            lookSoon(); // another folder was chosen meanwhile, which has none
        }
    } else if (isDue(preferences.automaticBackupLastSuccess(), request.now)) {
        // Settings that cannot be written hold in this program, or each look would make one more.
        preferences.setAutomaticBackupLastSuccess(request.now);
    }
}

void AutomaticBackupService::fail(const std::exception_ptr& failure, AskedBy asked) {
    auto code = 0;
    try {
        std::rethrow_exception(failure);
    } catch (const Cancelled&) {
        return;
    } catch (const AutomaticBackupError& error) {
        if (error.which() == AutomaticBackupErrorCase::running && asked == AskedBy::clock) {
            return; // it is being made, if not here
        }
        m_errorReason = error.errorDescription();
        code = error.code();
    } catch (const base::Error& error) {
        m_errorReason = error.errorDescription();
        code = error.code();
    } catch (const std::exception& error) {
        m_errorReason = error.what();
    }
    m_errorMessage = kFailure;
    m_log.error("Backup operation failed: " + m_errorReason + " (" + std::to_string(code) + ")");
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
        none.set_exception(noAnswer());
        choose(none.get_future());
    });
    m_didChange.emit();
}

void AutomaticBackupService::choose(std::future<base::Bytes> bookmark) {
    m_choice.reset();
    m_choiceAnswer.reset();
    try {
        auto bytes = bookmark.get();
        if (m_run && !m_advance) {
            leave(); // in the folder before
        }
        auto& preferences = m_surroundings.preferences;
        // First, or a program that is killed in between would leave the new folder without a backup
        // until tomorrow; and once more, for one that was made in the folder before by then.
        preferences.setAutomaticBackupLastSuccess(std::nullopt);
        preferences.setAutomaticBackupBookmark(std::move(bytes));
        preferences.setAutomaticBackupLastSuccess(std::nullopt);
    } catch (const base::Error& error) {
        m_choiceRefusal = error.errorDescription();
    } catch (const std::exception&) {
        m_choiceRefusal = descriptionOf(AutomaticBackupErrorCase::notSaved);
    }
    m_didChange.emit();
}

std::optional<std::filesystem::path> AutomaticBackupService::folder() const {
    const auto& bytes = m_surroundings.preferences.automaticBackupBookmark();
    const auto bookmark = bytes ? FolderBookmark::ofBytes(*bytes) : std::nullopt;
    return bookmark ? std::optional(bookmark->path()) : std::nullopt;
}

} // namespace korvex::storage
