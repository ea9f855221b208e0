#pragma once

#include "schedule/ReminderCenter.h"

#include <utility>

namespace korvex::tests {

/// Says what the test has set, and counts what it is asked for.
class FakeReminderCenter final : public schedule::ReminderCenter {
public:
    void set(Status status) {
        m_status = std::move(status);
        didChange().emit();
    }
    void set(schedule::AuthorizationStatus authorization, std::string reason = {}) {
        set(Status{.authorization = authorization, .reason = std::move(reason)});
    }

    void requestReconcile() override { ++reconciles; }
    void removePending(std::span<const base::Uuid>) override {}
    const Status& status() const override { return m_status; }
    void requestAuthorization() override { ++authorizationRequests; }

    int reconciles = 0;
    int authorizationRequests = 0;

private:
    Status m_status;
};

} // namespace korvex::tests
