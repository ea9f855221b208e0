#pragma once

#include "platform/bus/Bus.h"
#include "platform/bus/NotificationSwitch.h"

#include <string>

namespace korvex::platform::bus {

/// A notification daemon that says itself, by a property of its own, whether its user is not to be
/// disturbed. Whether it shows notifications of ours at all it does not say. Main thread; the bus
/// must outlive it.
class QuietProperty final : public NotificationSwitch {
public:
    struct Property {
        std::string interface;
        std::string name;
    };
    /// Of dunst, and of KDE's daemon.
    static Property ofDunst() { return {"org.dunstproject.cmd0", "paused"}; }
    static Property ofPlasma() { return {"org.freedesktop.Notifications", "Inhibited"}; }

    QuietProperty(Bus& bus, Property property, Tell tell);

    void look() override;

private:
    void take(const Reply& reply);

    Bus& m_bus;
    Property m_property;
    Tell m_tell;
    base::Subscription m_asked;
    base::Subscription m_signals;
};

} // namespace korvex::platform::bus
