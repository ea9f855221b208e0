#include "desktop/Launches.h"

#include "app/QuickEntryRequest.h"
#include "desktop/Arguments.h"
#include "platform/qt/WindowActivation.h"
#include "ui/workspace/WindowPlace.h"

#include <QWidget>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace korvex::desktop {

namespace {

/// One after another is shown; nobody sees more than the last.
constexpr std::size_t kMostLinks = 16;

/// What it asks for is so already, or is still to come.
bool asksNothing(const app::Launch& launch) {
    return launch.action == kBackgroundAction || launch.action == kForBusAction;
}

} // namespace

void bringForward(QWidget& window, const app::Launch& launch) {
    platform::qt::prepareActivation(launch.token);
    ui::bringForward(window);
    platform::qt::finishActivation(*window.windowHandle(), launch.token);
}

EarlyLaunches::EarlyLaunches(platform::system::SingleInstance& instance)
    : m_listening(instance.launched().connect(
          [this](const app::Launch& launch) { m_launches.push_back(launch); })) {}

std::vector<app::Launch> EarlyLaunches::take() {
    m_listening.cancel();
    return std::exchange(m_launches, {});
}

template <typename Work>
void Launches::later(Work&& work) {
    m_runLoop.post([work = std::forward<Work>(work), life = std::weak_ptr<const bool>(m_life)] {
        if (!life.expired()) {
            work();
        }
    });
}

void Launches::take(const app::Launch& launch) {
    later([this, launch] { carryOut(launch); });
}

void Launches::take(const app::HotkeyPress& press) {
    later([this, press] {
        m_wasAsked = true;
        m_quickEntry.open({.action = app::kQuickEntryAction}, press);
    });
}

void Launches::begin(const app::Launch& launch) {
    if (launch.action == app::kQuickEntryAction) {
        m_quickEntry.open(launch);
    } else if (!asksNothing(launch)) {
        m_mainWindow.window(); // with what was shown last
        openLinks(launch);
        m_mainWindow.window().show();
    }
}

void Launches::beginUnlessAsked() {
    if (!m_wasAsked) {
        begin({});
    }
}

void Launches::carryOut(const app::Launch& launch) {
    if (asksNothing(launch)) {
        return;
    }
    m_wasAsked = true;
    if (launch.action == app::kQuickEntryAction) {
        m_quickEntry.open(launch);
    } else {
        bringForward(m_mainWindow.window(), launch);
        openLinks(launch);
    }
}

void Launches::openLinks(const app::Launch& launch) {
    const auto count = std::min(launch.links.size(), kMostLinks);
    for (std::size_t i = 0; i < count; ++i) {
        m_mainWindow.window().openLink(launch.links[i]);
    }
}

} // namespace korvex::desktop
