#include "ui/settings/BackupReader.h"

#include "ui/kit/words/Refusal.h"

#include <algorithm>
#include <utility>

namespace korvex::ui {

using storage::ListedBackup;

BackupReader::BackupReader(const Workspace& workspace, QObject* parent)
    : QObject(parent), m_workspace(workspace) {}

void BackupReader::read(List list) {
    m_list = std::move(list);
    goOn();
}

void BackupReader::check(std::size_t index) {
    auto& item = m_items.at(index);
    item = {.file = item.file};
    m_first = index;
    Q_EMIT changed();
    goOn();
}

void BackupReader::goOn() {
    if (m_task) {
        return; // it goes on when that has ended
    }
    if (m_list) {
        startListing();
        return;
    }
    const auto next = std::find_if(m_items.begin(), m_items.end(),
                                   [](const Item& item) { return !item.isRead(); });
    const auto first = std::exchange(m_first, std::nullopt);
    if (first || next != m_items.end()) {
        startReading(first.value_or(static_cast<std::size_t>(next - m_items.begin())));
    }
}

void BackupReader::startListing() {
    m_task = std::make_unique<storage::BackgroundTask>(
        m_workspace.threads, m_workspace.runLoop,
        [list = std::exchange(m_list, nullptr)](storage::Work& work) { return list(work); },
        [this](std::future<storage::BackupList> outcome) {
            m_task.reset();
            storage::BackupList list;
            QStringList refused;
            if (const auto all = ui::refusal([&] { list = outcome.get(); })) {
                refused.append(*all);
            }
            for (const auto& each : list.unreadable) {
                refused.append(translated(each));
            }
            const auto isOther =
                refused.join(QLatin1Char('\n')) != m_refusal || !areListed(list.backups);
            m_refusal = refused.join(QLatin1Char('\n'));
            if (isOther) {
                take(std::move(list.backups));
            }
            goOn();
        });
}

bool BackupReader::areListed(const std::vector<ListedBackup>& files) const {
    return std::equal(files.begin(), files.end(), m_items.begin(), m_items.end(),
                      [](const ListedBackup& file, const Item& item) { return file == item.file; });
}

void BackupReader::take(std::vector<ListedBackup> files) {
    m_first.reset();
    std::vector<Item> items;
    for (auto& file : files) {
        const auto* const known = find(file);
        items.push_back(known ? *known : Item{.file = std::move(file)});
    }
    m_items = std::move(items);
    Q_EMIT listed();
}

void BackupReader::startReading(std::size_t index) {
    const auto file = m_items.at(index).file;
    m_task = std::make_unique<storage::BackgroundTask>(
        m_workspace.threads, m_workspace.runLoop,
        [file, &log = m_workspace.log](storage::Work& work) {
            return storage::checkBackup(file, log, work);
        },
        [this, file](std::future<storage::BackupSummary> outcome) {
            m_task.reset();
            std::optional<storage::BackupSummary> summary;
            const auto refused = ui::refusal([&] { summary = outcome.get(); });
            if (auto* const item = find(file)) {
                item->summary = summary;
                item->refusal = refused.value_or(QString());
            }
            Q_EMIT changed();
            goOn();
        });
}

BackupReader::Item* BackupReader::find(const ListedBackup& file) {
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [&](const Item& item) { return item.file == file; });
    return found == m_items.end() ? nullptr : &*found;
}

} // namespace korvex::ui
