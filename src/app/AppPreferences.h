#pragma once

#include "app/QuickEntryShortcut.h"
#include "app/UserDefaults.h"
#include "base/Instant.h"
#include "base/Log.h"
#include "base/Signal.h"
#include "base/Uuid.h"
#include "model/Board.h"
#include "model/EntryType.h"
#include "schedule/TodoReminderPreset.h"

#include <array>
#include <optional>
#include <span>
#include <utility>

namespace korvex::app {

/// The user's settings (docs/formats/settings.md): malformed values read as their defaults, a set
/// one is written at once. One a program; main thread; the defaults must outlive it.
class AppPreferences {
public:
    enum class Appearance { system, light, dark };
    enum class BoardSpacing { compact, comfortable };
    /// What the main window shows at launch: the board that was selected last, `launchBoardID`, or
    /// what is upcoming.
    enum class LaunchDestination { lastBoard, board, upcoming };
    /// What the program does when the main window is closed while a shortcut opens Quick Entry:
    /// asks the user, goes on for that, or ends.
    enum class WhenClosed { asks, staysReady, ends };

    /// The sizes that can be chosen, in points; there is nothing between 16 and 18, nor odd above.
    static constexpr std::array kFontSizes{10, 11, 12, 13, 14, 15, 16, 18, 20, 22, 24};
    static constexpr int kStandardFontSize = 13;
    /// How many automatic backups can be kept.
    static constexpr std::array kRetentions{7, 14, 30};

    /// What a setting of this name holds is in the getter of the same name.
    enum class Property {
        appearance,
        fontSize,
        launchDestination,
        launchBoardID,
        defaultReminderMinutes,
        boardSpacing,
        automaticBackupEnabled,
        automaticBackupBookmark,
        automaticBackupLastSuccess,
        automaticBackupRetention,
        automaticBackupID,
        defaultBoardID,
        quickEntryShortcut,
        quickEntryDefaultType,
        quickEntryFixedBoardID,
        quickEntryDefaultBoardID,
        whenClosed,
        mainBoardSelectedBoardID,
        desktopBoardSelectedBoardID,
        desktopBoardAlwaysOnTop,
        desktopBoardShowOnLaunch,
        showsMenuBarExtra,
    };

    using BoardID = std::optional<base::Uuid>;

    /// Reads all settings, and writes what must last: an identifier of this installation where
    /// there is none yet.
    AppPreferences(UserDefaults& defaults, base::LogSink& log);

    Appearance appearance() const { return m_values.appearance; }
    /// One of `kFontSizes`.
    int fontSize() const { return m_values.fontSize; }
    LaunchDestination launchDestination() const { return m_values.launchDestination; }
    /// This board, as any other of them, may be gone or archived by now: the Inbox stands in.
    BoardID launchBoardID() const { return m_values.launchBoardID; }
    /// Minutes after midnight, 0 to 1439.
    int defaultReminderMinutes() const { return m_values.defaultReminderMinutes; }
    BoardSpacing boardSpacing() const { return m_values.boardSpacing; }
    bool automaticBackupEnabled() const { return m_values.automaticBackupEnabled; }
    /// The chosen folder, in a form of its own.
    const std::optional<base::Bytes>& automaticBackupBookmark() const {
        return m_values.automaticBackupBookmark;
    }
    std::optional<base::Instant> automaticBackupLastSuccess() const {
        return m_values.automaticBackupLastSuccess;
    }
    /// One of `kRetentions`.
    int automaticBackupRetention() const { return m_values.automaticBackupRetention; }
    /// Tells this installation from others; the same for ever.
    const base::Uuid& automaticBackupID() const { return m_values.automaticBackupID; }
    /// Tells the backups of this store by this installation from all others: its identifier, and
    /// one of its own for each other store than the first that it has backed up.
    base::Uuid automaticBackupID(const base::Uuid& store) const;
    /// The store of which `automaticBackupLastSuccess` tells; absent: of any.
    std::optional<base::Uuid> automaticBackupLastStoreID() const;
    BoardID defaultBoardID() const { return m_values.defaultBoardID; }
    /// A valid one.
    const QuickEntryShortcut& quickEntryShortcut() const { return m_values.quickEntryShortcut; }
    model::EntryType quickEntryDefaultType() const { return m_values.quickEntryDefaultType; }
    BoardID quickEntryFixedBoardID() const { return m_values.quickEntryFixedBoardID; }
    /// The board of the last capture.
    BoardID quickEntryDefaultBoardID() const { return m_values.quickEntryDefaultBoardID; }
    WhenClosed whenClosed() const { return m_values.whenClosed; }
    /// The board last shown in the main window.
    BoardID mainBoardSelectedBoardID() const { return m_values.mainBoardSelectedBoardID; }
    BoardID desktopBoardSelectedBoardID() const { return m_values.desktopBoardSelectedBoardID; }
    bool desktopBoardAlwaysOnTop() const { return m_values.desktopBoardAlwaysOnTop; }
    bool desktopBoardShowOnLaunch() const { return m_values.desktopBoardShowOnLaunch; }
    bool showsMenuBarExtra() const { return m_values.showsMenuBarExtra; }
    /// Whether a malformed shortcut was found when this object was made.
    bool repairedShortcutPreference() const { return m_repairedShortcut; }

    void setAppearance(Appearance appearance);
    void setFontSize(int fontSize);
    void setLaunchDestination(LaunchDestination destination);
    void setLaunchBoardID(BoardID id);
    void setDefaultReminderMinutes(int minutes);
    void setBoardSpacing(BoardSpacing spacing);
    void setAutomaticBackupEnabled(bool enabled);
    void setAutomaticBackupBookmark(std::optional<base::Bytes> bookmark);
    void setAutomaticBackupLastSuccess(std::optional<base::Instant> moment);
    void setAutomaticBackupRetention(int count);
    void setDefaultBoardID(BoardID id);
    void setQuickEntryShortcut(QuickEntryShortcut shortcut);
    void setQuickEntryDefaultType(model::EntryType type);
    void setQuickEntryFixedBoardID(BoardID id);
    void setQuickEntryDefaultBoardID(BoardID id);
    void setWhenClosed(WhenClosed what);
    void setMainBoardSelectedBoardID(BoardID id);
    void setDesktopBoardSelectedBoardID(BoardID id);
    void setDesktopBoardAlwaysOnTop(bool alwaysOnTop);
    void setDesktopBoardShowOnLaunch(bool showOnLaunch);
    void setShowsMenuBarExtra(bool shows);

    /// The board to use wherever the default board is meant; null where there is not even an Inbox.
    /// One that is gone or archived gives way to the Inbox, for later too; not where the list has
    /// no Inbox, as one that could not be read.
    model::Board* defaultBoard(std::span<model::Board* const> boards);
    /// Where a capture goes unless the user says otherwise: the fixed board, else the one of the
    /// last capture, else the default board.
    model::Board* quickEntryBoard(std::span<model::Board* const> boards);
    /// The Inbox.
    static model::Board* fallbackBoard(std::span<model::Board* const> boards);
    /// Every setting that names the board `from` names `to` from now on.
    void remapBoard(const base::Uuid& from, const base::Uuid& to);

    /// Takes in what other programs have set since: for who learns that the settings have changed.
    void reload();

    /// Emitted for each setting that has another value than before, when all have their new ones.
    base::Signal<Property>& didChange() { return m_didChange; }

private:
    struct Values {
        Appearance appearance = Appearance::system;
        int fontSize = kStandardFontSize;
        LaunchDestination launchDestination = LaunchDestination::lastBoard;
        BoardID launchBoardID;
        int defaultReminderMinutes = schedule::kStandardReminderMinutes;
        BoardSpacing boardSpacing = BoardSpacing::compact;
        bool automaticBackupEnabled = false;
        std::optional<base::Bytes> automaticBackupBookmark;
        std::optional<base::Instant> automaticBackupLastSuccess;
        int automaticBackupRetention = kRetentions.front();
        base::Uuid automaticBackupID;
        BoardID defaultBoardID;
        QuickEntryShortcut quickEntryShortcut;
        model::EntryType quickEntryDefaultType = model::EntryType::todo;
        BoardID quickEntryFixedBoardID;
        BoardID quickEntryDefaultBoardID;
        WhenClosed whenClosed = WhenClosed::asks;
        BoardID mainBoardSelectedBoardID;
        BoardID desktopBoardSelectedBoardID;
        bool desktopBoardAlwaysOnTop = false;
        bool desktopBoardShowOnLaunch = false;
        bool showsMenuBarExtra = true;
    };

    /// Calls `visit` with each setting's property, key and member of `Values`, in the order in
    /// which they are read.
    template <typename Visit>
    static void forEachSetting(Visit visit);
    template <typename T>
    void set(T Values::*member, T value);

    UserDefaults& m_defaults;
    base::Logger m_log;
    bool m_repairedShortcut = false;
    Values m_values;
    base::Signal<Property> m_didChange;
};

// Some of the settings as a thread of its own reads and sets them, by the defaults of that thread,
// while the preferences stay on theirs.

std::optional<base::Bytes> automaticBackupBookmark(const UserDefaults& defaults);
/// The identifier for the backups of this store, which from now on is the first one if none was.
base::Uuid settleAutomaticBackupID(UserDefaults& defaults, const base::Uuid& installation,
                                   const base::Uuid& store);
/// Killed in between, no store was backed up for all that the settings tell.
void setAutomaticBackupLastSuccess(UserDefaults& defaults, const base::Uuid& store,
                                   std::optional<base::Instant> moment);

} // namespace korvex::app
