#pragma once

#include <memory>

struct sd_bus_message;
struct sd_bus_slot;

namespace korvex::platform::bus {

/// Lets go of what sd-bus counts references to.
struct Unreference {
    void operator()(sd_bus_message* message) const;
    /// Ends what the slot stands for.
    void operator()(sd_bus_slot* slot) const;
};
using MessagePointer = std::unique_ptr<sd_bus_message, Unreference>;
using SlotPointer = std::unique_ptr<sd_bus_slot, Unreference>;

} // namespace korvex::platform::bus
