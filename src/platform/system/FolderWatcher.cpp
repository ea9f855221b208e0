#include "platform/system/FolderWatcher.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace korvex::platform::system {

namespace {

constexpr std::uint32_t kFolderGoes = IN_DELETE_SELF | IN_MOVE_SELF;
/// Not that a file was closed, which it may have been opened for writing and never written: who
/// looks at a store does that.
constexpr std::uint32_t kFileChanges =
    IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
/// Above the folder only what is made on the way to it counts.
constexpr std::uint32_t kFolderComes = IN_CREATE | IN_MOVED_TO | IN_ONLYDIR;

} // namespace

FolderWatcher::FolderWatcher(base::RunLoop& runLoop, std::filesystem::path folder,
                             std::vector<std::string> names)
    : m_folder(std::move(folder)),
      m_names(std::move(names)),
      m_events(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (m_events.isOpen()) {
        watchNearest();
        m_watch = runLoop.watch(m_events.get(), base::RunLoop::Interest::reading,
                                [this] { takeEvents(); });
    }
}

void FolderWatcher::watchNearest() {
    if (m_number >= 0) {
        ::inotify_rm_watch(m_events.get(), std::exchange(m_number, -1));
    }
    // What is made while it is looked for is seen from above, so look again from there.
    for (auto folder = m_folder;; folder = folder.parent_path()) {
        const auto wanted = (folder == m_folder ? kFileChanges : kFolderComes) | kFolderGoes;
        m_number = ::inotify_add_watch(m_events.get(), folder.c_str(), wanted);
        m_watched = folder;
        if (m_number >= 0 || folder == folder.parent_path()) {
            break;
        }
    }
    std::error_code ignored;
    if (m_watched != m_folder && std::filesystem::is_directory(m_folder, ignored)) {
        const auto number =
            ::inotify_add_watch(m_events.get(), m_folder.c_str(), kFileChanges | kFolderGoes);
        if (number >= 0) {
            ::inotify_rm_watch(m_events.get(), m_number);
            m_number = number;
            m_watched = m_folder;
        }
    }
}

void FolderWatcher::takeEvents() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    bool isOurs = false;
    bool isElsewhere = false;
    for (ssize_t size = 0; (size = ::read(m_events.get(), buffer.data(), buffer.size())) > 0;) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const std::string name = event.len > 0 ? buffer.data() + at + sizeof event : "";
            at += sizeof event + event.len;
            const auto isAny = (event.mask & IN_Q_OVERFLOW) != 0;
            if (!isAny && event.wd != m_number) {
                continue; // of a watch that was given up
            }
            if (!isAny &&
                ((event.mask & (kFolderGoes | IN_IGNORED)) != 0 || m_watched != m_folder)) {
                isElsewhere = true;
            } else if (isAny || std::find(m_names.begin(), m_names.end(), name) != m_names.end()) {
                isOurs = true;
            }
        }
    }
    if (isElsewhere) {
        const auto before = m_watched;
        watchNearest();
        isOurs = isOurs || m_watched == m_folder || before == m_folder;
    }
    if (isOurs) {
        m_changed.emit();
    }
}

} // namespace korvex::platform::system
