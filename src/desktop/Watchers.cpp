#include "desktop/Watchers.h"

#include "app/FileUserDefaults.h"
#include "platform/bus/DesktopApplication.h"
#include "platform/bus/NameClaim.h"
#include "platform/bus/StoreChangeSignal.h"
#include "platform/bus/SystemAppearanceWatcher.h"
#include "platform/qt/FileWatcher.h"
#include "platform/qt/StoreWatcher.h"
#include "platform/system/SystemTimeWatcher.h"
#include "ui/kit/words/Refusal.h"

#include <QGuiApplication>

namespace korvex::desktop {

namespace {

using platform::bus::NameClaim;
using platform::bus::SystemAppearanceWatcher;

/// What the bus knows the desktop app by. Only the app of the user's own store has it.
struct OnTheBus {
    explicit OnTheBus(platform::bus::Bus& bus) : application(bus), name(bus, app::kDesktopName) {}

    /// Before the name, by which it is found.
    platform::bus::DesktopApplication application;
    NameClaim name;
};

} // namespace

struct Watchers::Sources {
    Sources(const Listeners& listeners, const std::filesystem::path& file)
        : store(file),
          time(listeners.workspace.runLoop),
          appearance(listeners.bus),
          broadcaster(listeners.bus),
          changes(listeners.bus, file) {
        if (listeners.workspace.isUsersOwn) {
            onTheBus.emplace(listeners.bus);
        }
    }

    platform::qt::StoreWatcher store;
    platform::qt::FileWatcher settings{app::FileUserDefaults::defaultFile()};
    platform::system::SystemTimeWatcher time;
    SystemAppearanceWatcher appearance;
    platform::bus::BusStoreChangeBroadcaster broadcaster;
    platform::bus::StoreChangeListener changes;
    std::optional<OnTheBus> onTheBus;
};

Watchers::Watchers(const Listeners& listeners) : m_listeners(listeners) {}

Watchers::~Watchers() = default;

void Watchers::start() {
    if (m_sources) {
        return;
    }
    const auto& file = m_listeners.container.configuration().file;
    m_sources = std::make_unique<Sources>(m_listeners, file);
    connectSources();
    m_listeners.bus.start();
    m_listeners.workspace.scheduleClock.start(m_listeners.container);
    m_listeners.workspace.copies.removeLeftovers();
    m_listeners.workspace.automaticBackups.start();
}

void Watchers::connectSources() {
    const auto& workspace = m_listeners.workspace;
    m_subscriptions.push_back(m_sources->store.changed().connect([this] { refresh(); }));
    m_subscriptions.push_back(
        m_sources->changes.changed().connect([this] { m_sources->store.hint(); }));
    if (m_sources->onTheBus) {
        m_subscriptions.push_back(m_sources->onTheBus->application.launched().connect(
            [this](const app::Launch& asked) { m_listeners.launches.take(asked); }));
        auto& name = m_sources->onTheBus->name;
        m_subscriptions.push_back(name.changed().connect(
            [&name, log = base::Logger(workspace.log, "Bus")](NameClaim::State state) {
                if (state == NameClaim::State::taken) {
                    log.warning(std::string(app::kDesktopName) + " is " + name.owner() +
                                " on the bus: links and launchers lead there");
                }
            }));
    }
    m_subscriptions.push_back(
        workspace.context.didChange().connect([&workspace](const store::ChangeSet& changes) {
            if (changes.origin == store::ChangeSet::Origin::elsewhere) {
                workspace.scheduleClock.scheduleRefresh();
            }
        }));
    m_subscriptions.push_back(
        m_sources->settings.changed().connect([&workspace] { workspace.preferences.reload(); }));
    m_subscriptions.push_back(m_sources->time.changed().connect([&workspace] {
        workspace.dates.renew();
        workspace.scheduleClock.scheduleRefresh();
    }));
    m_subscriptions.push_back(m_sources->appearance.changed().connect(
        [&theme = m_listeners.theme](const auto& said) { theme.setSystem(said); }));
    m_subscriptions.push_back(m_listeners.container.didSave().connect(
        [this, file = m_listeners.container.configuration().file](const store::ChangeSet&) {
            m_sources->broadcaster.storeChanged(file);
        }));
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
            [&workspace](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive) {
                    workspace.scheduleClock.scheduleRefresh();
                }
            });
    // What was set since they were read was seen by nobody.
    workspace.preferences.reload();
}

void Watchers::refresh() {
    if (const auto refused = ui::refusal([this] { m_listeners.workspace.context.refresh(); })) {
        if (auto* const window = m_listeners.mainWindow.windowIfMade()) {
            window->showError(*refused);
        }
    }
}

} // namespace korvex::desktop
