#pragma once

#include "base/Instant.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::base {

/// A calendar day as a number: year × 10000 + month × 100 + day.
using DayNumber = std::int64_t;

/// A time zone by its IANA name. Cheap to copy; any thread.
class TimeZone {
public:
    /// The zone the machine is set to now (read anew at each call: TZ, then the system's setting).
    static TimeZone system();
    static TimeZone utc();

    std::string name() const;
    bool operator==(const TimeZone& other) const;

    struct Data;
    const Data& data() const { return *m_data; }

private:
    explicit TimeZone(std::shared_ptr<const Data> data) : m_data(std::move(data)) {}
    std::shared_ptr<const Data> m_data;
};

/// Wall-clock fields in some zone.
struct DateComponents {
    int year = 0;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;

    bool operator==(const DateComponents&) const = default;
};

enum class CalendarUnit { minute, hour, day };
enum class CalendarPeriod { day, week, month };

/// The time from a moment to another, which is no longer part of it.
struct DateInterval {
    Instant start;
    Instant end;

    bool contains(Instant instant) const { return instant >= start && instant < end; }
    bool operator==(const DateInterval&) const = default;
};

/// The Gregorian calendar of one time zone, with its change to the Julian calendar before
/// 1582-10-15: only so is the distant past the day 0001-01-01. A call costs some microseconds.
/// Not for two threads at once.
class Calendar {
public:
    /// `locale`, a BCP 47 tag or an ICU name, says on which day a week begins; empty means the
    /// user's locale, from LC_ALL, LC_TIME or LANG.
    explicit Calendar(TimeZone zone, std::string locale = {});
    ~Calendar();
    Calendar(Calendar&&) noexcept;
    Calendar& operator=(Calendar&&) noexcept;

    const TimeZone& timeZone() const { return m_zone; }

    /// Absent outside the distant past … distant future.
    std::optional<DayNumber> day(Instant instant) const;
    /// Noon of the day; absent for what is no day, and where noon is outside the valid range.
    std::optional<Instant> noon(DayNumber day) const;
    /// The first moment of the day that `instant` lies in; absent outside the valid range.
    std::optional<Instant> startOfDay(Instant instant) const;
    /// The whole day, week or month that `instant` lies in, from the first moment of its first day
    /// to the first moment after its last; absent where one of them is outside the valid range.
    std::optional<DateInterval> interval(CalendarPeriod period, Instant instant) const;

    std::optional<DateComponents> components(Instant instant) const;
    /// A time that does not exist that day becomes the next existing one; one that occurs twice,
    /// the first. Absent when a field is out of its range (month 13, February 30).
    std::optional<Instant> instant(const DateComponents& components) const;

    /// Calendar addition: days keep the wall-clock time. Absent outside the valid range.
    std::optional<Instant> adding(Instant instant, CalendarUnit unit, int amount) const;

private:
    struct Engine;
    TimeZone m_zone;
    std::string m_locale;
    std::unique_ptr<Engine> m_engine;
};

/// Reads "20250310"-style day numbers from ISO text "2025-03-10"; absent when it is no such day.
std::optional<DayNumber> dayFromIsoText(std::string_view text);

/// ISO 8601 in UTC with milliseconds: "2025-03-10T13:30:00.000Z". `instant` must be valid.
std::string isoText(Instant instant);

/// Reads "2025-03-10T14:30[:05[.250]]" with "Z" or "+02:00" as an instant, and without either as
/// the wall-clock time of `calendar`. Absent for anything else.
std::optional<Instant> instantFromIsoText(std::string_view text, const Calendar& calendar);

} // namespace korvex::base
