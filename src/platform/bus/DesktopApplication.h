#pragma once

#include "app/Launch.h"
#include "platform/bus/OfferedObject.h"

#include <chrono>

namespace korvex::platform::bus {

/// What the bus, launchers and our other programs may ask the desktop app for, as
/// `org.freedesktop.Application` has it. Main thread; the bus must outlive it.
class DesktopApplication final {
public:
    explicit DesktopApplication(Bus& bus);

    /// Emitted for each request, which has been answered by then.
    base::Signal<const app::Launch&>& launched() { return m_launched; }

private:
    base::Signal<const app::Launch&> m_launched;
    OfferedObject m_object;
};

/// The app has this long until it has read the request; what it then does may take longer.
inline constexpr std::chrono::seconds kDesktopPatience{5};

/// Asks the desktop app for it. Where nobody runs, the bus may start it, if it knows how to.
[[nodiscard]] base::Subscription
callDesktop(Bus& bus, const app::Launch& launch, MethodAddress::Start start, Bus::Answer answer,
            std::chrono::duration<double> patience = kDesktopPatience);

} // namespace korvex::platform::bus
