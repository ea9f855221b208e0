#include "schedule/ReminderScheduler.h"

#include "base/Digest.h"
#include "base/Error.h"
#include "schedule/StoredReminders.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

namespace korvex::schedule {

namespace {

using base::codeOf;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kFirstRetry{1};
constexpr Seconds kLongestRetry{300};

/// What is to be done so that the pending requests are those that the store asks for.
struct Difference {
    /// The notifications of requests that are stale or differ.
    std::vector<std::string> cancelled;
    std::vector<ReminderRequest> added;
};

bool isSooner(const PendingReminder& left, const PendingReminder& right) {
    const auto& [leftID, leftDate, leftBody] = left.request;
    const auto& [rightID, rightDate, rightBody] = right.request;
    return leftDate != rightDate ? leftDate < rightDate : leftID < rightID;
}

bool isAsWanted(const PendingReminder& pending, const StoredReminders::View& wanted) {
    const auto& [request, wasShown] = pending;
    return wanted == request ||
           (wasShown && wanted.entryID == request.entryID && wanted.date == request.date);
}

/// Both sides come by their dates, or nearly so: then each is found where the last one was.
Difference differenceOf(std::vector<PendingReminder> pending, store::ModelContext& context,
                        base::Instant now) {
    if (!std::is_sorted(pending.begin(), pending.end(), isSooner)) {
        std::sort(pending.begin(), pending.end(), isSooner);
    }
    Difference difference;
    std::vector<bool> isWanted(pending.size());
    auto next = pending.begin();
    StoredReminders(context).forEachAfter(now, [&](const StoredReminders::View& wanted) {
        if (next == pending.end() || next->request.entryID != wanted.entryID) {
            const PendingReminder place{.request = {wanted.entryID, wanted.date, {}}};
            next = std::lower_bound(pending.begin(), pending.end(), place, isSooner);
        }
        if (next != pending.end() && isAsWanted(*next, wanted)) {
            isWanted[static_cast<std::size_t>(next - pending.begin())] = true;
            ++next;
        } else {
            difference.added.push_back(wanted.request());
        }
    });
    for (std::size_t i = 0; i < pending.size(); ++i) {
        if (!isWanted[i]) {
            difference.cancelled.push_back(
                ReminderNotification::identifier(pending[i].request.entryID));
        }
    }
    return difference;
}

} // namespace

/// What a requested reconcile holds on to, since it may run after the scheduler has ended.
struct ReminderScheduler::Request {
    /// Null once the scheduler has ended.
    ReminderScheduler* scheduler;
    /// One more with each request: an older one is outdated.
    std::uint64_t revision = 0;
};

ReminderScheduler::ReminderScheduler(NotificationScheduling& client, const base::Clock& clock,
                                     base::RunLoop& runLoop, base::LogSink& log)
    : m_client(client),
      m_clock(clock),
      m_runLoop(runLoop),
      m_log(log, "ReminderScheduler"),
      m_request(std::make_shared<Request>(Request{.scheduler = this})) {}

ReminderScheduler::~ReminderScheduler() {
    m_request->scheduler = nullptr;
}

void ReminderScheduler::start(store::ModelContainer& container) {
    m_container = &container;
    m_client.registerCategory();
    refreshAuthorization(RequestIfNeeded::no);
    reconcileStartedStore();
}

void ReminderScheduler::stop() {
    m_container = nullptr;
    ++m_request->revision;
    m_retry.reset();
}

void ReminderScheduler::refreshAuthorization(RequestIfNeeded request) {
    auto state = m_state;
    state.authorizationStatus = m_client.authorization();
    if (state.authorizationStatus == AuthorizationStatus::notDetermined &&
        request == RequestIfNeeded::yes) {
        state.permissionErrorMessage.reset();
        try {
            m_client.requestAuthorization();
        } catch (const std::exception& error) {
            m_log.error("Notification permission request failed; code " + codeOf(error));
            state.permissionErrorMessage = NotificationTexts::kPermissionFailed;
        }
        state.authorizationStatus = m_client.authorization();
    }
    if (state.authorizationStatus != AuthorizationStatus::notDetermined) {
        state.permissionErrorMessage.reset();
    }
    setState(std::move(state));
}

void ReminderScheduler::requestReconcile(store::ModelContainer& container) {
    const auto revision = ++m_request->revision;
    m_retry.reset();
    m_runLoop.post([request = m_request, revision, &container] {
        if (request->scheduler && request->revision == revision) {
            request->scheduler->reconcileNow(container);
        }
    });
}

void ReminderScheduler::reconcileStartedStore() {
    if (m_container) {
        requestReconcile(*m_container);
    }
}

void ReminderScheduler::reconcileNow(store::ModelContainer& container) {
    try {
        attempt([&] {
            store::ModelContext context(container);
            plan(context, m_clock.now());
        });
    } catch (const std::exception&) {
        // It is logged and said. What was not planned has no timer of its own, so this one finds
        // it.
        m_retryDelay = std::clamp(2 * m_retryDelay, kFirstRetry, kLongestRetry);
        m_retry =
            m_runLoop.callAfter(m_retryDelay, [this, &container] { requestReconcile(container); });
    }
}

void ReminderScheduler::reconcile(store::ModelContext& context, base::Instant now) {
    attempt([&] { plan(context, now); });
}

void ReminderScheduler::plan(store::ModelContext& context, base::Instant now) {
    refreshAuthorization(RequestIfNeeded::no);
    const auto difference = differenceOf(m_client.pending(now), context, now);
    m_client.applyReconcile([&] {
        if (!difference.cancelled.empty()) {
            m_client.cancel(difference.cancelled);
        }
        for (const auto& request : difference.added) {
            m_client.add(request);
        }
    });
    // Not sooner: until then all of it may be taken back.
    if (m_log.accepts(base::LogLevel::info)) {
        for (const auto& request : difference.added) {
            m_log.info("Scheduled reminder for entry " + base::maskHash(request.entryID.text()));
        }
    }
    m_retry.reset();
    m_retryDelay = {};
    setSchedulingError(std::nullopt);
}

void ReminderScheduler::removePending(std::span<const base::Uuid> entryIDs) {
    std::vector<std::string> identifiers;
    identifiers.reserve(entryIDs.size());
    for (const auto& id : entryIDs) {
        identifiers.push_back(ReminderNotification::identifier(id));
    }
    try {
        attempt([&] { m_client.cancel(identifiers); });
    } catch (const std::exception&) {
        // The todos are changed all the same, and the next reconcile repairs the difference.
    }
}

void ReminderScheduler::attempt(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& error) {
        reconcileFailed(error);
        throw;
    }
}

void ReminderScheduler::reconcileFailed(const std::exception& error) {
    m_log.error("Reminder reconciliation failed; code " + codeOf(error));
    setSchedulingError(std::string(NotificationTexts::kSchedulingFailed));
}

void ReminderScheduler::reconcileNothing() {
    setSchedulingError(std::nullopt);
}

void ReminderScheduler::setSchedulingError(std::optional<std::string> message) {
    auto state = m_state;
    state.schedulingErrorMessage = std::move(message);
    setState(std::move(state));
}

void ReminderScheduler::setState(State state) {
    if (state != m_state) {
        m_state = std::move(state);
        m_didChange.emit();
    }
}

} // namespace korvex::schedule
