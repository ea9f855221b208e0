#pragma once

#include "base/Calendar.h"
#include "base/MonthWords.h"
#include "base/TypedDates.h"

#include <memory>
#include <string>

namespace korvex::base {

/// The date and time texts of one locale and zone. Costs milliseconds to make and microseconds to
/// use: make one per window or command and keep it until locale or zone change. One thread.
class DateFormats {
public:
    /// `locale` is a BCP 47 tag or an ICU name ("en_US"); empty means the user's locale, from
    /// LC_ALL, LC_TIME or LANG.
    DateFormats(std::string locale, TimeZone zone);
    ~DateFormats();
    DateFormats(DateFormats&&) noexcept;
    DateFormats& operator=(DateFormats&&) noexcept;

    const Calendar& calendar() const;

    /// "Wed, Jan 15, 2025"
    std::string dayWithWeekday(Instant instant) const;
    /// "January 15, 2025"
    std::string dayWithFullMonth(Instant instant) const;
    /// "9:00 AM"
    std::string shortTime(Instant instant) const;
    /// "Jan 15, 2025, 9:00 AM"
    std::string dayAndShortTime(Instant instant) const;
    /// "Yesterday", "Today", "Tomorrow" for -1, 0, 1.
    std::string relativeDayWord(int offset) const;

    /// What is typed, and a month as a grid, in the same locale.
    const TypedDates& typed() const;
    const MonthWords& monthWords() const;

private:
    struct Formats;
    std::unique_ptr<Formats> m_formats;
};

} // namespace korvex::base
