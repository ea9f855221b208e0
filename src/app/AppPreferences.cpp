#include "app/AppPreferences.h"

#include "schedule/TodoReminderPreset.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <string>
#include <utility>

namespace korvex::app {

namespace {

constexpr std::string_view kAppearanceKey = "appearance";
constexpr std::string_view kFontSizeKey = "fontSize";
constexpr std::string_view kDefaultReminderMinutesKey = "defaultReminderMinutes";
constexpr std::string_view kBoardSpacingKey = "boardSpacing";
constexpr std::string_view kMainBoardSelectedBoardIDKey = "mainBoardSelectedBoardID";

constexpr int kMinutesPerDay = 24 * 60;

template <typename Case>
struct StoredName {
    Case which;
    std::string_view rawValue;
};

constexpr std::array<StoredName<AppPreferences::Appearance>, 3> kAppearances{{
    {AppPreferences::Appearance::system, "system"},
    {AppPreferences::Appearance::light, "light"},
    {AppPreferences::Appearance::dark, "dark"},
}};

constexpr std::array<StoredName<AppPreferences::BoardSpacing>, 2> kBoardSpacings{{
    {AppPreferences::BoardSpacing::compact, "compact"},
    {AppPreferences::BoardSpacing::comfortable, "comfortable"},
}};

template <typename Table>
auto readCase(const UserDefaults& defaults, std::string_view key, const Table& table,
              decltype(table[0].which) fallback) {
    const auto stored = defaults.string(key);
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&](const auto& each) { return each.rawValue == stored; });
    return row == table.end() ? fallback : row->which;
}

template <typename Table, typename Case>
std::string_view rawValue(const Table& table, Case which) {
    return std::find_if(table.begin(), table.end(),
                        [which](const auto& each) { return each.which == which; })
        ->rawValue;
}

template <typename IsAllowed>
int readInteger(const UserDefaults& defaults, std::string_view key, int fallback,
                IsAllowed isAllowed) {
    const auto stored = defaults.integer(key);
    return stored && isAllowed(*stored) ? static_cast<int>(*stored) : fallback;
}

bool isFontSize(std::int64_t points) {
    constexpr auto kSizes = AppPreferences::kFontSizes;
    return std::find(kSizes.begin(), kSizes.end(), points) != kSizes.end();
}

bool isMinuteOfDay(std::int64_t minutes) {
    return minutes >= 0 && minutes < kMinutesPerDay;
}

std::optional<base::Uuid> readBoard(UserDefaults& defaults, std::string_view key,
                                    const base::Logger& log) {
    const auto stored = defaults.string(key);
    if (!stored) {
        return std::nullopt;
    }
    const auto id = base::Uuid::parse(*stored);
    if (!id) {
        defaults.remove(key);
        log.warning("Removed malformed board preference: " + std::string(key));
    }
    return id;
}

} // namespace

AppPreferences::AppPreferences(UserDefaults& defaults, base::LogSink& log)
    : m_defaults(defaults),
      m_appearance(readCase(defaults, kAppearanceKey, kAppearances, Appearance::system)),
      m_fontSize(readInteger(defaults, kFontSizeKey, kStandardFontSize, isFontSize)),
      m_boardSpacing(readCase(defaults, kBoardSpacingKey, kBoardSpacings, BoardSpacing::compact)),
      m_defaultReminderMinutes(readInteger(defaults, kDefaultReminderMinutesKey,
                                           schedule::kStandardReminderMinutes, isMinuteOfDay)),
      m_mainBoardSelectedBoardID(
          readBoard(defaults, kMainBoardSelectedBoardIDKey, base::Logger(log, "preferences"))) {}

void AppPreferences::setAppearance(Appearance appearance) {
    m_defaults.setString(kAppearanceKey, rawValue(kAppearances, appearance));
    if (std::exchange(m_appearance, appearance) != appearance) {
        m_didChange.emit();
    }
}

void AppPreferences::setFontSize(int fontSize) {
    assert(isFontSize(fontSize));
    m_defaults.setInteger(kFontSizeKey, fontSize);
    if (std::exchange(m_fontSize, fontSize) != fontSize) {
        m_didChange.emit();
    }
}

void AppPreferences::setBoardSpacing(BoardSpacing spacing) {
    m_defaults.setString(kBoardSpacingKey, rawValue(kBoardSpacings, spacing));
    if (std::exchange(m_boardSpacing, spacing) != spacing) {
        m_didChange.emit();
    }
}

void AppPreferences::setMainBoardSelectedBoardID(std::optional<base::Uuid> id) {
    m_mainBoardSelectedBoardID = id;
    if (id) {
        m_defaults.setString(kMainBoardSelectedBoardIDKey, id->text());
    } else {
        m_defaults.remove(kMainBoardSelectedBoardIDKey);
    }
}

} // namespace korvex::app
