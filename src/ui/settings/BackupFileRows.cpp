#include "ui/settings/BackupFileRows.h"

#include "ui/kit/fields/WallClock.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/settings/BackupOperations.h"
#include "ui/settings/BackupWords.h"
#include "ui/settings/SettingsGroup.h"
#include "ui/settings/WorkRow.h"

#include <QPushButton>

#include <algorithm>
#include <utility>

namespace korvex::ui {

BackupFileRows::BackupFileRows(SettingsGroup& group, BackupOperations& operations,
                               const Workspace& workspace, const Theme& theme, QObject* parent)
    : QObject(parent),
      m_operations(operations),
      m_workspace(workspace),
      m_places(workspace),
      m_kept(workspace, this),
      m_keptFile(std::make_shared<storage::KnownRecoveredFile>()) {
    addRows(group, theme);
    connectOperations(theme);
    connect(&m_kept, &BackupReader::listed, this, &BackupFileRows::showKept);
    connect(&m_kept, &BackupReader::changed, this, &BackupFileRows::showKept);
    m_dates = workspace.dates.didRenew().connect([this] { showKept(); });
    m_replacements = workspace.context.didChange().connect([this](const store::ChangeSet& changes) {
        // Another program's: after one of this window all is read anyway, as it is when it comes
        // into sight.
        if (changes.isReplacement && !m_operations.isUnderWay() && m_export->isVisible()) {
            readKept();
        }
    });
    follow();
    showKept();
}

void BackupFileRows::addRows(SettingsGroup& group, const Theme& theme) {
    m_export = new QPushButton(tr("Export…"));
    m_import = new QPushButton(tr("Import…"));
    m_takeBack = new QPushButton(tr("Take back…"));
    group.addRow(tr("Export to a file"), m_export)
        .setNote(tr("Backup files contain private content. Keep them in a safe location."));
    auto& imported = group.addRow(tr("Import from a file"), m_import);
    imported.setNote(
        storage::BackupService::isCloudBacked(m_workspace.context.container())
            ? tr("Full replacement is unavailable with iCloud sync. Export is available.")
            : tr("Backups include boards, todos and formatted text. App preferences are kept "
                 "separately."));
    m_takeBackRow = &group.addRow(tr("Take back the last replacement"), m_takeBack);
    m_work = new WorkRow(theme, &group);
    group.add(m_work);
    m_answer = &group.addRow({});
    connect(m_export, &QPushButton::clicked, this, &BackupFileRows::chooseExport);
    connect(m_import, &QPushButton::clicked, this, &BackupFileRows::chooseImport);
    connect(m_takeBack, &QPushButton::clicked, this, &BackupFileRows::takeBack);
    connect(m_work, &WorkRow::cancelled, &m_operations, [this] { m_operations.cancel(); });
}

void BackupFileRows::connectOperations(const Theme& theme) {
    connect(&m_operations, &BackupOperations::changed, this, &BackupFileRows::follow);
    connect(&m_operations, &BackupOperations::ended, this, &BackupFileRows::readKept);
    connect(&m_operations, &BackupOperations::asked, this,
            [this, &theme](const QString& question, const QString& action) {
                auto* const sheet =
                    new ConfirmationSheet(question, action, theme, m_export->window());
                connect(sheet, &ConfirmationSheet::confirmed, &m_operations,
                        &BackupOperations::confirm);
                connect(sheet, &QObject::destroyed, &m_operations, &BackupOperations::giveUp);
                sheet->ask();
            });
}

void BackupFileRows::chooseExport() {
    if (m_operations.mayBegin()) {
        const auto today =
            WallClock::dateTimeOf(m_workspace.now(), m_workspace.dates.formats().calendar())
                .date()
                .toString(Qt::ISODate);
        m_places.fileToWrite(
            *m_export, QStringLiteral("Korvex %1").arg(today),
            [this](const std::filesystem::path& file) { m_operations.exportTo(file); });
    }
}

void BackupFileRows::chooseImport() {
    if (m_operations.mayBegin()) {
        m_places.fileToRead(
            *m_import, [this](const std::filesystem::path& file) { m_operations.import(file); });
    }
}

void BackupFileRows::takeBack() {
    if (const auto& kept = m_kept.items(); !kept.empty() && kept.front().summary) {
        m_operations.takeBack(*kept.front().summary);
    }
}

void BackupFileRows::readKept() {
    m_kept.read([known = m_keptFile, file = m_operations.recoveryFile(),
                 store = m_workspace.context.container().configuration().file,
                 &log = m_workspace.log](storage::Work& work) {
        const auto kept = known->look(*storage::openForReading(store, log), file, work);
        return kept ? storage::BackupList{.backups = {*kept}} : storage::BackupList();
    });
}

void BackupFileRows::follow() {
    const auto isFree = !m_operations.isUnderWay();
    if (!isFree) {
        m_work->show(m_operations.doing(), m_operations.progress());
    }
    m_work->setFree(*m_export, isFree);
    m_work->setFree(*m_import, m_operations.mayImport());
    m_work->setFree(*m_takeBack, m_import->isEnabled() && !m_kept.items().empty() &&
                                     m_kept.items().front().summary);
    if (isFree) {
        m_work->end();
    }
    const auto& answer = m_operations.answer();
    const auto isAnswered = !answer.done.isEmpty() || !answer.refusal.isEmpty();
    m_answer->setVisible(isAnswered); // what is not in sight is not read out
    m_answer->setAnswer(answer.done);
    m_answer->setRefusal(answer.refusal);
    QWidget* const now = !isFree ? static_cast<QWidget*>(m_work) : isAnswered ? m_answer : nullptr;
    if (std::exchange(m_told, now) != now && now) {
        Q_EMIT told(now);
    }
}

void BackupFileRows::showKept() {
    const auto& items = m_kept.items();
    m_takeBackRow->setVisible(!items.empty() || !m_kept.refusal().isEmpty());
    const auto kept =
        items.empty() ? BackupReader::Item{.file = {}, .refusal = m_kept.refusal()} : items.front();
    m_takeBackRow->setNote(kept.summary
                               ? tr("Brings back %1, as they were on %2.")
                                     .arg(contentsText(*kept.summary),
                                          momentText(kept.summary->exportedAt, m_workspace.dates))
                           : kept.isRead() ? QString()
                                           : tr("Reading…"));
    m_takeBackRow->setRefusal(kept.refusal);
    follow();
}

} // namespace korvex::ui
