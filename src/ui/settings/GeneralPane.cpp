#include "ui/settings/GeneralPane.h"

#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/kit/fields/TimeField.h"
#include "ui/kit/words/Refusal.h"
#include "ui/settings/SettingTitles.h"

#include <QSignalBlocker>

namespace korvex::ui {

namespace {

using Destination = app::AppPreferences::LaunchDestination;

constexpr int kMinutesOfHour = 60;

} // namespace

GeneralPane::GeneralPane(const Workspace& workspace, const Theme& theme)
    : SettingsPane(tr("General"), theme),
      m_workspace(workspace),
      m_preferences(workspace.preferences) {
    addStart(theme);
    addDefaults(theme);
    m_settings =
        m_preferences.didChange().connect([this](app::AppPreferences::Property) { followSoon(); });
    m_boards =
        workspace.context.didChange().connect([this](const store::ChangeSet&) { followSoon(); });
    m_dates = workspace.dates.didRenew().connect([this] { followSoon(); });
    connect(&theme, &Theme::changed, this, &GeneralPane::followSoon);
}

void GeneralPane::addStart(const Theme& theme) {
    auto& group = addGroup(tr("At the start"));
    m_destination = new ListChoice;
    m_destination->addItems(titlesOf(destinationTitles()));
    connect(m_destination, &QComboBox::activated, this, [this](int index) {
        m_preferences.setLaunchDestination(
            destinationTitles().at(static_cast<std::size_t>(index)).value);
    });
    m_destinationRow = &group.addRow(tr("Open with"), m_destination);
    m_launchBoard = makeBoardChoice(
        {.unset = tr("Inbox (none chosen)"), .gone = tr("Inbox (board is gone)")}, theme,
        [this](const base::Uuid& board) { m_preferences.setLaunchBoardID(board); });
    m_launchBoardRow = &group.addRow(tr("Board"), m_launchBoard);
}

void GeneralPane::addDefaults(const Theme& theme) {
    auto& group = addGroup(tr("Boards and todos"));
    const auto fallback = tr("Inbox (fallback)");
    m_defaultBoard = makeBoardChoice(
        {.unset = fallback, .gone = fallback}, theme,
        [this](const base::Uuid& board) { m_preferences.setDefaultBoardID(board); });
    m_defaultBoardRow = &group.addRow(tr("Default board"), m_defaultBoard);
    m_reminder = new TimeField(m_workspace.dates.shared(), theme, this);
    connect(m_reminder, &TypedField::settled, this, [this] {
        const auto& time = m_reminder->time();
        m_preferences.setDefaultReminderMinutes(time.hour() * kMinutesOfHour + time.minute());
    });
    m_reminderRow = &group.addRow(tr("Default reminder time"), m_reminder);
    m_reminderRow->setNote(tr("For todos that are due on a day, at no time of it."));
    connect(m_reminder, &TypedField::problemChanged, this,
            [this] { m_reminderRow->setRefusal(m_reminder->problem()); });
    m_spacing = new SegmentedChoice(tr("Board spacing"), titlesOf(spacingTitles()), theme);
    connect(m_spacing, &SegmentedChoice::chosenChanged, this, [this](int index) {
        m_preferences.setBoardSpacing(spacingTitles().at(static_cast<std::size_t>(index)).value);
    });
    group.addRow(tr("Board spacing"), m_spacing);
}

BoardChoice* GeneralPane::makeBoardChoice(const BoardChoice::Fallback& fallback, const Theme& theme,
                                          const std::function<void(const base::Uuid& board)>& set) {
    auto* const choice = new BoardChoice(m_workspace.boards, fallback, theme);
    connect(choice, &BoardChoice::chosen, this, set);
    connect(choice, &BoardChoice::closed, this, &GeneralPane::followSoon);
    choice->setEnabled(m_workspace.isUsersOwn);
    return choice;
}

void GeneralPane::showBoards() {
    if (m_workspace.isUsersOwn) {
        m_launchBoardRow->setNote(tr("If it is deleted or archived, Inbox is used."));
        m_launchBoard->show(m_preferences.launchBoardID());
        m_defaultBoard->show(m_preferences.defaultBoardID());
        return;
    }
    for (auto* const row : {m_launchBoardRow, m_defaultBoardRow}) {
        row->setNote(tr("A board of your own store is chosen in the window of that store. In this "
                        "one, Inbox is used."));
    }
    const auto* const inbox = m_workspace.boards.inboxBoard();
    for (auto* const choice : {m_launchBoard, m_defaultBoard}) {
        choice->show(inbox ? std::optional(inbox->id()) : std::nullopt);
    }
}

void GeneralPane::follow() {
    const auto destination = m_preferences.launchDestination();
    m_destination->setCurrentIndex(placeOf(destinationTitles(), destination));
    m_destinationRow->setNote(
        destination == Destination::lastBoard && m_workspace.isUsersOwn
            ? tr("Opens with the last selected board. If it was deleted, Inbox is used.")
            : QString());
    m_launchBoardRow->setVisible(destination == Destination::board);
    // A store that cannot be read is told of by the main window; the boards stay as they were.
    static_cast<void>(refusal([this] { showBoards(); }));
    m_reminder->setFormats(m_workspace.dates.shared());
    const auto minutes = m_preferences.defaultReminderMinutes();
    const QTime time(minutes / kMinutesOfHour, minutes % kMinutesOfHour);
    if (!m_reminder->isStepping()) { // what it is stepped to is set in a moment
        m_reminder->setTime(time);
    }
    const QSignalBlocker quiet(m_spacing); // nobody has chosen anything
    m_spacing->choose(placeOf(spacingTitles(), m_preferences.boardSpacing()));
}

} // namespace korvex::ui
