#pragma once

#include "agent/ReminderDelivery.h"
#include "agent/ReminderTable.h"
#include "agent/TableNotificationClient.h"
#include "schedule/ReminderScheduler.h"
#include "store/ModelContext.h"
#include "support/FakeClock.h"
#include "support/FakeRunLoop.h"

#include <filesystem>

namespace korvex::tests {

/// What an agent is made of, but for the bus. Its scheduler is started, and reconciles by itself;
/// an agent has it reconcile whenever it has opened the store.
struct AgentParts {
    AgentParts(const std::filesystem::path& file, store::ModelContainer& store,
               const FakeClock& clock, FakeRunLoop& runLoop, base::LogSink& log)
        : table(file, log),
          client(table),
          scheduler(client, clock, runLoop, log),
          context(store),
          delivery(table, clock, runLoop, log) {
        delivery.useStore(&context);
        scheduler.start(store);
    }

    agent::ReminderTable table;
    agent::TableNotificationClient client;
    schedule::ReminderScheduler scheduler;
    store::ModelContext context;
    agent::ReminderDelivery delivery;
};

} // namespace korvex::tests
