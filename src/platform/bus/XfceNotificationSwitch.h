#pragma once

#include "platform/bus/Bus.h"
#include "platform/bus/NotificationSwitch.h"

namespace korvex::platform::bus {

/// Xfce keeps what its users choose in a service on the bus, which tells of changes. Main thread;
/// the bus must outlive it.
class XfceNotificationSwitch final : public NotificationSwitch {
public:
    XfceNotificationSwitch(Bus& bus, Tell tell);

    void look() override;

private:
    void take(const Reply& reply);

    Bus& m_bus;
    Tell m_tell;
    base::Subscription m_asked;
    base::Subscription m_signals;
};

} // namespace korvex::platform::bus
