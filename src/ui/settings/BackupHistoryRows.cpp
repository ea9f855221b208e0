#include "ui/settings/BackupHistoryRows.h"

#include "base/ByteSize.h"
#include "storage/FolderBookmark.h"
#include "ui/kit/words/Text.h"
#include "ui/settings/BackupOperations.h"
#include "ui/settings/BackupWords.h"
#include "ui/settings/SettingsGroup.h"
#include "ui/settings/WorkRow.h"

#include <QPushButton>

#include <algorithm>

namespace korvex::ui {

namespace {

/// When it was made: a copy's file may be younger than what it holds.
QString nameOf(const BackupReader::Item& item, const DateTexts& dates) {
    return momentText(item.summary ? item.summary->exportedAt : item.file.modifiedAt, dates);
}

} // namespace

BackupHistoryRows::BackupHistoryRows(SettingsGroup& group, BackupOperations& operations,
                                     WorkRow& work, const Workspace& workspace, const Theme& theme,
                                     QObject* parent)
    : QObject(parent),
      m_group(group),
      m_operations(operations),
      m_work(work),
      m_workspace(workspace),
      m_theme(theme),
      m_reader(workspace, this) {
    connect(&m_reader, &BackupReader::listed, this, &BackupHistoryRows::showAll);
    connect(&m_reader, &BackupReader::changed, this, &BackupHistoryRows::follow);
    connect(&operations, &BackupOperations::changed, this, &BackupHistoryRows::follow);
    m_changes = workspace.automaticBackups.didChange().connect([this] {
        const auto isOther = m_folder != m_workspace.preferences.automaticBackupBookmark();
        if ((isOther || !m_workspace.automaticBackups.isRunning()) && m_group.isVisible()) {
            read();
        }
        followLast();
    });
    m_dates = workspace.dates.didRenew().connect([this] { follow(); });
    makeRows();
}

void BackupHistoryRows::read() {
    if (m_workspace.automaticBackups.obstacle()) {
        return; // those in the chosen folder are another store's
    }
    const auto& folder = m_workspace.preferences.automaticBackupBookmark();
    if (folder != m_folder) {
        m_folder = folder;
        m_reader.forget(); // the one before may never answer
    }
    m_reader.read(list());
}

BackupReader::List BackupHistoryRows::list() const {
    return [bytes = m_folder, history = m_workspace.preferences.automaticBackupID(
                                  m_workspace.context.container().storeID())](storage::Work&) {
        const auto bookmark = bytes ? storage::FolderBookmark::ofBytes(*bytes) : std::nullopt;
        try {
            return bookmark ? storage::automaticBackups(*bookmark, history) : storage::BackupList();
        } catch (const storage::AutomaticBackupError& error) {
            if (error.which() != storage::AutomaticBackupErrorCase::chooseAgain) {
                throw;
            }
            return storage::BackupList(); // the folder is gone, which is told where it stands
        }
    };
}

void BackupHistoryRows::showAll() {
    const auto* const keyboard = m_group.window()->focusWidget();
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        for (const auto button : {&Row::check, &Row::restore}) {
            if (keyboard == m_rows[i].*button) {
                const auto file = m_rows[i].file;
                makeRows();
                const auto same = std::find_if(m_rows.begin(), m_rows.end(),
                                               [&](const Row& row) { return row.file == file; });
                takeKeyboard(same == m_rows.end() ? i
                                                  : static_cast<std::size_t>(same - m_rows.begin()),
                             button);
                return;
            }
        }
    }
    makeRows();
}

void BackupHistoryRows::takeKeyboard(std::size_t index, QPushButton* Row::*button) {
    if (m_rows.empty()) {
        const auto canTake = [](const QWidget& each) {
            return each.isVisible() && each.isEnabled() && (each.focusPolicy() & Qt::TabFocus);
        };
        auto* before = m_group.previousInFocusChain();
        while (before != &m_group && !canTake(*before)) {
            before = before->previousInFocusChain();
        }
        before->setFocus();
    } else {
        const auto& row = m_rows[std::min(index, m_rows.size() - 1)];
        row.row->show(); // what is not in sight yet takes no keyboard
        ((row.*button)->isEnabled() ? row.*button : row.check)->setFocus();
    }
}

void BackupHistoryRows::makeRows() {
    m_group.clear();
    m_rows.clear();
    for (std::size_t i = 0; i < m_reader.items().size(); ++i) {
        addRow(i);
    }
    const auto foreign = foreignText();
    m_lastRow = m_rows.empty() || !foreign.isEmpty() || !m_reader.refusal().isEmpty()
                    ? &m_group.addRow({})
                    : nullptr;
    if (m_lastRow) {
        m_lastRow->setNote(foreign);
        m_lastRow->setRefusal(m_reader.refusal());
    }
    follow();
}

QString BackupHistoryRows::emptyText() const {
    using State = storage::AutomaticBackupService::FolderState;
    const auto& service = m_workspace.automaticBackups;
    const auto state = service.folderState();
    if (!m_rows.empty() || !m_reader.refusal().isEmpty()) {
        return {};
    }
    if (state == State::none || service.obstacle()) {
        return tr("No automatic backups yet.");
    }
    if (!m_reader.isListed()) {
        return tr("Reading…");
    }
    return state == State::notLookedAt ? QString()
           : service.isFolderLost()    ? tr("Those in the folder are shown when it is there again.")
                                       : tr("No automatic backups yet.");
}

QString BackupHistoryRows::foreignText() const {
    return m_reader.hasForeign()
               ? tr("The folder also holds backups of another store or installation, or of this "
                    "one before its settings were lost; Import… reads them.")
               : QString();
}

void BackupHistoryRows::addRow(std::size_t index) {
    const auto& file = m_reader.items()[index].file;
    const auto name = nameOf(m_reader.items()[index], m_workspace.dates);
    auto* const check = new QPushButton(tr("Check"));
    auto* const restore = new QPushButton(tr("Restore…"));
    auto& row = m_group.addRow(name, settingsButtons(name, {check, restore}, m_theme));
    connect(check, &QPushButton::clicked, this, [this, index] {
        if (const auto& item = m_reader.items()[index]; item.isRead()) {
            m_reader.check(std::filesystem::path(item.file.file), list());
        }
    });
    connect(restore, &QPushButton::clicked, this,
            [this, path = file.file] { m_operations.import(path); });
    m_rows.push_back({file.file, &row, check, restore});
}

void BackupHistoryRows::follow() {
    const auto& items = m_reader.items();
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const auto& item = items[i];
        const auto size = toQString(base::sizeText(item.file.bytes));
        m_rows[i].row->setNote(
            item.summary
                ? tr("%1, %2. Checked: it is whole.").arg(contentsText(*item.summary), size)
            : item.isRead() ? size
                            : tr("%1. Checking…").arg(size));
        m_rows[i].row->setRefusal(item.refusal);
        const auto name = nameOf(item, m_workspace.dates);
        m_rows[i].row->setName(name);
        for (auto* const button : {m_rows[i].check, m_rows[i].restore}) {
            button->setAccessibleDescription(name);
        }
        m_work.setFree(*m_rows[i].restore, m_operations.mayImport() && item.refusal.isEmpty());
    }
    followLast();
}

void BackupHistoryRows::followLast() {
    if (m_lastRow) {
        m_lastRow->setName(emptyText());
    }
}

} // namespace korvex::ui
