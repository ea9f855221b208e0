#include "base/Calendar.h"

#include "base/DayArithmetic.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace korvex::base {

namespace {

constexpr std::int64_t kMillisecondsPerDay = 86'400'000;

/// Takes a text apart from its front; each step says whether it was there.
class Reader {
public:
    explicit Reader(std::string_view text) : m_rest(text) {}

    bool atEnd() const { return m_rest.empty(); }

    bool take(char expected) {
        if (m_rest.empty() || m_rest.front() != expected) {
            return false;
        }
        m_rest.remove_prefix(1);
        return true;
    }

    /// Exactly `digits` digits.
    bool takeNumber(std::size_t digits, int& value) {
        if (m_rest.size() < digits) {
            return false;
        }
        value = 0;
        for (const auto each : m_rest.substr(0, digits)) {
            if (each < '0' || each > '9') {
                return false;
            }
            value = value * 10 + (each - '0');
        }
        m_rest.remove_prefix(digits);
        return true;
    }

private:
    std::string_view m_rest;
};

bool takeDay(Reader& reader, DateComponents& fields) {
    return reader.takeNumber(4, fields.year) && reader.take('-') &&
           reader.takeNumber(2, fields.month) && reader.take('-') &&
           reader.takeNumber(2, fields.day);
}

/// Seconds and their fraction may be left out.
bool takeTime(Reader& reader, DateComponents& fields, int& milliseconds) {
    if (!reader.takeNumber(2, fields.hour) || !reader.take(':') ||
        !reader.takeNumber(2, fields.minute)) {
        return false;
    }
    if (!reader.take(':')) {
        return true;
    }
    if (!reader.takeNumber(2, fields.second)) {
        return false;
    }
    return !reader.take('.') || reader.takeNumber(3, milliseconds);
}

bool isTime(const DateComponents& fields) {
    return fields.hour < 24 && fields.minute < 60 && fields.second < 60;
}

std::optional<Instant> instantInUtc(const DateComponents& fields) {
    const auto days = daysSince1970({fields.year, fields.month, fields.day});
    if (!days || !isTime(fields)) {
        return std::nullopt;
    }
    const auto seconds = ((*days * 24 + fields.hour) * 60 + fields.minute) * 60 + fields.second;
    return Instant::fromUnixSeconds(static_cast<double>(seconds));
}

} // namespace

std::optional<DayNumber> dayFromIsoText(std::string_view text) {
    Reader reader(text);
    DateComponents fields;
    if (!takeDay(reader, fields) || !reader.atEnd()) {
        return std::nullopt;
    }
    const CivilDay day{.year = fields.year, .month = fields.month, .day = fields.day};
    return daysSince1970(day) ? std::optional(dayNumber(day)) : std::nullopt;
}

std::string isoText(Instant instant) {
    const auto milliseconds = static_cast<std::int64_t>(std::round(instant.unixSeconds() * 1000));
    auto days = milliseconds / kMillisecondsPerDay;
    auto rest = milliseconds % kMillisecondsPerDay;
    if (rest < 0) {
        --days;
        rest += kMillisecondsPerDay;
    }
    const auto day = civilDay(days);
    const auto clock = static_cast<int>(rest);
    std::array<char, 64> text{};
    const auto length = std::snprintf(
        text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", day.year, day.month,
        day.day, clock / 3'600'000, clock / 60'000 % 60, clock / 1000 % 60, clock % 1000);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::optional<Instant> instantFromIsoText(std::string_view text, const Calendar& calendar) {
    Reader reader(text);
    DateComponents fields;
    int milliseconds = 0;
    if (!takeDay(reader, fields) || !reader.take('T') || !takeTime(reader, fields, milliseconds)) {
        return std::nullopt;
    }

    std::optional<Instant> instant;
    if (reader.atEnd()) {
        instant = calendar.instant(fields);
    } else if (reader.take('Z')) {
        instant = instantInUtc(fields);
    } else {
        const auto isEast = reader.take('+');
        int hours = 0;
        int minutes = 0;
        if ((!isEast && !reader.take('-')) || !reader.takeNumber(2, hours) || !reader.take(':') ||
            !reader.takeNumber(2, minutes) || hours >= 24 || minutes >= 60) {
            return std::nullopt;
        }
        instant = instantInUtc(fields);
        if (instant) {
            const double offset = (hours * 60 + minutes) * 60;
            instant = isEast ? *instant - offset : *instant + offset;
        }
    }
    if (!instant || !reader.atEnd()) {
        return std::nullopt;
    }
    *instant = *instant + milliseconds / 1000.0;
    return instant->isValid() ? instant : std::nullopt;
}

} // namespace korvex::base
