#include "base/TypedDates.h"

#include "base/IcuText.h"
#include "base/Text.h"
#include "base/TextFolding.h"
#include "base/UserLocale.h"

#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/fpositer.h>
#include <unicode/reldatefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvex::base {

namespace {

constexpr int kThisCentury = 2000;

/// A number or a word of what was typed; all else only parts them.
struct Token {
    std::string word;
    int number = 0;
    /// 0 for a word.
    int digits = 0;
};
using Tokens = std::vector<Token>;

/// Each with all its names: "march" and "mar".
using Names = std::vector<std::vector<std::string>>;

Tokens tokensOf(const icu::UnicodeString& text, const TextFolding& folding) {
    constexpr int kMostDigits = 8;
    Tokens tokens;
    icu::UnicodeString word;
    const auto endWord = [&] {
        if (!word.isEmpty()) {
            tokens.push_back({.word = folding.folded(utf8(word))});
            word.remove();
        }
    };
    bool isInNumber = false;
    for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        const auto character = text.char32At(i);
        const auto digit = u_charDigitValue(character);
        const bool isMark = (U_GET_GC_MASK(character) & U_GC_M_MASK) != 0;
        if (digit >= 0) {
            endWord();
            if (!isInNumber) {
                tokens.push_back({});
            }
            auto& number = tokens.back();
            number.number = number.digits < kMostDigits ? number.number * 10 + digit : 0;
            ++number.digits;
        } else if (u_isalpha(character) || (isMark && !word.isEmpty())) {
            word.append(character);
        } else {
            endWord();
        }
        isInNumber = digit >= 0;
    }
    endWord();
    return tokens;
}

/// The words of a pattern that stand for themselves: "Uhr" in "HH 'Uhr'".
icu::UnicodeString literalsOf(const icu::UnicodeString& pattern) {
    icu::UnicodeString result;
    bool isQuoted = false;
    for (std::int32_t i = 0; i < pattern.length(); ++i) {
        const auto unit = pattern.charAt(i);
        const bool isField =
            !isQuoted && ((unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z'));
        isQuoted = isQuoted != (unit == u'\'');
        result.append(isField || unit == u'\'' ? u' ' : unit);
    }
    return result;
}

/// Which of the names is meant: one as it is, or the only one that begins so.
std::optional<int> named(const Names& names, const std::string& word) {
    constexpr std::size_t kShortest = 3;
    std::optional<int> beginning;
    bool isUnclear = characterCount(word, kShortest) < kShortest;
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (const auto& name : names[i]) {
            if (name == word) {
                return static_cast<int>(i);
            }
            if (name.compare(0, word.size(), word) == 0) {
                isUnclear = isUnclear || (beginning && *beginning != static_cast<int>(i));
                beginning = static_cast<int>(i);
            }
        }
    }
    return isUnclear ? std::nullopt : beginning;
}

std::optional<DatePart> partOf(std::int32_t field) {
    switch (field) {
    case UDAT_YEAR_FIELD:
        return DatePart::year;
    case UDAT_MONTH_FIELD:
    case UDAT_STANDALONE_MONTH_FIELD:
        return DatePart::month;
    case UDAT_DATE_FIELD:
        return DatePart::day;
    case UDAT_HOUR0_FIELD:
    case UDAT_HOUR1_FIELD:
    case UDAT_HOUR_OF_DAY0_FIELD:
    case UDAT_HOUR_OF_DAY1_FIELD:
        return DatePart::hour;
    case UDAT_MINUTE_FIELD:
        return DatePart::minute;
    case UDAT_AM_PM_FIELD:
        return DatePart::half;
    default:
        return std::nullopt;
    }
}

ShownDate shownBy(const icu::DateFormat& format, double unixSeconds) {
    UErrorCode status = U_ZERO_ERROR;
    icu::FieldPositionIterator fields;
    icu::UnicodeString text;
    format.format(unixSeconds * 1000, text, &fields, status);
    ShownDate result{.text = {text.getBuffer(), static_cast<std::size_t>(text.length())},
                     .places = {}};
    for (icu::FieldPosition field; fields.next(field) != 0;) {
        if (const auto part = partOf(field.getField())) {
            result.places.push_back({.part = *part,
                                     .offset = field.getBeginIndex(),
                                     .length = field.getEndIndex() - field.getBeginIndex()});
        }
    }
    std::sort(result.places.begin(), result.places.end(),
              [](const auto& left, const auto& right) { return left.offset < right.offset; });
    return result;
}

int wholeYear(const Token& typed) {
    return typed.digits <= 2 ? kThisCentury + typed.number : typed.number;
}

/// The day, or the same `step` months further or back where that is on the other side of today
/// than what is meant.
std::optional<CivilDay> onTheRightSide(const CivilDay& day, int step,
                                       const TypedDates::Around& around) {
    const auto number = daysSince1970(day);
    const auto today = daysSince1970(around.today);
    const auto shown = daysSince1970(around.shown);
    if (!number || !today || !shown) {
        return std::nullopt;
    }
    const bool isFuture = around.towards == TypedDates::Around::Towards::future;
    const bool isOver =
        isFuture ? *number < *today && *shown >= *today : *number > *today && *shown <= *today;
    if (!isOver) {
        return day;
    }
    constexpr int kMonths = 12;
    const auto months = day.year * kMonths + day.month - 1 + (isFuture ? step : -step);
    const CivilDay other{months / kMonths, months % kMonths + 1, day.day};
    return daysSince1970(other) ? std::optional(other) : std::nullopt;
}

} // namespace

struct TypedDates::Words {
    explicit Words(const std::string& name);

    void take(Names& names, std::size_t index, const icu::UnicodeString& name);
    void takeFillers(const icu::UnicodeString& text);
    void takeHalves(const icu::DateFormatSymbols& symbols);
    void takeDaysAroundToday();
    bool isFiller(const std::string& word) const {
        return std::find(fillers.begin(), fillers.end(), word) != fillers.end();
    }
    std::optional<CivilDay> dayOf(const std::vector<Token>& numbers, std::optional<int> month,
                                  const Around& around) const;

    icu::Locale locale;
    TextFolding folding;
    std::unique_ptr<icu::SimpleDateFormat> dayFormat;
    std::unique_ptr<icu::SimpleDateFormat> timeFormat;
    /// In which order day, month and year are written.
    std::vector<DatePart> order;
    Names months;
    /// From Sunday.
    Names weekdays;
    /// The morning's and the afternoon's.
    Names halves;
    /// "tomorrow" and "in 3 days", with the number of days.
    std::vector<std::pair<std::string, int>> aroundToday;
    /// What stands in dates and times and says nothing.
    std::vector<std::string> fillers;
};

TypedDates::Words::Words(const std::string& name)
    : locale(dateLocale(name)), folding(locale.getName()) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    require(status, "date patterns");
    const auto make = [&](const char16_t* skeleton) {
        auto format = std::make_unique<icu::SimpleDateFormat>(
            patterns->getBestPattern(skeleton, status), locale, status);
        require(status, "date format");
        format->setTimeZone(*icu::TimeZone::getGMT());
        return format;
    };
    dayFormat = make(u"yMd");
    timeFormat = make(u"jm");
    for (const auto& place : shownBy(*dayFormat, 0).places) {
        order.push_back(place.part);
    }
    const icu::DateFormatSymbols symbols(locale, status);
    require(status, "names of months");
    using Symbols = icu::DateFormatSymbols;
    for (const auto context : {Symbols::FORMAT, Symbols::STANDALONE}) {
        for (const auto width : {Symbols::WIDE, Symbols::ABBREVIATED}) {
            std::int32_t count = 0;
            const auto* names = symbols.getMonths(count, context, width);
            months.resize(static_cast<std::size_t>(count));
            for (std::int32_t i = 0; i < count; ++i) {
                take(months, static_cast<std::size_t>(i), names[i]);
            }
            names = symbols.getWeekdays(count, context, width); // the first is that of no day
            weekdays.resize(kDaysOfWeek);
            for (std::int32_t i = 1; i < count; ++i) {
                take(weekdays, static_cast<std::size_t>(i - 1), names[i]);
            }
        }
    }
    takeHalves(symbols);
    takeDaysAroundToday();
    for (const auto* const skeleton : {u"yMd", u"yMMMMd", u"jm", u"j"}) {
        takeFillers(literalsOf(patterns->getBestPattern(skeleton, status)));
    }
    // As in "10th" and "9h30".
    fillers.insert(fillers.end(), {"st", "nd", "rd", "th", "h"});
}

void TypedDates::Words::take(Names& names, std::size_t index, const icu::UnicodeString& name) {
    const auto tokens = tokensOf(name, folding);
    const bool isWord = tokens.size() == 1 && tokens.front().digits == 0;
    if (isWord) {
        names[index].push_back(tokens.front().word);
    } else if (&names == &months) {
        // "tháng 3" is "3" with a word before it.
        takeFillers(name);
    }
}

void TypedDates::Words::takeFillers(const icu::UnicodeString& text) {
    for (auto& token : tokensOf(text, folding)) {
        if (token.digits == 0) {
            fillers.push_back(std::move(token.word));
        }
    }
}

void TypedDates::Words::takeHalves(const icu::DateFormatSymbols& symbols) {
    halves = {{"am", "a"}, {"pm", "p"}};
    std::int32_t count = 0;
    const auto* const names = symbols.getAmPmStrings(count);
    for (std::int32_t i = 0; i < count && i < 2; ++i) {
        std::string word; // "a. m." is one
        for (const auto& token : tokensOf(names[i], folding)) {
            word += token.word;
        }
        halves[static_cast<std::size_t>(i)].push_back(word);
    }
}

void TypedDates::Words::takeDaysAroundToday() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::RelativeDateTimeFormatter formatter(locale, status);
    for (int days = -kDaysOfWeek; days <= kDaysOfWeek; ++days) {
        icu::UnicodeString text;
        formatter.format(days, UDAT_REL_UNIT_DAY, text, status);
        require(status, "words for days");
        aroundToday.emplace_back(folding.folded(utf8(text)), days);
    }
}

std::optional<CivilDay> TypedDates::Words::dayOf(const std::vector<Token>& numbers,
                                                 std::optional<int> month,
                                                 const Around& around) const {
    constexpr int kMonths = 12;
    auto parts = order;
    const bool beginsWithYear = !numbers.empty() && numbers.front().digits > 2;
    if (beginsWithYear) {
        parts = {DatePart::year, DatePart::month, DatePart::day};
    }
    const auto leaveOut = [&parts](DatePart part) {
        parts.erase(std::remove(parts.begin(), parts.end(), part), parts.end());
    };
    if (month) {
        // With a word for the month, the year comes last wherever it stands in numbers.
        parts = beginsWithYear ? std::vector{DatePart::year, DatePart::day}
                               : std::vector{DatePart::day, DatePart::year};
    }
    if (numbers.size() < parts.size()) {
        leaveOut(DatePart::year);
    }
    if (numbers.size() < parts.size()) {
        leaveOut(DatePart::month);
    }
    if (numbers.size() != parts.size()) {
        return std::nullopt;
    }
    auto day = around.shown;
    day.month = month.value_or(day.month);
    bool hasYear = false;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto& typed = numbers[i];
        if (parts[i] == DatePart::year) {
            day.year = wholeYear(typed);
            hasYear = true;
        } else if (typed.digits > 2) {
            return std::nullopt;
        } else {
            (parts[i] == DatePart::month ? day.month : day.day) = typed.number;
        }
    }
    // Only the order of another country makes sense of "25/12" here.
    if (!beginsWithYear && !month && day.month > kMonths && day.day <= kMonths) {
        std::swap(day.month, day.day);
    }
    const bool hasMonth = month || parts.size() > 1;
    if (hasYear) {
        return daysSince1970(day) ? std::optional(day) : std::nullopt;
    }
    return onTheRightSide(day, hasMonth ? kMonths : 1, around);
}

TypedDates::TypedDates(const std::string& locale) : m_words(std::make_unique<Words>(locale)) {}

TypedDates::~TypedDates() = default;
TypedDates::TypedDates(TypedDates&&) noexcept = default;
TypedDates& TypedDates::operator=(TypedDates&&) noexcept = default;

ShownDate TypedDates::shown(const CivilDay& day) const {
    const auto noon = noonInUtc(dayNumber(day));
    return noon ? shownBy(*m_words->dayFormat, noon->unixSeconds()) : ShownDate{};
}

ShownDate TypedDates::shown(const ClockTime& time) const {
    return shownBy(*m_words->timeFormat, (time.hour * 60 + time.minute) * 60.0);
}

std::optional<CivilDay> TypedDates::day(std::u16string_view typed, const Around& around) const {
    const auto today = daysSince1970(around.today);
    const icu::UnicodeString text(typed.data(), static_cast<std::int32_t>(typed.size()));
    const auto whole = m_words->folding.folded(utf8(icu::UnicodeString(text).trim()));
    for (const auto& [words, days] : m_words->aroundToday) {
        if (today && whole == words) {
            return civilDay(*today + days);
        }
    }
    const auto tokens = tokensOf(text, m_words->folding);
    std::vector<Token> numbers;
    std::copy_if(tokens.begin(), tokens.end(), std::back_inserter(numbers),
                 [](const Token& each) { return each.digits > 0; });
    std::optional<int> month;
    std::optional<int> weekday;
    for (const auto& token : tokens) {
        if (token.digits > 0) {
            continue;
        }
        const auto ofMonth = numbers.empty() ? std::nullopt : named(m_words->months, token.word);
        const auto ofWeek = ofMonth ? std::nullopt : named(m_words->weekdays, token.word);
        if (ofMonth && !month) {
            month = *ofMonth + 1;
        } else if (ofWeek && !weekday) {
            weekday = ofWeek;
        } else if (!m_words->isFiller(token.word)) {
            return std::nullopt;
        }
    }
    if (!numbers.empty()) {
        return m_words->dayOf(numbers, month, around);
    }
    if (!weekday || !today) {
        return std::nullopt;
    }
    // Today's own name means another week: for today there is a word.
    const auto since = daysSinceWeekday(*today, *weekday);
    const bool isFuture = around.towards == Around::Towards::future;
    return civilDay(*today + (isFuture ? kDaysOfWeek - since : since > 0 ? -since : -kDaysOfWeek));
}

std::optional<ClockTime> TypedDates::time(std::u16string_view typed) const {
    constexpr int kHalf = 12;
    const icu::UnicodeString text(typed.data(), static_cast<std::int32_t>(typed.size()));
    std::vector<Token> numbers;
    std::string words;
    std::string wordsWithoutFillers;
    for (const auto& token : tokensOf(text, m_words->folding)) {
        if (token.digits > 0) {
            numbers.push_back(token);
        } else {
            words += token.word;
            wordsWithoutFillers += m_words->isFiller(token.word) ? std::string() : token.word;
        }
    }
    const auto half = [&]() -> std::optional<int> {
        const auto& meant = named(m_words->halves, words) ? words : wordsWithoutFillers;
        return meant.empty() ? std::nullopt : named(m_words->halves, meant);
    }();
    const bool isUnknown = !half && !wordsWithoutFillers.empty();
    if (isUnknown || numbers.empty() || numbers.size() > 3) {
        return std::nullopt;
    }
    ClockTime time{.hour = numbers[0].number, .minute = 0};
    if (numbers.size() == 1 && numbers[0].digits > 2) {
        time = {.hour = numbers[0].number / 100, .minute = numbers[0].number % 100};
    } else if (numbers.size() > 1) {
        time.minute = numbers[1].number;
    }
    const auto most = numbers.size() == 1 ? 4 : 2;
    const bool isTooLong = std::any_of(numbers.begin(), numbers.end(),
                                       [most](const Token& each) { return each.digits > most; });
    if (half && time.hour == kHalf) {
        time.hour = 0;
    }
    if (half == 1 && time.hour < kHalf) {
        time.hour += kHalf;
    }
    const auto seconds = numbers.size() > 2 ? numbers[2].number : 0; // of no interest
    const bool isTime =
        time.hour < 24 && time.minute < 60 && seconds < 60 && (half != 0 || time.hour < kHalf);
    return isTooLong || !isTime ? std::nullopt : std::optional(time);
}

} // namespace korvex::base
