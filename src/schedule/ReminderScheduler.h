#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "schedule/NotificationScheduling.h"
#include "services/Collaborators.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvex::schedule {

/// Plans the notifications of the whole store. The stored todos are the only truth: nothing is
/// scheduled one by one, so every way in which a reminder can change ends in the same state. One
/// for all programs on a store; main thread. The client must outlive it.
class ReminderScheduler final : public services::ReminderReconciling {
public:
    ReminderScheduler(NotificationScheduling& client, const base::Clock& clock,
                      base::RunLoop& runLoop, base::LogSink& log);
    ~ReminderScheduler() override;
    ReminderScheduler(const ReminderScheduler&) = delete;
    ReminderScheduler& operator=(const ReminderScheduler&) = delete;

    /// Keeps the container, which must outlive this or `stop`, registers the category, looks
    /// whether notifications may be shown, and requests a reconcile.
    void start(store::ModelContainer& container);
    /// Lets go of every container: what is requested is not carried out.
    void stop();

    /// Looks again whether notifications may be shown. Where that is not determined, the user is
    /// asked if that is wanted.
    enum class RequestIfNeeded { no, yes };
    void refreshAuthorization(RequestIfNeeded request);

    /// Reconciles soon, on the main thread, with the store as it is by then. Of several requests
    /// only the newest is carried out. A failure is logged and said in `schedulingErrorMessage`,
    /// and it is tried again after a while that doubles. The container must live until it has
    /// succeeded.
    void requestReconcile(store::ModelContainer& container);
    /// The same with the container given at the start; before the start nothing.
    void reconcileStartedStore();

    /// Cancels what is stale or differs, in one call, and adds what is missing; what is as it
    /// should be is not touched. Throws what the store or the client throws, logged and said: the
    /// next reconcile repairs the difference.
    void reconcile(store::ModelContext& context, base::Instant now);
    /// The same for whoever opens the store only for that: it could not be opened, which is logged
    /// and said as any failure.
    void reconcileFailed(const std::exception& error);
    /// There is no store: what has failed before is not said any more.
    void reconcileNothing();

    // ReminderReconciling: for whoever changes the store in this process.
    void requestReconcile() override { reconcileStartedStore(); }
    void removePending(std::span<const base::Uuid> entryIDs) override;

    AuthorizationStatus authorizationStatus() const { return m_state.authorizationStatus; }
    std::string_view statusLabel() const {
        return schedule::statusLabel(m_state.authorizationStatus);
    }
    /// What the user is to be told, in English, to be translated.
    const std::optional<std::string>& permissionErrorMessage() const {
        return m_state.permissionErrorMessage;
    }
    const std::optional<std::string>& schedulingErrorMessage() const {
        return m_state.schedulingErrorMessage;
    }
    /// Emitted when one of these is another.
    base::Signal<>& didChange() { return m_didChange; }

private:
    struct Request;
    struct State {
        AuthorizationStatus authorizationStatus = AuthorizationStatus::notDetermined;
        std::optional<std::string> permissionErrorMessage;
        std::optional<std::string> schedulingErrorMessage;

        bool operator==(const State&) const = default;
    };

    void reconcileNow(store::ModelContainer& container);
    void plan(store::ModelContext& context, base::Instant now);
    void attempt(const std::function<void()>& work);
    void setState(State state);
    void setSchedulingError(std::optional<std::string> message);

    NotificationScheduling& m_client;
    const base::Clock& m_clock;
    base::RunLoop& m_runLoop;
    base::Logger m_log;
    std::shared_ptr<Request> m_request;
    store::ModelContainer* m_container = nullptr;
    std::unique_ptr<base::RunLoop::Timer> m_retry;
    std::chrono::duration<double> m_retryDelay{};
    State m_state;
    base::Signal<> m_didChange;
};

} // namespace korvex::schedule
