#pragma once

#include "platform/bus/Bus.h"

#include <functional>
#include <string>

namespace korvex::platform::bus {

/// The desktop's portals, whatever they are for.
inline constexpr const char* kPortalName = "org.freedesktop.portal.Desktop";
inline constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";

/// Something that is asked of a portal, which answers when the user has. Main thread; the bus must
/// outlive it.
class PortalRequest final {
public:
    /// How it ended, as portals number it.
    enum class Outcome { done = 0, cancelled = 1, ended = 2 };
    struct Listener {
        std::function<void(Outcome outcome, const Dictionary& results)> answered;
        /// It could not even be asked.
        std::function<void(const BusError& error)> failed;
    };
    /// Writes all arguments but the options, which are the last one.
    using First = Arguments;

    /// `options` are sent with what tells the portal of this request. Neither listener is called
    /// from within, nor once this is destroyed; either may destroy it.
    PortalRequest(Bus& bus, const std::string& interface, const std::string& member, First first,
                  Dictionary options, Listener listener);

private:
    void listenAt(const std::string& path);

    Bus& m_bus;
    Listener m_listener;
    std::string m_path;
    base::Subscription m_responses;
    base::Subscription m_asked;
};

/// A name for an object that a portal makes for us, which none of ours has had.
std::string portalToken();

} // namespace korvex::platform::bus
