#pragma once

#include "base/DayArithmetic.h"

#include <array>
#include <memory>
#include <string>

namespace korvex::base {

/// A month as a grid of weeks, in the words and digits of one locale. Costs milliseconds to make.
/// One thread.
class MonthWords {
public:
    /// A BCP 47 tag or an ICU name; empty means the user's, from LC_ALL, LC_TIME or LANG.
    explicit MonthWords(const std::string& locale);
    ~MonthWords();
    MonthWords(MonthWords&&) noexcept;
    MonthWords& operator=(MonthWords&&) noexcept;

    struct Weekday {
        /// "Mo", for the head of a column.
        std::string shortName;
        std::string name;
        bool isWeekend = false;
    };
    /// From the first day of the week.
    const std::array<Weekday, kDaysOfWeek>& week() const;
    /// Which of them the day is. Throws std::out_of_range for what is no day.
    int column(const CivilDay& day) const;

    /// "March 2025", or "Mar 2025" where there is no room for that.
    std::string title(const CivilDay& day) const;
    std::string shortTitle(const CivilDay& day) const;
    /// "Monday, March 10, 2025"
    std::string wholeDay(const CivilDay& day) const;
    /// "10"
    std::string dayOfMonth(const CivilDay& day) const;

private:
    struct Formats;
    std::unique_ptr<Formats> m_formats;
};

} // namespace korvex::base
