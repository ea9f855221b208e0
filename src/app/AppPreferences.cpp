#include "app/AppPreferences.h"

#include "services/BoardService.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <type_traits>
#include <vector>

namespace korvex::app {

namespace {

using Property = AppPreferences::Property;

constexpr int kMinutesPerDay = 24 * 60;

constexpr const char* kBookmarkKey = "automaticBackupBookmark";
constexpr const char* kLastSuccessKey = "automaticBackupLastSuccess";
constexpr const char* kFirstStoreKey = "automaticBackupStoreID";
constexpr const char* kLastStoreKey = "automaticBackupLastStoreID";
constexpr const char* kDefaultBoardKey = "defaultBoardID";
constexpr const char* kMainBoardKey = "mainBoardSelectedBoardID";

template <typename Case>
struct StoredName {
    Case which;
    std::string_view rawValue;
};

template <typename Case, std::size_t Count>
using StoredNames = std::array<StoredName<Case>, Count>;

constexpr StoredNames<AppPreferences::Appearance, 3> namesOf(AppPreferences::Appearance) {
    using Appearance = AppPreferences::Appearance;
    return {
        {{Appearance::system, "system"}, {Appearance::light, "light"}, {Appearance::dark, "dark"}}};
}

constexpr StoredNames<AppPreferences::BoardSpacing, 2> namesOf(AppPreferences::BoardSpacing) {
    using BoardSpacing = AppPreferences::BoardSpacing;
    return {{{BoardSpacing::compact, "compact"}, {BoardSpacing::comfortable, "comfortable"}}};
}

constexpr StoredNames<AppPreferences::LaunchDestination, 3>
namesOf(AppPreferences::LaunchDestination) {
    using Destination = AppPreferences::LaunchDestination;
    return {{{Destination::lastBoard, "lastBoard"},
             {Destination::board, "board"},
             {Destination::upcoming, "upcoming"}}};
}

constexpr StoredNames<AppPreferences::WhenClosed, 3> namesOf(AppPreferences::WhenClosed) {
    using WhenClosed = AppPreferences::WhenClosed;
    return {{{WhenClosed::asks, "asks"},
             {WhenClosed::staysReady, "staysReady"},
             {WhenClosed::ends, "ends"}}};
}

constexpr StoredNames<model::EntryType, 2> namesOf(model::EntryType) {
    using model::EntryType;
    return {{{EntryType::text, model::rawValue(EntryType::text)},
             {EntryType::todo, model::rawValue(EntryType::todo)}}};
}

template <typename Values>
bool contains(const Values& values, std::int64_t value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

/// Whether a whole number may be the value of this setting.
bool isAllowed(Property property, std::int64_t value) {
    switch (property) {
    case Property::fontSize:
        return contains(AppPreferences::kFontSizes, value);
    case Property::defaultReminderMinutes:
        return value >= 0 && value < kMinutesPerDay;
    case Property::automaticBackupRetention:
        return contains(AppPreferences::kRetentions, value);
    case Property::appearance:
    case Property::launchDestination:
    case Property::launchBoardID:
    case Property::boardSpacing:
    case Property::automaticBackupEnabled:
    case Property::automaticBackupBookmark:
    case Property::automaticBackupLastSuccess:
    case Property::automaticBackupID:
    case Property::defaultBoardID:
    case Property::quickEntryShortcut:
    case Property::quickEntryDefaultType:
    case Property::quickEntryFixedBoardID:
    case Property::quickEntryDefaultBoardID:
    case Property::whenClosed:
    case Property::mainBoardSelectedBoardID:
    case Property::desktopBoardSelectedBoardID:
    case Property::desktopBoardAlwaysOnTop:
    case Property::desktopBoardShowOnLaunch:
    case Property::showsMenuBarExtra:
        break; // no whole number
    }
    return false;
}

/// Null where there is none of this identifier, or it is archived.
model::Board* activeBoard(std::span<model::Board* const> boards,
                          const AppPreferences::BoardID& id) {
    const auto found = std::find_if(boards.begin(), boards.end(), [&](const auto* board) {
        return board->id() == id && !board->isArchived();
    });
    return found == boards.end() ? nullptr : *found;
}

bool isUuid(std::string_view text) {
    return base::Uuid::parse(text).has_value();
}

std::optional<base::Uuid> uuidAt(const UserDefaults& defaults, std::string_view key) {
    const auto stored = defaults.string(key);
    return stored ? base::Uuid::parse(*stored) : std::nullopt;
}

/// It need not be kept anywhere: two stores that are used by turns keep theirs, and nobody who is
/// killed can leave one with the identifier of the other.
base::Uuid identifierFor(const base::Uuid& store, const base::Uuid& first,
                         base::Uuid installation) {
    for (std::size_t i = 0; i < store.bytes.size(); ++i) {
        installation.bytes[i] =
            static_cast<std::uint8_t>(installation.bytes[i] ^ first.bytes[i] ^ store.bytes[i]);
    }
    return installation;
}

/// Where settings are read from, and what is noticed on the way.
struct Reading {
    UserDefaults& defaults;
    const base::Logger& log;
    bool hasMalformedShortcut = false;
};

// One for each kind of setting; `value` is the default, and stays where there is no better one.

template <typename Case>
requires std::is_enum_v<Case>
void read(Reading& reading, Property, std::string_view key, Case& value) {
    const auto stored = reading.defaults.string(key);
    for (const auto& each : namesOf(Case{})) {
        if (each.rawValue == stored) {
            value = each.which;
        }
    }
}

void read(Reading& reading, Property property, std::string_view key, int& value) {
    if (const auto stored = reading.defaults.integer(key); stored && isAllowed(property, *stored)) {
        value = static_cast<int>(*stored);
    }
}

void read(Reading& reading, Property, std::string_view key, bool& value) {
    value = reading.defaults.boolean(key).value_or(value);
}

void read(Reading& reading, Property, std::string_view key, std::optional<base::Bytes>& value) {
    value = reading.defaults.bytes(key);
}

void read(Reading& reading, Property, std::string_view key, std::optional<base::Instant>& value) {
    if (const auto seconds = reading.defaults.real(key);
        seconds && base::Instant{*seconds}.isValid()) {
        value = base::Instant{*seconds};
    }
}

void read(Reading& reading, Property, std::string_view key, AppPreferences::BoardID& value) {
    const auto stored = reading.defaults.string(key);
    if (stored) {
        value = base::Uuid::parse(*stored);
    }
    if (!value && reading.defaults.contains(key)) {
        reading.defaults.replaceString(key, stored, std::nullopt);
        reading.log.warning("Removed malformed board preference: " + std::string(key));
    }
}

void read(Reading& reading, Property, std::string_view key, base::Uuid& value) {
    const auto otherwise = value == base::Uuid() ? base::Uuid::random() : value;
    value = *base::Uuid::parse(reading.defaults.settle(key, isUuid, otherwise.text()));
}

void read(Reading& reading, Property, std::string_view key, QuickEntryShortcut& value) {
    if (reading.defaults.contains(key)) {
        const auto stored = reading.defaults.bytes(key);
        const auto shortcut = stored ? QuickEntryShortcut::ofJson(*stored) : std::nullopt;
        reading.hasMalformedShortcut = !shortcut || !shortcut->isValid();
        value = reading.hasMalformedShortcut ? value : *shortcut;
    }
}

template <typename Case>
requires std::is_enum_v<Case>
void write(UserDefaults& defaults, std::string_view key, Case value) {
    for (const auto& each : namesOf(value)) {
        if (each.which == value) {
            defaults.setString(key, each.rawValue);
        }
    }
}

void write(UserDefaults& defaults, std::string_view key, int value) {
    defaults.setInteger(key, value);
}

void write(UserDefaults& defaults, std::string_view key, bool value) {
    defaults.setBoolean(key, value);
}

void write(UserDefaults& defaults, std::string_view key, const base::Bytes& value) {
    defaults.setBytes(key, value);
}

void write(UserDefaults& defaults, std::string_view key, base::Instant value) {
    defaults.setReal(key, value.seconds);
}

void write(UserDefaults& defaults, std::string_view key, const base::Uuid& value) {
    defaults.setString(key, value.text());
}

void write(UserDefaults& defaults, std::string_view key, const QuickEntryShortcut& value) {
    defaults.setBytes(key, value.json());
}

template <typename T>
void write(UserDefaults& defaults, std::string_view key, const std::optional<T>& value) {
    if (value) {
        write(defaults, key, *value);
    } else {
        defaults.remove(key);
    }
}

} // namespace

template <typename Visit>
void AppPreferences::forEachSetting(Visit visit) {
    using P = Property;
    visit(P::appearance, "appearance", &Values::appearance);
    visit(P::fontSize, "fontSize", &Values::fontSize);
    visit(P::launchDestination, "launchDestination", &Values::launchDestination);
    visit(P::launchBoardID, "launchBoardID", &Values::launchBoardID);
    visit(P::defaultReminderMinutes, "defaultReminderMinutes", &Values::defaultReminderMinutes);
    visit(P::boardSpacing, "boardSpacing", &Values::boardSpacing);
    visit(P::automaticBackupEnabled, "automaticBackupEnabled", &Values::automaticBackupEnabled);
    visit(P::automaticBackupBookmark, kBookmarkKey, &Values::automaticBackupBookmark);
    visit(P::automaticBackupLastSuccess, kLastSuccessKey, &Values::automaticBackupLastSuccess);
    visit(P::automaticBackupRetention, "automaticBackupRetention",
          &Values::automaticBackupRetention);
    visit(P::automaticBackupID, "automaticBackupID", &Values::automaticBackupID);
    visit(P::defaultBoardID, kDefaultBoardKey, &Values::defaultBoardID);
    visit(P::quickEntryShortcut, "quickEntryShortcut", &Values::quickEntryShortcut);
    visit(P::quickEntryDefaultType, "quickEntryDefaultType", &Values::quickEntryDefaultType);
    visit(P::quickEntryFixedBoardID, "quickEntryFixedBoardID", &Values::quickEntryFixedBoardID);
    visit(P::quickEntryDefaultBoardID, "quickEntryDefaultBoardID",
          &Values::quickEntryDefaultBoardID);
    visit(P::whenClosed, "whenMainWindowCloses", &Values::whenClosed);
    visit(P::mainBoardSelectedBoardID, kMainBoardKey, &Values::mainBoardSelectedBoardID);
    visit(P::desktopBoardSelectedBoardID, "desktopBoardSelectedBoardID",
          &Values::desktopBoardSelectedBoardID);
    visit(P::desktopBoardAlwaysOnTop, "desktopBoardAlwaysOnTop", &Values::desktopBoardAlwaysOnTop);
    visit(P::desktopBoardShowOnLaunch, "desktopBoardShowOnLaunch",
          &Values::desktopBoardShowOnLaunch);
    visit(P::showsMenuBarExtra, "showsMenuBarExtra", &Values::showsMenuBarExtra);
}

AppPreferences::AppPreferences(UserDefaults& defaults, base::LogSink& log)
    : m_defaults(defaults), m_log(log, "preferences") {
    m_defaults.mayWait(kMainBoardKey); // each step from board to board sets it
    Reading reading{.defaults = m_defaults, .log = m_log};
    forEachSetting([&](Property property, const char* key, auto member) {
        read(reading, property, key, m_values.*member);
    });
    m_repairedShortcut = reading.hasMalformedShortcut;
    if (m_repairedShortcut) {
        m_log.error("Malformed Quick Entry shortcut; using default configuration");
    }
}

void AppPreferences::reload() {
    m_defaults.refresh();
    Values fresh;
    // Where it is gone from the file, this is still the same installation.
    fresh.automaticBackupID = m_values.automaticBackupID;
    Reading reading{.defaults = m_defaults, .log = m_log};
    std::vector<Property> changed;
    forEachSetting([&](Property property, const char* key, auto member) {
        read(reading, property, key, fresh.*member);
        if (fresh.*member != m_values.*member) {
            changed.push_back(property);
        }
    });
    m_values = std::move(fresh);
    for (const auto property : changed) {
        m_didChange.emit(property);
    }
}

template <typename T>
void AppPreferences::set(T Values::*member, T value) {
    forEachSetting([&](Property property, const char* key, auto each) {
        if constexpr (std::is_same_v<decltype(each), T Values::*>) {
            if (each == member) {
                write(m_defaults, key, value);
                if (m_values.*member != value) {
                    m_values.*member = std::move(value);
                    m_didChange.emit(property);
                }
            }
        }
    });
}

void AppPreferences::setAppearance(Appearance appearance) {
    set(&Values::appearance, appearance);
}

void AppPreferences::setFontSize(int fontSize) {
    assert(isAllowed(Property::fontSize, fontSize));
    set(&Values::fontSize, fontSize);
}

void AppPreferences::setLaunchDestination(LaunchDestination destination) {
    set(&Values::launchDestination, destination);
}

void AppPreferences::setLaunchBoardID(BoardID id) {
    set(&Values::launchBoardID, id);
}

void AppPreferences::setDefaultReminderMinutes(int minutes) {
    assert(isAllowed(Property::defaultReminderMinutes, minutes));
    set(&Values::defaultReminderMinutes, minutes);
}

void AppPreferences::setBoardSpacing(BoardSpacing spacing) {
    set(&Values::boardSpacing, spacing);
}

void AppPreferences::setAutomaticBackupEnabled(bool enabled) {
    set(&Values::automaticBackupEnabled, enabled);
}

void AppPreferences::setAutomaticBackupBookmark(std::optional<base::Bytes> bookmark) {
    set(&Values::automaticBackupBookmark, std::move(bookmark));
}

void AppPreferences::setAutomaticBackupLastSuccess(std::optional<base::Instant> moment) {
    set(&Values::automaticBackupLastSuccess, moment);
}

void AppPreferences::setAutomaticBackupRetention(int count) {
    assert(isAllowed(Property::automaticBackupRetention, count));
    set(&Values::automaticBackupRetention, count);
}

void AppPreferences::setDefaultBoardID(BoardID id) {
    set(&Values::defaultBoardID, id);
}

void AppPreferences::setQuickEntryShortcut(QuickEntryShortcut shortcut) {
    assert(shortcut.isValid());
    set(&Values::quickEntryShortcut, shortcut);
}

void AppPreferences::setQuickEntryDefaultType(model::EntryType type) {
    set(&Values::quickEntryDefaultType, type);
}

void AppPreferences::setQuickEntryFixedBoardID(BoardID id) {
    set(&Values::quickEntryFixedBoardID, id);
}

void AppPreferences::setQuickEntryDefaultBoardID(BoardID id) {
    set(&Values::quickEntryDefaultBoardID, id);
}

void AppPreferences::setWhenClosed(WhenClosed what) {
    set(&Values::whenClosed, what);
}

void AppPreferences::setMainBoardSelectedBoardID(BoardID id) {
    set(&Values::mainBoardSelectedBoardID, id);
}

void AppPreferences::setDesktopBoardSelectedBoardID(BoardID id) {
    set(&Values::desktopBoardSelectedBoardID, id);
}

void AppPreferences::setDesktopBoardAlwaysOnTop(bool alwaysOnTop) {
    set(&Values::desktopBoardAlwaysOnTop, alwaysOnTop);
}

void AppPreferences::setDesktopBoardShowOnLaunch(bool showOnLaunch) {
    set(&Values::desktopBoardShowOnLaunch, showOnLaunch);
}

void AppPreferences::setShowsMenuBarExtra(bool shows) {
    set(&Values::showsMenuBarExtra, shows);
}

base::Uuid AppPreferences::automaticBackupID(const base::Uuid& store) const {
    return identifierFor(store, uuidAt(m_defaults, kFirstStoreKey).value_or(store),
                         m_values.automaticBackupID);
}

std::optional<base::Uuid> AppPreferences::automaticBackupLastStoreID() const {
    return uuidAt(m_defaults, kLastStoreKey);
}

model::Board* AppPreferences::quickEntryBoard(std::span<model::Board* const> boards) {
    if (auto* const fixed = activeBoard(boards, m_values.quickEntryFixedBoardID)) {
        return fixed;
    }
    auto* const last = activeBoard(boards, m_values.quickEntryDefaultBoardID);
    return last ? last : defaultBoard(boards);
}

model::Board* AppPreferences::defaultBoard(std::span<model::Board* const> boards) {
    const auto chosen = [&] { return activeBoard(boards, m_values.defaultBoardID); };
    if (auto* const board = chosen()) {
        return board;
    }
    reload(); // another program may have chosen since
    auto* const board = chosen();
    auto* const inbox = fallbackBoard(boards);
    if (!board && inbox) {
        m_defaults.replaceString(kDefaultBoardKey, m_defaults.string(kDefaultBoardKey),
                                 inbox->id().text());
        reload();
        if (auto* const theirs = chosen()) {
            return theirs; // and at this very moment
        }
    }
    return board ? board : inbox;
}

model::Board* AppPreferences::fallbackBoard(std::span<model::Board* const> boards) {
    return services::BoardService::inboxBoard(boards);
}

void AppPreferences::remapBoard(const base::Uuid& from, const base::Uuid& to) {
    m_defaults.refresh();
    forEachSetting([&](Property, const char* key, auto member) {
        if constexpr (std::is_same_v<decltype(member), BoardID Values::*>) {
            const auto stored = m_defaults.string(key);
            if (stored && base::Uuid::parse(*stored) == from) {
                m_defaults.replaceString(key, stored, to.text());
            }
        }
    });
    reload();
}

std::optional<base::Bytes> automaticBackupBookmark(const UserDefaults& defaults) {
    return defaults.bytes(kBookmarkKey);
}

base::Uuid settleAutomaticBackupID(UserDefaults& defaults, const base::Uuid& installation,
                                   const base::Uuid& store) {
    const auto first = defaults.settle(kFirstStoreKey, isUuid, store.text());
    return identifierFor(store, *base::Uuid::parse(first), installation);
}

void setAutomaticBackupLastSuccess(UserDefaults& defaults, const base::Uuid& store,
                                   std::optional<base::Instant> moment) {
    if (uuidAt(defaults, kLastStoreKey) != store) {
        defaults.remove(kLastSuccessKey);
        write(defaults, kLastStoreKey, store);
    }
    write(defaults, kLastSuccessKey, moment);
}

} // namespace korvex::app
