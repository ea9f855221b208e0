#pragma once

#include "schedule/NotificationScheduling.h"
#include "store/StoreError.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvex::tests {

/// Keeps requests by their identifiers, counts what is asked of it, and fails when it is told to.
class FakeNotificationCenter final : public schedule::NotificationScheduling {
public:
    void registerCategory() override { ++categories; }
    schedule::AuthorizationStatus authorization() override { return status; }
    std::vector<schedule::PendingReminder> pending(base::Instant) override {
        fail("pending");
        std::vector<schedule::PendingReminder> result;
        for (const auto& [identifier, request] : requests) {
            result.push_back({.request = request});
        }
        return result;
    }
    void add(const schedule::ReminderRequest& request) override {
        fail("add");
        requests[schedule::ReminderNotification::identifier(request.entryID)] = request;
        added.push_back(request);
    }
    void cancel(std::span<const std::string> identifiers) override {
        fail("cancel");
        cancelled.emplace_back(identifiers.begin(), identifiers.end());
        for (const auto& identifier : identifiers) {
            requests.erase(identifier);
        }
    }
    void requestAuthorization() override {
        ++asked;
        fail("requestAuthorization");
        status = answer;
    }

    void forgetCalls() {
        added.clear();
        cancelled.clear();
    }

    std::map<std::string, schedule::ReminderRequest> requests;
    schedule::AuthorizationStatus status = schedule::AuthorizationStatus::authorized;
    schedule::AuthorizationStatus answer = schedule::AuthorizationStatus::denied;
    int categories = 0;
    int asked = 0;
    std::vector<schedule::ReminderRequest> added;
    /// One for each call.
    std::vector<std::vector<std::string>> cancelled;
    /// The call that fails, once so many of it have succeeded.
    std::string failing;
    int succeeding = 0;

private:
    void fail(std::string_view call) {
        if (call == failing && succeeding-- == 0) {
            throw store::StoreError(store::StoreErrorCase::full);
        }
    }
};

} // namespace korvex::tests
