#pragma once

#include "base/DayArithmetic.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::base {

/// A time on the clock: hours from 0 to 23.
struct ClockTime {
    int hour = 0;
    int minute = 0;

    bool operator==(const ClockTime&) const = default;
};

enum class DatePart : std::uint8_t { year, month, day, hour, minute, half };

/// A day or a time as a field shows it, and where in the text its parts stand, in UTF-16 units.
struct ShownDate {
    struct Place {
        DatePart part;
        int offset;
        int length;
    };
    std::u16string text;
    std::vector<Place> places;
};

/// Days and times of day as the fields of one locale show them and as people there type them. They
/// have no zone. Costs milliseconds to make. One thread.
class TypedDates {
public:
    /// A BCP 47 tag or an ICU name; empty means the user's, from LC_ALL, LC_TIME or LANG.
    explicit TypedDates(const std::string& locale);
    ~TypedDates();
    TypedDates(TypedDates&&) noexcept;
    TypedDates& operator=(TypedDates&&) noexcept;

    /// "3/10/2025"; nothing for what is no day.
    ShownDate shown(const CivilDay& day) const;
    /// "9:30 PM"
    ShownDate shown(const ClockTime& time) const;

    /// What is not typed of a day is that of the day that was shown; but who plans does not mean a
    /// day that is over, nor who looks back one to come.
    struct Around {
        enum class Towards : std::uint8_t { future, past };
        CivilDay today;
        CivilDay shown;
        Towards towards = Towards::future;
    };
    /// Reads "3/10/2025", "3/10", "10", "2025-03-10", "Mar 10", "Monday" and "tomorrow", each in
    /// the order and the words of the locale. Absent for what is no day.
    std::optional<CivilDay> day(std::u16string_view typed, const Around& around) const;
    /// Reads "9", "930", "9:30 pm" and "21.30". Absent for what is no time.
    std::optional<ClockTime> time(std::u16string_view typed) const;

private:
    struct Words;
    std::unique_ptr<Words> m_words;
};

} // namespace korvex::base
