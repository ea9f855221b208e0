#pragma once

#include "platform/bus/IncomingMessage.h"

#include <functional>
#include <optional>

namespace korvex::platform::bus {

/// What the user has said about notifications in the settings of the desktop.
struct NotificationSetting {
    /// None of ours is shown.
    bool isOff = false;
    /// Do not disturb: ours are kept for later, or listed without being shown.
    bool isQuieted = false;

    bool operator==(const NotificationSetting&) const = default;
};

/// Where one desktop keeps that. Follows it, as far as the desktop tells of changes. Main thread.
class NotificationSwitch {
public:
    /// Called with what holds, never from within a function of the switch, and again whenever it
    /// may be another. Once asked it is called soon, also where nothing can be learnt: with nothing
    /// where whoever knows was too slow and may say it another time.
    using Tell = std::function<void(const std::optional<NotificationSetting>& setting)>;

    virtual ~NotificationSwitch() = default;

    /// Asks for what holds now.
    virtual void look() = 0;
};

/// Tells what `read` finds in an answer. Who was too slow may say it another time; of who cannot
/// say it, nothing is switched off: `read` throws BusError then.
template <typename Read>
void tellAnswer(const NotificationSwitch::Tell& tell, const Reply& reply, const Read& read) {
    if (const auto* const error = reply.error(); error && error->isForNow()) {
        tell(std::nullopt);
        return;
    }
    NotificationSetting setting;
    try {
        setting = read(reply);
    } catch (const BusError&) {
        // An older one that does not know it yet, or one without settings, shows everything.
    }
    tell(setting);
}

} // namespace korvex::platform::bus
