#include "desktop/Launches.h"

#include "desktop/Arguments.h"
#include "platform/qt/WindowActivation.h"
#include "ui/workspace/WindowPlace.h"

#include <QWidget>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace korvex::desktop {

namespace {

/// One after another is shown; nobody sees more than the last.
constexpr std::size_t kMostLinks = 16;

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

void Launches::take(const app::Launch& launch) {
    m_runLoop.post([this, launch, life = std::weak_ptr<const bool>(m_life)] {
        if (!life.expired()) {
            carryOut(launch);
        }
    });
}

void Launches::take(const app::HotkeyPress& press) {
    // The moment of a press on an X server is what a launcher's token ends with there.
    take(app::Launch{.token = press.timestamp == 0
                                  ? press.activationToken
                                  : "korvex_TIME" + std::to_string(press.timestamp)});
}

void Launches::carryOut(const app::Launch& launch) {
    if (launch.action == kBackgroundAction) {
        return; // what it asks for is so
    }
    bringForward(m_window, launch);
    openLinks(launch);
}

void Launches::openLinks(const app::Launch& launch) {
    const auto count = std::min(launch.links.size(), kMostLinks);
    for (std::size_t i = 0; i < count; ++i) {
        m_window.openLink(launch.links[i]);
    }
}

} // namespace korvex::desktop
