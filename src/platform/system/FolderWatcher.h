#pragma once

#include "base/FileDescriptor.h"
#include "base/RunLoop.h"
#include "base/Signal.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace korvex::platform::system {

/// Notices that one of some files in a folder may have been written, made, replaced or removed. The
/// folder may be missing, and come and go; that one of those above it is renamed is not noticed. It
/// costs nothing while nothing happens, so a file system that tells nobody of changes, such as a
/// network share, is not looked at. Main thread.
class FolderWatcher final {
public:
    FolderWatcher(base::RunLoop& runLoop, std::filesystem::path folder,
                  std::vector<std::string> names);

    base::Signal<>& changed() { return m_changed; }

private:
    void watchNearest();
    void takeEvents();

    std::filesystem::path m_folder;
    std::vector<std::string> m_names;
    base::FileDescriptor m_events;
    /// The folder, or which one above it is there.
    std::filesystem::path m_watched;
    int m_number = -1;
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    base::Signal<> m_changed;
};

} // namespace korvex::platform::system
