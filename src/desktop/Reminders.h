#pragma once

#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/bus/AgentClient.h"
#include "platform/bus/Bus.h"
#include "schedule/ReminderCenter.h"
#include "schedule/WidgetRefreshService.h"
#include "store/ModelContext.h"

#include <QObject>

#include <filesystem>
#include <optional>

namespace korvex::desktop {

/// What the windows have outside of them: the agent, which reminds of todos, and the widgets. It
/// asks the agent once there is a bus, whenever the user comes back to the windows, and when others
/// change the store. Main thread; all that it is given must outlive it.
class Reminders final : public QObject {
    Q_OBJECT

public:
    enum class Store { usersOwn, another };

    /// Nobody reminds of another store than the user's own.
    Reminders(platform::bus::Bus& bus, base::RunLoop& runLoop,
              const std::filesystem::path& storeFile, Store store, base::LogSink& log);

    /// Null for another store.
    schedule::ReminderCenter* center() { return m_agent ? &*m_agent : nullptr; }
    services::WidgetReloading* widgets() { return &m_widgets; }

    /// Hears from now on what others change in the store.
    void follow(store::ModelContext& context);

private:
    std::optional<platform::bus::AgentClient> m_agent;
    schedule::WidgetRefreshService m_widgets;
    base::Subscription m_changes;
};

} // namespace korvex::desktop
