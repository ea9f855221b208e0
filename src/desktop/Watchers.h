#pragma once

#include "base/Signal.h"
#include "desktop/Launches.h"
#include "platform/bus/Bus.h"
#include "store/ModelContainer.h"
#include "ui/kit/theme/Theme.h"
#include "ui/workspace/Workspace.h"

#include <QObject>

#include <memory>
#include <vector>

namespace korvex::desktop {

/// Listens to what comes from outside, and tells others of changes made here: other programs, the
/// clock and the time zone, the desktop's appearance. None of it need stand before the window does.
/// Main thread.
class Watchers final : public QObject {
    Q_OBJECT

public:
    /// What is told of changes; all of it outlives the watchers.
    struct Listeners {
        store::ModelContainer& container;
        const ui::Workspace& workspace;
        ui::Theme& theme;
        /// Only it tells the user of what could not be read.
        MainWindowOwner& mainWindow;
        Launches& launches;
        platform::bus::Bus& bus;
    };
    explicit Watchers(const Listeners& listeners);
    ~Watchers() override;

    /// Listens from now on; only the first call counts.
    void start();

private:
    struct Sources;

    void connectSources();
    void refresh();

    Listeners m_listeners;
    /// Null until they are started.
    std::unique_ptr<Sources> m_sources;
    std::vector<base::Subscription> m_subscriptions;
};

} // namespace korvex::desktop
