#pragma once

#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/system/FolderWatcher.h"

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace korvex::platform::system {

/// Where this program's own file is, or was when it was started.
std::filesystem::path ownProgram();

/// Starts the program of that name that stands beside this one: in a session of its own and without
/// our streams, so that it outlives us and keeps nobody waiting. False where there is none. It has
/// our environment, but for these variables.
bool startBeside(const std::string& name, const std::vector<std::string>& arguments = {},
                 const std::map<std::string, std::string>& environment = {});

/// The same for any program; what it says goes to `output`, where that is a descriptor.
bool startProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const std::map<std::string, std::string>& environment = {}, int output = -1);

/// Notices that another version of a program has taken the place of the one that runs. Main thread.
class ProgramWatcher final {
public:
    explicit ProgramWatcher(base::RunLoop& runLoop, std::filesystem::path program = ownProgram());

    /// Emitted once the new one is whole.
    base::Signal<>& replaced() { return m_replaced; }

private:
    struct Identity {
        dev_t device = 0;
        ino_t number = 0;
        bool operator==(const Identity&) const = default;
    };
    static Identity identityOf(const std::filesystem::path& program);
    void look();
    void lookAgainSoon();

    base::RunLoop& m_runLoop;
    std::filesystem::path m_program;
    Identity m_own;
    FolderWatcher m_folder;
    std::unique_ptr<base::RunLoop::Timer> m_pause;
    base::Subscription m_changes;
    base::Signal<> m_replaced;
};

} // namespace korvex::platform::system
