#include "desktop/Launches.h"

#include "platform/qt/WindowActivation.h"

#include <QWindow>

#include <algorithm>
#include <cstddef>

namespace korvex::desktop {

namespace {

/// One after another is shown; nobody sees more than the last.
constexpr std::size_t kMostLinks = 16;

} // namespace

void Launches::take(const app::Launch& launch) {
    m_runLoop.post([this, launch, life = std::weak_ptr<const bool>(m_life)] {
        if (!life.expired()) {
            carryOut(launch);
        }
    });
}

void Launches::carryOut(const app::Launch& launch) {
    if (!launch.action.empty()) {
        m_actionRequested.emit(launch);
        return;
    }
    platform::qt::prepareActivation(launch.token);
    m_window.comeForward();
    platform::qt::finishActivation(*m_window.windowHandle(), launch.token);
    openLinks(launch);
}

void Launches::openLinks(const app::Launch& launch) {
    const auto count = std::min(launch.links.size(), kMostLinks);
    for (std::size_t i = 0; i < count; ++i) {
        m_window.openLink(launch.links[i]);
    }
}

} // namespace korvex::desktop
