#include "ui/settings/BackupHistoryRows.h"

#include "base/ByteSize.h"
#include "storage/FolderBookmark.h"
#include "ui/kit/words/Text.h"
#include "ui/settings/BackupOperations.h"
#include "ui/settings/BackupWords.h"
#include "ui/settings/SettingsGroup.h"
#include "ui/settings/WorkRow.h"

#include <QPushButton>

namespace korvex::ui {

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
        if (!m_workspace.automaticBackups.isRunning() && m_group.isVisible()) {
            read();
        }
    });
    showAll();
}

void BackupHistoryRows::read() {
    const auto& preferences = m_workspace.preferences;
    if (m_workspace.automaticBackups.obstacle()) {
        return; // those in the chosen folder are another store's
    }
    m_reader.read([bytes = preferences.automaticBackupBookmark(),
                   installation = preferences.automaticBackupID()] {
        const auto bookmark = bytes ? storage::FolderBookmark::ofBytes(*bytes) : std::nullopt;
        return bookmark ? storage::automaticBackups(*bookmark, installation)
                        : std::vector<storage::ListedBackup>();
    });
}

void BackupHistoryRows::showAll() {
    m_group.clear();
    m_rows.clear();
    for (std::size_t i = 0; i < m_reader.items().size(); ++i) {
        addRow(i);
    }
    if (m_rows.empty()) {
        const auto isListed = m_reader.refusal().isEmpty();
        m_group.addRow(isListed ? tr("No automatic backups yet.") : QString())
            .setRefusal(m_reader.refusal());
    }
    follow();
}

void BackupHistoryRows::addRow(std::size_t index) {
    const auto& file = m_reader.items()[index].file;
    const auto name = momentText(file.modifiedAt, m_workspace.dates);
    auto* const check = new QPushButton(tr("Check"));
    auto* const restore = new QPushButton(tr("Restore…"));
    auto& row = m_group.addRow(name, settingsButtons(name, {check, restore}, m_theme));
    for (auto* const button : {check, restore}) {
        button->setAccessibleDescription(name);
    }
    connect(check, &QPushButton::clicked, this, [this, index] {
        if (m_reader.items()[index].isRead()) {
            m_reader.check(index);
        }
    });
    connect(restore, &QPushButton::clicked, this,
            [this, path = file.file] { m_operations.import(path); });
    m_rows.push_back({&row, restore});
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
        if (item.summary) { // a copy's file may be younger than what it holds
            m_rows[i].row->setName(momentText(item.summary->exportedAt, m_workspace.dates));
        }
        m_work.setFree(*m_rows[i].restore, !m_operations.isUnderWay() && item.refusal.isEmpty());
    }
}

} // namespace korvex::ui
