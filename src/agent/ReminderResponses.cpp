#include "agent/ReminderResponses.h"

#include "app/Links.h"
#include "base/Error.h"
#include "model/Entry.h"
#include "platform/bus/DesktopApplication.h"
#include "platform/bus/StoreChangeSignal.h"
#include "schedule/CompleteTodoIntent.h"
#include "schedule/WidgetRefreshService.h"
#include "store/StoreError.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace korvex::agent {

using base::codeOf;
using platform::bus::BusErrorCase;
using platform::bus::NotificationDaemon;
using schedule::ReminderNotification;
using store::StoreError;
using store::StoreErrorCase;

namespace {

/// Before a completion that has failed is tried again; it doubles. All together some four minutes.
constexpr std::chrono::duration<double> kFirstPause{1};
constexpr std::chrono::duration<double> kLongestPause{128};

/// Somebody has exchanged the files of the store under whoever has them open.
bool isAboutFiles(const StoreError& error) {
    return error.which() == StoreErrorCase::incomplete ||
           error.which() == StoreErrorCase::changesMissing;
}

} // namespace

ReminderResponses::ReminderResponses(Parts parts, NotificationDaemon& daemon)
    : m_parts(std::move(parts)), m_daemon(daemon), m_log(m_parts.log, "ReminderResponses") {
    m_choices =
        daemon.chosen().connect([this](const NotificationDaemon::Choice& choice) { take(choice); });
}

void ReminderResponses::take(const NotificationDaemon::Choice& choice) {
    const auto entry = entryOf(choice.shown);
    if (!entry) {
        return;
    }
    const auto isToComplete = choice.action == ReminderNotification::kCompleteAction;
    if (!isToComplete && choice.action != NotificationDaemon::kOpen) {
        return;
    }
    if (isToComplete) {
        finish(complete(*entry), *entry, choice);
    } else {
        show(*entry, choice);
    }
    m_responded.emit();
}

void ReminderResponses::finish(Completion completion, const base::Uuid& entry,
                               const NotificationDaemon::Choice& choice) {
    if (completion == Completion::failed) {
        completeLater(entry, choice);
        return;
    }
    m_unfinished.erase(entry);
    if (completion == Completion::done) {
        withdraw(entry);
    } else {
        show(entry, choice); // it says where the todo is that stays open
    }
}

std::optional<base::Uuid> ReminderResponses::entryOf(const NotificationDaemon::Shown& shown) {
    const ShownNotification notification{.id = shown.id, .daemon = shown.daemon};
    try {
        return m_parts.delivery.entryOf(notification);
    } catch (const StoreError& error) {
        m_log.error("What was answered to cannot be read; code " + codeOf(error));
    }
    try {
        // It opens a table again that has failed, and what is missing then is planned.
        m_parts.client.pending(m_parts.clock.now());
    } catch (const StoreError&) {
        // As it may where that has helped.
    }
    m_responded.emit();
    return m_parts.delivery.entryOf(notification);
}

ReminderResponses::Completion ReminderResponses::complete(const base::Uuid& entry) {
    try {
        try {
            return completeStored(entry);
        } catch (const StoreError& error) {
            if (!isAboutFiles(error)) {
                throw;
            }
            m_parts.store.close();
            return completeStored(entry);
        }
    } catch (const std::exception& error) {
        m_log.error("Notification completion failed; code " + codeOf(error));
        return Completion::failed;
    }
}

void ReminderResponses::completeLater(const base::Uuid& entry,
                                      const NotificationDaemon::Choice& choice) {
    auto& unfinished = m_unfinished[entry];
    if (unfinished.pause >= kLongestPause) {
        m_unfinished.erase(entry);
        show(entry, choice); // it says what is the matter
        return;
    }
    unfinished.pause = std::max(2 * unfinished.pause, kFirstPause);
    unfinished.timer = m_parts.runLoop.callAfter(
        unfinished.pause, [this, entry, choice] { completeAgain(entry, choice); });
}

void ReminderResponses::completeAgain(base::Uuid entry, NotificationDaemon::Choice choice) {
    finish(complete(entry), entry, choice);
    if (!m_unfinished.contains(entry)) {
        m_responded.emit();
    }
}

void ReminderResponses::finishNow() {
    for (const auto& [entry, unfinished] : std::exchange(m_unfinished, {})) {
        complete(entry);
    }
}

ReminderResponses::Completion ReminderResponses::completeStored(const base::Uuid& entry) {
    auto* const opened = m_parts.store.open();
    if (!opened) {
        throw StoreError(StoreErrorCase::missing, m_parts.store.file().string());
    }
    schedule::WidgetRefreshService widgets([](std::string_view) {}, m_parts.log);
    store::ModelContext context(*opened->container);
    const auto isCompleted =
        schedule::CompleteTodoIntent(m_parts.scheduler, widgets, m_parts.log)
            .complete(entry.text(), context, m_parts.clock.now(), &m_parts.client);
    // Windows and widgets listen to it. They look also where nothing was changed now: what was
    // answered to may be completed for long.
    platform::bus::announceStoreChange(m_parts.bus, m_parts.store.file());
    const auto* const todo = isCompleted ? nullptr : context.find<model::Entry>(entry);
    if (!todo || !todo->isOpenTodo()) {
        return Completion::done;
    }
    m_log.error("Notification completion failed; code 0");
    return Completion::refused;
}

void ReminderResponses::withdraw(const base::Uuid& entry) {
    try {
        const auto identifier = ReminderNotification::identifier(entry);
        m_parts.client.cancel({&identifier, 1});
    } catch (const std::exception& error) {
        m_log.error("A notification could not be withdrawn; code " + codeOf(error));
    }
}

void ReminderResponses::show(const base::Uuid& entry, const NotificationDaemon::Choice& choice) {
    const auto link = app::entryUrl(entry);
    m_opening[entry] = platform::bus::callDesktop(
        m_parts.bus, {.links = {link}, .token = choice.token},
        platform::bus::MethodAddress::Start::allowed,
        [this, entry, link, choice](const platform::bus::Reply& reply) {
            const auto done = m_opening.extract(entry);
            const auto* const error = reply.error();
            // Where the bus does not know how, as from a folder that it was built in. One that is
            // there and does not answer is not started twice.
            const auto isTaken =
                !error || (error->which() != BusErrorCase::timedOut && m_parts.startDesktop &&
                           m_parts.startDesktop(link, choice.token));
            if (isTaken) {
                // Not every daemon closes by itself what was answered. It tells of it.
                m_daemon.close(choice.shown, [] {});
            } else {
                m_log.error(std::string("Could not open notification entry: ") + error->what());
            }
            m_responded.emit();
        });
}

} // namespace korvex::agent
