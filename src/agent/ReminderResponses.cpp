#include "agent/ReminderResponses.h"

#include "app/Links.h"
#include "platform/bus/DesktopApplication.h"
#include "platform/bus/StoreChangeSignal.h"
#include "schedule/CompleteTodoIntent.h"
#include "schedule/WidgetRefreshService.h"
#include "store/StoreError.h"

#include <exception>
#include <utility>

namespace korvex::agent {

using platform::bus::NotificationDaemon;
using schedule::ReminderNotification;
using store::StoreError;
using store::StoreErrorCase;

namespace {

std::string codeOf(const std::exception& error) {
    const auto* const ours = dynamic_cast<const base::Error*>(&error);
    return std::to_string(ours ? ours->code() : 0);
}

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
    const auto entry =
        m_parts.delivery.entryOf({.id = choice.shown.id, .daemon = choice.shown.daemon});
    if (!entry) {
        return; // another program's
    }
    // Not every daemon closes by itself what was answered.
    if (choice.action == ReminderNotification::kCompleteAction) {
        complete(*entry);
        withdraw(*entry);
    } else if (choice.action == NotificationDaemon::kOpen) {
        open(*entry, choice.token);
        m_daemon.close(choice.shown, [] {}); // which it tells of
    } else {
        return;
    }
    m_responded.emit();
}

void ReminderResponses::complete(const base::Uuid& entry) {
    try {
        try {
            completeStored(entry);
        } catch (const StoreError& error) {
            if (!isAboutFiles(error)) {
                throw;
            }
            m_parts.store.close();
            completeStored(entry);
        }
    } catch (const std::exception& error) {
        m_log.error("Notification completion failed; code " + codeOf(error));
    }
}

void ReminderResponses::completeStored(const base::Uuid& entry) {
    auto* const opened = m_parts.store.open();
    if (!opened) {
        throw StoreError(StoreErrorCase::missing, m_parts.store.file().string());
    }
    schedule::WidgetRefreshService widgets([](std::string_view) {}, m_parts.log);
    store::ModelContext context(*opened->container);
    schedule::CompleteTodoIntent(m_parts.scheduler, widgets, m_parts.log)
        .complete(entry.text(), context, m_parts.clock.now(), &m_parts.client);
    // Windows and widgets listen to it. They look also where nothing was changed now: what was
    // answered to may be completed for long.
    platform::bus::announceStoreChange(m_parts.bus, m_parts.store.file());
}

void ReminderResponses::withdraw(const base::Uuid& entry) {
    try {
        const auto identifier = ReminderNotification::identifier(entry);
        m_parts.client.cancel({&identifier, 1});
    } catch (const std::exception& error) {
        m_log.error("A notification could not be withdrawn; code " + codeOf(error));
    }
}

void ReminderResponses::open(const base::Uuid& entry, const std::string& token) {
    const auto link = app::entryUrl(entry);
    m_opening[entry] = platform::bus::callDesktop(
        m_parts.bus, {.links = {link}, .token = token},
        platform::bus::MethodAddress::Start::allowed,
        [this, entry, link, token](const platform::bus::Reply& reply) {
            const auto done = m_opening.extract(entry);
            const auto* const error = reply.error();
            // Where the bus does not know how, as from a folder that it was built in.
            if (error && error->which() != platform::bus::BusErrorCase::timedOut &&
                !(m_parts.startDesktop && m_parts.startDesktop(link, token))) {
                m_log.error("Could not open notification entry: " + error->errorDescription());
            }
        });
}

} // namespace korvex::agent
