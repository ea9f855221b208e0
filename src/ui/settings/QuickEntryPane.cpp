#include "ui/settings/QuickEntryPane.h"

#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/kit/controls/Switch.h"
#include "ui/kit/words/Refusal.h"
#include "ui/settings/SettingTitles.h"
#include "ui/settings/ShortcutRows.h"

#include <QSignalBlocker>

namespace korvex::ui {

namespace {

using WhenClosed = app::AppPreferences::WhenClosed;

} // namespace

QuickEntryPane::QuickEntryPane(const Workspace& workspace, const Theme& theme)
    : SettingsPane(tr("Quick Entry"), theme),
      m_workspace(workspace),
      m_preferences(workspace.preferences) {
    addShortcut(theme);
    addDestination(theme);
    if (workspace.quickEntry) {
        addBackground(theme);
        m_hotkey = workspace.quickEntry->hotkey.didChange().connect([this] { followSoon(); });
    }
    m_settings =
        m_preferences.didChange().connect([this](app::AppPreferences::Property) { followSoon(); });
    m_boards =
        workspace.context.didChange().connect([this](const store::ChangeSet&) { followSoon(); });
    connect(&theme, &Theme::changed, this, &QuickEntryPane::followSoon);
}

void QuickEntryPane::addShortcut(const Theme& theme) {
    auto& group =
        addGroup(tr("Shortcut"), tr("Opens Quick Entry from anywhere, over whatever you do."));
    if (m_workspace.quickEntry) {
        m_shortcut = new ShortcutRows(group, *m_workspace.quickEntry, m_preferences, theme, this);
    } else {
        group.addRow(tr("The shortcut is set in the window of your own store."));
    }
}

void QuickEntryPane::addDestination(const Theme& theme) {
    auto& group = addGroup(tr("New entries"));
    m_board = new BoardChoice(m_workspace.boards,
                              {.unset = tr("Last Used Board"),
                               .gone = tr("Last Used Board (board is gone)"),
                               .offered = BoardChoice::Offered::always},
                              theme);
    connect(m_board, &BoardChoice::chosen, this,
            [this](const base::Uuid& board) { m_preferences.setQuickEntryFixedBoardID(board); });
    connect(m_board, &BoardChoice::fallbackChosen, this,
            [this] { m_preferences.setQuickEntryFixedBoardID(std::nullopt); });
    connect(m_board, &BoardChoice::closed, this, &QuickEntryPane::followSoon);
    m_board->setEnabled(m_workspace.isUsersOwn);
    m_boardRow = &group.addRow(tr("Destination"), m_board);
    m_boardRow->setNote(
        m_workspace.isUsersOwn
            ? tr("Last Used Board uses Default Board until your first capture. A fixed "
                 "destination is used whenever Quick Entry opens; you can choose another board "
                 "for a capture.")
            : tr("A board of your own store is chosen in the window of that store."));
    m_type = new SegmentedChoice(tr("Begins as"), titlesOf(entryTypeTitles()), theme);
    connect(m_type, &SegmentedChoice::chosenChanged, this, [this](int index) {
        m_preferences.setQuickEntryDefaultType(
            entryTypeTitles().at(static_cast<std::size_t>(index)).value);
    });
    group.addRow(tr("Begins as"), m_type);
}

void QuickEntryPane::addBackground(const Theme& theme) {
    auto& group = addGroup(tr("In the background"));
    m_stays = new Switch({}, theme);
    m_staysRow = &group.addRow(tr("Keep Quick Entry ready when the window is closed"), m_stays);
    connect(m_stays, &Switch::toggled, this, [this](bool isOn) {
        m_preferences.setWhenClosed(isOn ? WhenClosed::staysReady : WhenClosed::ends);
    });
    m_autostart = new Switch({}, theme);
    m_autostartRow = &group.addRow(tr("Start Korvex when you log in"), m_autostart);
    m_autostartRow->setNote(tr("In the background, without a window."));
    connect(m_autostart, &Switch::toggled, this, &QuickEntryPane::setAutostart);
}

void QuickEntryPane::setAutostart(bool isOn) {
    const auto& file = m_workspace.quickEntry->autostart;
    const auto error = isOn ? file.turnOn() : file.turnOff();
    m_autostartRow->setRefusal(
        error ? tr("This could not be changed: %1").arg(toQString(error.message())) : QString());
    followBackground();
}

void QuickEntryPane::follow() {
    if (m_shortcut) {
        m_shortcut->follow();
        followBackground();
    }
    // A store that cannot be read is told of by the main window; the boards stay as they were.
    static_cast<void>(refusal([this] {
        m_board->show(m_workspace.isUsersOwn ? m_preferences.quickEntryFixedBoardID()
                                             : std::nullopt);
    }));
    const QSignalBlocker quiet(m_type); // nobody has chosen anything
    m_type->choose(placeOf(entryTypeTitles(), m_preferences.quickEntryDefaultType()));
}

void QuickEntryPane::followBackground() {
    const QSignalBlocker quietStay(m_stays);
    const QSignalBlocker quietStart(m_autostart);
    const auto& setup = *m_workspace.quickEntry;
    // Who was not asked yet is asked only where there are keys to tell of.
    m_stays->setChecked(m_preferences.whenClosed() == WhenClosed::staysReady ||
                        (m_preferences.whenClosed() == WhenClosed::asks && setup.hotkey.isReady()));
    const auto back = tr("Starting Korvex again brings its window back; Ctrl+Q there ends it.");
    m_staysRow->setNote(
        setup.hotkey.isReady() ? back
        : setup.hotkey.mayBeReady()
            ? tr("It waits for the keys that your desktop has for it.") + QLatin1Char(' ') + back
            : tr("Only while the shortcut works: else nothing would be left to wait for."));
    m_autostart->setChecked(setup.autostart.isOn());
}

void QuickEntryPane::showEvent(QShowEvent* event) {
    if (m_shortcut) {
        m_shortcut->tryAgain(); // nobody tells when another program has given it up
    }
    SettingsPane::showEvent(event);
}

} // namespace korvex::ui
