#pragma once

#include "base/Clock.h"

namespace korvex::tests {

/// A clock that stands until it is moved.
class FakeClock final : public base::Clock {
public:
    explicit FakeClock(base::Instant now) : m_now(now) {}

    base::Instant now() const override { return m_now; }
    void set(base::Instant now) { m_now = now; }
    void advance(double seconds) { m_now = m_now + seconds; }

private:
    base::Instant m_now;
};

} // namespace korvex::tests
