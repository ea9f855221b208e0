#pragma once

#include "platform/bus/Bus.h"
#include "platform/bus/NotificationSwitch.h"
#include "platform/system/ProgramOutput.h"

#include <optional>

namespace korvex::agent {

/// GNOME keeps what its users choose where its own library reads it, which the agent does without:
/// the command line of that library is asked. Its service on the bus tells of changes. Main thread;
/// all that it is given must outlive it.
class GnomeNotificationSwitch final : public platform::bus::NotificationSwitch {
public:
    GnomeNotificationSwitch(platform::bus::Bus& bus, base::RunLoop& runLoop, Tell tell);

    void look() override;

private:
    void tellOnceKnown();

    base::RunLoop& m_runLoop;
    Tell m_tell;
    /// Of all programs, and of ours.
    std::optional<std::string> m_general;
    std::optional<std::string> m_own;
    std::optional<platform::system::ProgramOutput> m_askedGeneral;
    std::optional<platform::system::ProgramOutput> m_askedOwn;
    base::Subscription m_signals;
};

} // namespace korvex::agent
