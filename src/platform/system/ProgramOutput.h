#pragma once

#include "base/FileDescriptor.h"
#include "base/RunLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::platform::system {

/// What one of the system's programs says, without waiting for it. Main thread; the run loop must
/// outlive it.
class ProgramOutput final {
public:
    /// Called once, never from within the constructor: with an empty text where the program is not
    /// installed or says more than a few lines, and with nothing where it takes too long.
    using Take = std::function<void(const std::optional<std::string>& said)>;

    /// The program is looked for where commands are. It is left to itself when this is destroyed.
    ProgramOutput(base::RunLoop& runLoop, const std::string& program,
                  const std::vector<std::string>& arguments, Take take);

private:
    void read();
    void finish(std::optional<std::string> said);

    Take m_take;
    std::string m_said;
    base::FileDescriptor m_output;
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    std::unique_ptr<base::RunLoop::Timer> m_limit;
};

} // namespace korvex::platform::system
