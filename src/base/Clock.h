#pragma once

#include "base/Instant.h"

namespace korvex::base {

/// Where "now" comes from; tests bring a clock of their own.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Instant now() const = 0;
};

/// The machine's real-time clock.
class SystemClock final : public Clock {
public:
    Instant now() const override;
};

} // namespace korvex::base
