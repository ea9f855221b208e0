#pragma once

#include "app/Launch.h"
#include "base/FileDescriptor.h"
#include "base/FileLock.h"
#include "base/RunLoop.h"
#include "base/Signal.h"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace korvex::platform::system {

/// One desktop app per data folder: the first one has the place, a later one hands over what it was
/// started for, and ends. It needs no bus, and costs a start next to nothing. Whose the place is
/// says a lock, which the system ends with the program: a socket that a killed one has left is
/// known by that. Main thread.
class SingleInstance final {
public:
    explicit SingleInstance(const std::filesystem::path& dataDirectory);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Whether a running app of this folder has taken the launch. Where there is none, false: this
    /// one has the place from now on, of several that start at the same moment too, and later
    /// launches wait here until they are listened to. False as well where one runs that does not
    /// answer; it keeps the place.
    bool handOver(const app::Launch& launch);
    /// Tells of the later launches, also those that wait already.
    void listen(base::RunLoop& runLoop);
    /// Later starts are not told any more: each is a first one.
    void close();

    base::Signal<const app::Launch&>& launched() { return m_launched; }

private:
    enum class Answer { taken, none, nobodyThere };
    Answer send(const std::string& message) const;
    /// False where somebody else has it.
    bool takePlace();
    void takeLaunches();
    /// Whether a program of this user is to be found there. In a folder that is everybody's another
    /// one's could stand in its place, and would have the launches.
    bool isOurs() const;
    /// The file that has the name now, whoever made it.
    std::pair<dev_t, ino_t> fileThere() const;

    std::filesystem::path m_file;
    /// Held by whoever has the place; absent where that is not this one.
    std::optional<base::FileLock> m_lock;
    /// The one that this object listens at.
    std::pair<dev_t, ino_t> m_own;
    base::FileDescriptor m_socket;
    /// Null until it listens.
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    base::Signal<const app::Launch&> m_launched;
};

} // namespace korvex::platform::system
