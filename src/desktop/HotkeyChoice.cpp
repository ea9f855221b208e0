#include "desktop/HotkeyChoice.h"

#include "app/ManagedHotkeyBackend.h"
#include "base/EnvironmentVariable.h"
#include "platform/bus/PortalHotkeyBackend.h"
#include "platform/x11/X11HotkeyBackend.h"

#include <QCoreApplication>

namespace korvex::desktop {

HotkeyWay hotkeyWay() {
    using base::environmentVariable;
    if (environmentVariable("WAYLAND_DISPLAY") ||
        environmentVariable("XDG_SESSION_TYPE") == "wayland") {
        return HotkeyWay::portal;
    }
    return environmentVariable("DISPLAY") ? HotkeyWay::xServer : HotkeyWay::nobody;
}

std::unique_ptr<app::HotkeyBackend> makeHotkeyBackend(HotkeyWay way, base::RunLoop& runLoop,
                                                      base::LogSink& log) {
    switch (way) {
    case HotkeyWay::xServer:
        return std::make_unique<platform::x11::X11HotkeyBackend>(runLoop);
    case HotkeyWay::portal:
        return std::make_unique<platform::bus::PortalHotkeyBackend>(
            QCoreApplication::translate("korvex::desktop", "Open Quick Entry").toStdString(),
            runLoop, log);
    case HotkeyWay::nobody:
        break;
    }
    return std::make_unique<app::ManagedHotkeyBackend>();
}

} // namespace korvex::desktop
