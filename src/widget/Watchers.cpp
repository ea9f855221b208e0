#include "widget/Watchers.h"

#include "app/FileUserDefaults.h"
#include "platform/bus/StoreChangeSignal.h"
#include "platform/bus/SystemAppearanceWatcher.h"
#include "platform/qt/FileWatcher.h"
#include "platform/qt/StoreWatcher.h"
#include "platform/system/SystemTimeWatcher.h"

namespace korvex::widget {

struct Watchers::Sources {
    explicit Sources(const Listeners& listeners)
        : store(listeners.storeFile),
          changes(listeners.bus, listeners.storeFile),
          time(listeners.runLoop),
          appearance(listeners.bus) {}

    platform::qt::StoreWatcher store;
    platform::bus::StoreChangeListener changes;
    platform::qt::FileWatcher settings{app::FileUserDefaults::defaultFile()};
    platform::system::SystemTimeWatcher time;
    platform::bus::SystemAppearanceWatcher appearance;
};

Watchers::Watchers(const Listeners& listeners) : m_sources(std::make_unique<Sources>(listeners)) {
    m_subscriptions.push_back(
        m_sources->store.changed().connect([&store = listeners.store] { store.follow(); }));
    m_subscriptions.push_back(
        m_sources->changes.changed().connect([&watcher = m_sources->store] { watcher.hint(); }));
    m_subscriptions.push_back(m_sources->settings.changed().connect(
        [&preferences = listeners.preferences] { preferences.reload(); }));
    m_subscriptions.push_back(
        m_sources->time.changed().connect([&dates = listeners.dates, &store = listeners.store] {
            dates.renew();
            if (auto* const open = store.open()) {
                open->scheduleClock.scheduleRefresh();
            }
        }));
    m_subscriptions.push_back(m_sources->appearance.changed().connect(
        [&theme = listeners.theme](const auto& said) { theme.setSystem(said); }));
    // What was set since they were read was seen by nobody.
    listeners.preferences.reload();
}

Watchers::~Watchers() = default;

} // namespace korvex::widget
