#include "ui/settings/AutomaticBackupRows.h"

#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/kit/controls/Switch.h"
#include "ui/kit/words/FolderText.h"
#include "ui/kit/words/Text.h"
#include "ui/settings/BackupWords.h"
#include "ui/settings/SettingsGroup.h"
#include "ui/settings/WorkRow.h"

#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace korvex::ui {

namespace {

using FolderState = storage::AutomaticBackupService::FolderState;

constexpr auto& kRetentions = app::AppPreferences::kRetentions;

QStringList retentionTitles() {
    QStringList titles;
    for (const auto count : kRetentions) {
        titles.append(QLocale().toString(count));
    }
    return titles;
}

/// What is wrong with the folder, and what can be done.
QString lostFolderText(FolderState state) {
    return state == FolderState::gone
               ? AutomaticBackupRows::tr("The folder is gone, or another one stands in its place.")
               : AutomaticBackupRows::tr("Which folder was chosen is not known any more.");
}

QString advice(FolderState state) {
    return state == FolderState::gone
               ? AutomaticBackupRows::tr("Make it available, or choose it again.")
               : AutomaticBackupRows::tr("Choose it again.");
}

} // namespace

AutomaticBackupRows::AutomaticBackupRows(SettingsGroup& group, const Workspace& workspace,
                                         const Theme& theme, QObject* parent)
    : QObject(parent),
      m_preferences(workspace.preferences),
      m_service(workspace.automaticBackups),
      m_workspace(workspace),
      m_places(workspace) {
    addSettings(group, theme);
    addState(group, theme);
    m_settings =
        m_preferences.didChange().connect([this](app::AppPreferences::Property) { follow(); });
    m_changes = m_service.didChange().connect([this] { follow(); });
    m_ticks = workspace.scheduleClock.didTick().connect([this](base::Instant) { follow(); });
    m_dates = workspace.dates.didRenew().connect([this] { follow(); });
    follow();
}

void AutomaticBackupRows::catchUp() {
    follow();
    m_service.lookAtFolder();
}

void AutomaticBackupRows::addSettings(SettingsGroup& group, const Theme& theme) {
    m_choose = new QPushButton(tr("Choose…"));
    m_folderRow = &group.addRow(tr("Folder"), m_choose);
    connect(m_choose, &QPushButton::clicked, this, &AutomaticBackupRows::chooseFolder);
    m_isOn = new Switch({}, theme);
    group.addRow(tr("Back up every day"), m_isOn);
    connect(m_isOn, &Switch::toggled, this,
            [this](bool isOn) { m_preferences.setAutomaticBackupEnabled(isOn); });
    m_retention = new SegmentedChoice(tr("Keep Most Recent"), retentionTitles(), theme);
    group.addRow(tr("Keep Most Recent"), m_retention);
    connect(m_retention, &SegmentedChoice::chosenChanged, this, [this](int index) {
        m_preferences.setAutomaticBackupRetention(kRetentions.at(static_cast<std::size_t>(index)));
    });
}

void AutomaticBackupRows::addState(SettingsGroup& group, const Theme& theme) {
    m_last = settingsValue(theme);
    group.addRow(tr("Last backup"), m_last);
    m_next = settingsValue(theme);
    group.addRow(tr("Next backup"), m_next);
    m_now = new QPushButton(tr("Back Up Now"));
    m_nowRow = &group.addRow(tr("Back up without waiting for the day"), m_now);
    connect(m_now, &QPushButton::clicked, this, [this] {
        m_asked = Asked::backup;
        m_service.backUpNow();
    });
    m_work = new WorkRow(theme, &group);
    group.add(m_work);
    connect(m_work, &WorkRow::cancelled, this, [this] {
        m_asked = Asked::backup;
        m_service.cancel();
    });
    m_answer = &group.addRow({});
}

void AutomaticBackupRows::chooseFolder() {
    m_places.folder(*m_choose, tr("Folder for automatic backups"),
                    [this](const std::filesystem::path& folder) {
                        m_asked = Asked::folder;
                        m_service.chooseFolder(folder);
                    });
}

void AutomaticBackupRows::follow() {
    followSettings();
    followState();
    followFailure();
}

void AutomaticBackupRows::followSettings() {
    const QSignalBlocker quietSwitch(m_isOn); // nobody has chosen anything
    const QSignalBlocker quietChoice(m_retention);
    const auto obstacle = m_service.obstacle();
    const auto folder = m_service.folder();
    setChoiceFree(!obstacle && !m_service.isChoosing());
    m_folderRow->setNote(obstacle                 ? translated(*obstacle)
                         : m_service.isChoosing() ? tr("Preparing the folder…")
                         : folder                 ? folderText(*folder)
                         : m_service.folderState() == FolderState::none
                             ? tr("None has been chosen yet.")
                             : QString());
    const auto isOn = m_preferences.automaticBackupEnabled() && !obstacle;
    m_isOn->setEnabled(isOn || (folder && !obstacle));
    m_isOn->setChecked(isOn);
    const auto kept =
        std::find(kRetentions.begin(), kRetentions.end(), m_preferences.automaticBackupRetention());
    m_retention->choose(static_cast<int>(kept - kRetentions.begin()));
    m_retention->setEnabled(!obstacle);
}

/// The keyboard comes back to the button from where it goes meanwhile, unless its user takes it on.
void AutomaticBackupRows::setChoiceFree(bool isFree) {
    const auto* const window = m_choose->window();
    const auto hadKeyboard = window->focusWidget() == m_choose;
    m_choose->setEnabled(isFree);
    if (!isFree && hadKeyboard) {
        m_standIn = window->focusWidget();
    } else if (isFree && m_standIn) {
        if (window->focusWidget() == m_standIn) {
            m_choose->setFocus();
        }
        m_standIn = nullptr;
    }
}

void AutomaticBackupRows::followState() {
    const auto isOfThisStore = !m_service.obstacle();
    const auto last = m_service.lastSuccess();
    m_last->say(last && isOfThisStore ? momentText(*last, m_workspace.dates) : tr("None yet"));
    const auto now = m_workspace.now();
    const auto next = m_service.nextDue(now);
    followAt(next, now);
    m_next->say(!next          ? tr("Off")
                : *next == now ? tr("Due now")
                               : momentText(*next, m_workspace.dates));
    if (m_service.isRunning()) {
        m_work->show(tr("Making a backup"), m_service.progress());
    }
    m_work->setFree(*m_now, isOfThisStore && m_service.folder() && !m_service.isRunning());
    if (!m_service.isRunning()) {
        m_work->end();
    }
    followAnswer();
}

void AutomaticBackupRows::followAnswer() {
    const auto now = m_workspace.now();
    const auto isCancelled = m_service.wasCancelled();
    // One in the folder before is none in the chosen one.
    m_isMade = m_isMade && !m_service.isRunning() && !m_service.errorMessage() && !isCancelled &&
               m_service.lastSuccess();
    m_answer->setVisible(isCancelled || m_isMade); // what is not in sight is not read out
    m_answer->setAnswer(m_isMade       ? tr("Backup made.")
                        : !isCancelled ? QString()
                        : m_service.nextDue(now) == now
                            ? tr("The backup was cancelled. Korvex tries again within a "
                                 "quarter of an hour.")
                            : tr("The backup was cancelled."));
}

/// One text, where it belongs: at the folder what is wrong with that, also before a backup fails
/// for it; at the button all else that one failed for.
void AutomaticBackupRows::followFailure() {
    const auto state = m_service.folderState();
    const auto isLost = m_service.isFolderLost();
    const auto failure =
        isOver() && m_service.errorMessage() ? translated(*m_service.errorMessage()) : QString();
    const auto isAtFolder = m_service.hasFailedForFolder() && isLost;
    m_folderRow->setRefusal(
        !m_service.choiceRefusal().empty() ? translated(m_service.choiceRefusal())
        : isAtFolder && !failure.isEmpty() ? failure + QLatin1Char('\n') + lostFolderText(state)
        : isLost ? lostFolderText(state) + QLatin1Char(' ') + advice(state)
                 : QString());
    const auto isHere = !failure.isEmpty() && !isAtFolder;
    m_nowRow->setRefusal(!isHere ? QString()
                         : m_service.hasFailedForFolder()
                             ? failure // it is there again
                             : failure + QLatin1Char('\n') + translated(m_service.errorReason()));
    // A run that ends says so in several steps, and its failure in the last of them.
    if (m_asked != Asked::nothing && !isUnderWay() && !std::exchange(m_willTell, true)) {
        QTimer::singleShot(0, this, &AutomaticBackupRows::tell);
    }
}

void AutomaticBackupRows::tell() {
    m_willTell = false;
    if (isUnderWay()) {
        return; // asked for once more since
    }
    const auto asked = std::exchange(m_asked, Asked::nothing);
    m_isMade = asked == Asked::backup;
    followAnswer();
    auto* row = m_answer->isHidden() ? nullptr : m_answer;
    if (asked == Asked::folder) {
        row = m_service.choiceRefusal().empty() ? nullptr : m_folderRow;
    } else if (m_service.errorMessage()) {
        row = m_service.hasFailedForFolder() && m_service.isFolderLost() ? m_folderRow : m_nowRow;
    }
    if (row) {
        Q_EMIT told(row);
    }
}

void AutomaticBackupRows::followAt(std::optional<base::Instant> moment, base::Instant now) {
    m_timer.reset();
    if (moment && *moment > now) {
        m_timer = m_workspace.runLoop.callAfter(std::chrono::duration<double>(*moment - now),
                                                [this] { follow(); });
    }
}

} // namespace korvex::ui
