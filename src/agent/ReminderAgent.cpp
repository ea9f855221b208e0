#include "agent/ReminderAgent.h"

#include "base/Error.h"
#include "base/Text.h"
#include "platform/bus/AgentProtocol.h"
#include "storage/StoreMarkers.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace korvex::agent {

namespace {

using app::AgentReminder;
using app::AgentStatus;
using platform::bus::NotificationDaemon;
using schedule::AuthorizationStatus;

/// What one program writes comes as several hints.
constexpr std::chrono::milliseconds kCoalescing{20};
/// After a failure; the pauses double in between.
constexpr std::chrono::duration<double> kFirstRetry{1};
constexpr std::chrono::duration<double> kLongestRetry{300};
/// A thousand of them fit into a message.
constexpr std::size_t kLongestBody = 500;

constexpr const char* kNobody =
    "No program that shows notifications is running, and none is installed that could be started.";

/// Empty where nothing keeps the daemon from showing them.
const char* reasonOf(NotificationDaemon::Failure failure) {
    switch (failure) {
    case NotificationDaemon::Failure::none:
        break;
    case NotificationDaemon::Failure::notStarted:
        return "The program that shows notifications cannot be started.";
    case NotificationDaemon::Failure::silent:
        return "The program that shows notifications does not answer.";
    case NotificationDaemon::Failure::refusing:
        return "The program that shows notifications refuses to show any.";
    }
    return "";
}

/// What stands beside the store and is written whenever somebody changes or prepares it.
std::vector<std::string> filesOf(const std::filesystem::path& storeFile) {
    const auto name = storeFile.filename().string();
    return {name, name + ".lock", std::string(storage::storeMarkers::kPrepared)};
}

AgentReminder toReminder(const ReminderTable::Row& row) {
    using State = AgentReminder::State;
    const auto state = [&] {
        switch (row.state) {
        case ReminderState::pending:
            break;
        case ReminderState::posted:
            return State::shown;
        case ReminderState::gone:
            return State::closed;
        case ReminderState::withdrawn:
            return State::withdrawn;
        }
        return State::pending;
    }();
    auto body = base::repairedUtf8(row.request.body);
    if (body.size() > kLongestBody) {
        body.resize(base::characterStart(body, kLongestBody));
    }
    return {row.request.entryID, row.request.date, std::move(body), state};
}

} // namespace

ReminderAgent::ReminderAgent(Surroundings surroundings)
    : m_surroundings(std::move(surroundings)),
      m_log(m_surroundings.log, "ReminderAgent"),
      m_table(m_surroundings.tableFile, m_surroundings.log),
      m_client(m_table),
      m_scheduler(m_client, m_surroundings.clock, m_surroundings.runLoop, m_surroundings.log),
      m_store(m_surroundings.storeFile, m_surroundings.runLoop, m_surroundings.log),
      m_delivery(m_table, m_surroundings.clock, m_surroundings.runLoop, m_surroundings.log),
      m_daemon(m_surroundings.bus, m_surroundings.log),
      m_switches(m_surroundings.bus, m_daemon, m_surroundings.runLoop, m_surroundings.settings),
      m_posting(m_delivery, m_store, m_daemon, m_surroundings.runLoop, m_surroundings.log),
      m_responses({.bus = m_surroundings.bus,
                   .runLoop = m_surroundings.runLoop,
                   .store = m_store,
                   .delivery = m_delivery,
                   .client = m_client,
                   .scheduler = m_scheduler,
                   .clock = m_surroundings.clock,
                   .log = m_surroundings.log,
                   .startDesktop = m_surroundings.startDesktop},
                  m_daemon),
      m_object(m_surroundings.bus, *this),
      m_changes(m_surroundings.bus, m_surroundings.storeFile),
      m_files(m_surroundings.runLoop, m_surroundings.storeFile.parent_path(),
              filesOf(m_surroundings.storeFile)) {
    m_subscriptions.push_back(m_store.changed().connect(
        [this](store::ModelContext* context) { m_delivery.useStore(context); }));
    // Nobody can be reminded without the bus.
    m_subscriptions.push_back(
        m_surroundings.bus.stateChanged().connect([this](platform::bus::Bus::State state) {
            if (state == platform::bus::Bus::State::connected) {
                reconcileSoon(Reason::request);
            }
        }));
    m_subscriptions.push_back(m_daemon.changed().connect([this] { followDaemon(); }));
    m_subscriptions.push_back(m_switches.changed().connect([this] {
        refreshAuthorization();
        tellStatus();
    }));
    m_subscriptions.push_back(m_changes.changed().connect([this] { takeHint(); }));
    m_subscriptions.push_back(m_files.changed().connect([this] { takeHint(); }));
    m_subscriptions.push_back(
        m_posting.tableFailed().connect([this] { reconcileSoon(Reason::request); }));
    m_subscriptions.push_back(
        m_responses.responded().connect([this] { reconcileSoon(Reason::request); }));
    const auto tellIfQuiet = [this] {
        if (isQuiet()) {
            m_becameQuiet.emit();
        }
    };
    m_subscriptions.push_back(m_posting.becameQuiet().connect(tellIfQuiet));
    m_subscriptions.push_back(m_responses.responded().connect(tellIfQuiet));
    if (m_surroundings.bus.isConnected()) {
        reconcileSoon(Reason::request);
    }
}

ReminderAgent::~ReminderAgent() {
    m_subscriptions.clear(); // nothing more is planned
    m_responses.finishNow();
}

bool ReminderAgent::looksAfter(const std::string& storeFile) const {
    // As texts: another program's path may lie where nothing answers.
    return storeFile.empty() || storeFile == platform::bus::agentStoreArgument(m_store.file());
}

void ReminderAgent::reconcile(std::span<const base::Uuid> withdrawn) {
    if (!withdrawn.empty()) {
        std::vector<std::string> identifiers;
        identifiers.reserve(withdrawn.size());
        for (const auto& id : withdrawn) {
            identifiers.push_back(schedule::ReminderNotification::identifier(id));
        }
        try {
            m_client.cancel(identifiers);
        } catch (const base::Error& error) {
            // The reconcile finds it.
            m_log.warning(std::string("Could not withdraw: ") + error.what());
        }
    }
    reconcileSoon(Reason::request);
}

void ReminderAgent::timeChanged() {
    reconcileSoon(Reason::request);
}

void ReminderAgent::takeHint() {
    if (!m_pause) {
        m_pause = m_surroundings.runLoop.callAfter(kCoalescing, [this] {
            m_pause.reset();
            reconcileSoon(Reason::hint);
        });
    }
}

void ReminderAgent::reconcileSoon(Reason reason) {
    m_isRequested = m_isRequested || reason == Reason::request;
    if (std::exchange(m_willReconcile, true)) {
        return;
    }
    m_surroundings.runLoop.post([this, life = std::weak_ptr<const bool>(m_life)] {
        if (!life.expired()) {
            m_willReconcile = false;
            reconcileNow();
        }
    });
}

void ReminderAgent::reconcileNow() {
    const auto isRequested = std::exchange(m_isRequested, false);
    // What came due while nobody looked comes first, or the reconcile would take it for past.
    m_posting.serve();
    try {
        plan(isRequested);
        m_retry.reset();
        m_retryDelay = {};
    } catch (const base::Error&) {
        // It is logged, said in the status, and tried again with the next hint, or after a while.
        m_planned.reset();
        m_store.close();
        retryLater();
    }
    tellStatus();
}

void ReminderAgent::plan(bool isRequested) {
    UserStore::Opened* opened = nullptr;
    std::optional<std::pair<base::Uuid, std::int64_t>> seen;
    try {
        opened = m_store.open();
        if (opened) {
            seen.emplace(opened->container->storeID(), opened->container->revision());
        }
    } catch (const base::Error& error) {
        m_scheduler.reconcileFailed(error);
        throw;
    }
    if (!opened) {
        m_scheduler.reconcileNothing();
        m_planned.reset(); // whatever comes is planned from
    } else if (isRequested || seen != m_planned) {
        m_scheduler.reconcile(opened->context, m_surroundings.clock.now());
        m_planned = seen;
        m_posting.serve();
    }
}

void ReminderAgent::retryLater() {
    if (m_retry) {
        return; // a program that writes often does not make it wait longer
    }
    m_retryDelay = std::clamp(2 * m_retryDelay, kFirstRetry, kLongestRetry);
    m_retry = m_surroundings.runLoop.callAfter(m_retryDelay, [this] {
        m_retry.reset();
        reconcileSoon(Reason::request);
    });
}

void ReminderAgent::followDaemon() {
    refreshAuthorization();
    m_posting.serve();
    tellStatus();
}

void ReminderAgent::requestAuthorization() {
    m_daemon.look();
    m_switches.look();
    refreshAuthorization();
    m_delivery.endPauses();
    m_posting.serve();
}

void ReminderAgent::refreshAuthorization() {
    if (!m_switches.isKnown()) {
        return; // what was known of the last one is said for as long
    }
    auto status = AuthorizationStatus::unavailable;
    switch (m_daemon.presence()) {
    case NotificationDaemon::Presence::unknown:
        break;
    case NotificationDaemon::Presence::missing:
        m_reason = kNobody;
        break;
    case NotificationDaemon::Presence::running:
    case NotificationDaemon::Presence::startable:
        m_reason = reasonOf(m_daemon.failure());
        if (m_reason.empty()) {
            status = m_switches.setting().isOff ? AuthorizationStatus::denied
                                                : AuthorizationStatus::authorized;
        }
        break;
    }
    m_canAct = m_daemon.canAct();
    m_isQuieted = m_switches.setting().isQuieted;
    m_client.setAuthorization(status);
    m_scheduler.refreshAuthorization(schedule::ReminderScheduler::RequestIfNeeded::no);
}

AgentStatus ReminderAgent::status() {
    AgentStatus status{
        .reminders = {.authorization = m_client.authorization(),
                      .reason = m_reason,
                      .canAct = m_canAct,
                      .isQuieted = m_isQuieted,
                      .permissionErrorMessage = m_scheduler.permissionErrorMessage(),
                      .schedulingErrorMessage = m_scheduler.schedulingErrorMessage()},
        .version = m_surroundings.version,
        .processID = static_cast<std::uint32_t>(::getpid()),
        .daemon = m_daemon.description()};
    try {
        // That too what is due and waits for somebody who shows it.
        status.nextDue = m_table.nextDue(base::Instant::distantPast());
    } catch (const base::Error& error) {
        status.isNextDueKnown = false;
        m_log.warning(std::string("What is due next cannot be read: ") + error.what());
    }
    return status;
}

void ReminderAgent::tellStatus() {
    const auto now = status();
    auto told = now;
    // When something is due next changes all the time, and nobody waits for that.
    told.nextDue.reset();
    if (told != m_told) {
        m_told = std::move(told);
        m_object.statusChanged(now);
    }
}

app::AgentReminders ReminderAgent::reminders() {
    if (m_isRequested) {
        reconcileNow(); // who asks first of all is not told of an empty table
    }
    app::AgentReminders reminders;
    const auto [rows, more] = m_table.rows(AgentReminder::kMost);
    for (const auto& row : rows) {
        reminders.listed.push_back(toReminder(row));
    }
    reminders.more = more;
    return reminders;
}

} // namespace korvex::agent
