#include "platform/bus/SdBusPointers.h"

#include <systemd/sd-bus.h>

namespace korvex::platform::bus {

void Unreference::operator()(sd_bus_message* message) const {
    sd_bus_message_unref(message);
}

void Unreference::operator()(sd_bus_slot* slot) const {
    sd_bus_slot_unref(slot);
}

} // namespace korvex::platform::bus
