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

void BackupReader::forget() {
    m_task.reset();
    m_isListed = false;
    m_list = nullptr;
    m_first.reset();
    m_hasForeign = false;
    m_refusal.clear();
    take({});
}

void BackupReader::check(const std::filesystem::path& file, List list) {
    for (auto& item : m_items) {
        if (item.file.file == file) {
            item = {.file = item.file};
        }
    }
    m_first = file;
    Q_EMIT changed();
    read(std::move(list));
}

void BackupReader::goOn() {
    if (m_task) {
        return; // it goes on when that has ended
    }
    if (m_list) {
        startListing();
    } else if (const auto* const item = next()) {
        startReading(item->file);
    }
}

const BackupReader::Item* BackupReader::next() {
    const auto first = std::exchange(m_first, std::nullopt);
    auto found = std::find_if(m_items.begin(), m_items.end(), [&](const Item& item) {
        return item.file.file == first && !item.isRead();
    });
    if (found == m_items.end()) {
        found = std::find_if(m_items.begin(), m_items.end(),
                             [](const Item& item) { return !item.isRead(); });
    }
    return found == m_items.end() ? nullptr : &*found;
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
            showListed(std::move(list), refused.join(QLatin1Char('\n')));
            goOn();
        });
}

void BackupReader::showListed(storage::BackupList list, const QString& refusal) {
    const auto isSame = m_isListed && refusal == m_refusal && list.hasForeign == m_hasForeign &&
                        areListed(list.backups);
    m_isListed = true;
    m_refusal = refusal;
    m_hasForeign = list.hasForeign;
    if (!isSame) {
        take(std::move(list.backups));
    }
}

bool BackupReader::areListed(const std::vector<ListedBackup>& files) const {
    return std::equal(files.begin(), files.end(), m_items.begin(), m_items.end(),
                      [](const ListedBackup& file, const Item& item) { return file == item.file; });
}

void BackupReader::take(std::vector<ListedBackup> files) {
    std::vector<Item> items;
    for (auto& file : files) {
        const auto* const known = find(file);
        items.push_back(known ? *known : Item{.file = std::move(file)});
    }
    m_items = std::move(items);
    Q_EMIT listed();
}

void BackupReader::startReading(const ListedBackup& listed) {
    m_task = std::make_unique<storage::BackgroundTask>(
        m_workspace.threads, m_workspace.runLoop,
        [file = listed, &log = m_workspace.log](storage::Work& work) {
            return storage::checkBackup(file, log, work);
        },
        [this, file = listed](std::future<storage::BackupSummary> outcome) {
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
