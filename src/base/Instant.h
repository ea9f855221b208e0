#pragma once

#include <cmath>
#include <compare>

namespace korvex::base {

/// A moment, in seconds since 2001-01-01 00:00 UTC. Not every value is a date of the system: ask
/// `isValid` before a stored or typed instant is used.
struct Instant {
    double seconds = 0;

    /// 0001-01-01 00:00 UTC in the hybrid Gregorian calendar.
    static constexpr Instant distantPast() { return {-63114076800.0}; }
    /// 4001-01-01 00:00 UTC.
    static constexpr Instant distantFuture() { return {63113904000.0}; }
    static constexpr Instant fromUnixSeconds(double unixSeconds) {
        return {unixSeconds - kUnixOffset};
    }
    constexpr double unixSeconds() const { return seconds + kUnixOffset; }

    /// Finite and between the distant past and the distant future, both included.
    bool isValid() const {
        return std::isfinite(seconds) && *this >= distantPast() && *this <= distantFuture();
    }

    constexpr Instant operator+(double delta) const { return {seconds + delta}; }
    constexpr Instant operator-(double delta) const { return {seconds - delta}; }
    constexpr double operator-(Instant other) const { return seconds - other.seconds; }
    constexpr auto operator<=>(const Instant&) const = default;

private:
    /// Seconds from 1970-01-01 to 2001-01-01.
    static constexpr double kUnixOffset = 978307200.0;
};

} // namespace korvex::base
