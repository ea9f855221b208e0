#pragma once

#include "app/Launch.h"
#include "base/FileDescriptor.h"
#include "base/RunLoop.h"
#include "base/Signal.h"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <utility>

namespace korvex::platform::system {

/// One desktop app per data folder: the first one has the place, a later one hands over what it was
/// started for, and ends. It needs no bus, and costs a start next to nothing. Main thread.
class SingleInstance final {
public:
    explicit SingleInstance(const std::filesystem::path& dataDirectory);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Whether a running app of this folder has taken the launch. If not, this one has the place
    /// from now on, and later launches wait here until they are listened to.
    bool handOver(const app::Launch& launch);
    /// Tells of the later launches, also those that wait already.
    void listen(base::RunLoop& runLoop);
    /// Later starts are not told any more: each is a first one.
    void close();

    base::Signal<const app::Launch&>& launched() { return m_launched; }

private:
    bool send(const std::string& message) const;
    void takePlace();
    void takeLaunches();
    /// The file that has the name now, whoever made it.
    std::pair<dev_t, ino_t> fileThere() const;

    std::filesystem::path m_file;
    /// The one that this object listens at.
    std::pair<dev_t, ino_t> m_own;
    base::FileDescriptor m_socket;
    /// Null until it listens.
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    base::Signal<const app::Launch&> m_launched;
};

} // namespace korvex::platform::system
