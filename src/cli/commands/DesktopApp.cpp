#include "cli/commands/DesktopApp.h"

#include "base/EnvironmentVariable.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace korvex::cli {

namespace {

constexpr const char* kProgram = "korvex-desktop";

} // namespace

std::string becomeDesktopApp(const std::vector<std::string>& arguments) {
    if (!base::environmentVariable("DISPLAY") && !base::environmentVariable("WAYLAND_DISPLAY")) {
        return "There is no display for the desktop app here.";
    }
    std::string name = kProgram;
    auto copies = arguments;
    std::vector<char*> vector{name.data()};
    for (auto& argument : copies) {
        vector.push_back(argument.data());
    }
    vector.push_back(nullptr);

    std::error_code failed;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", failed);
    if (!failed) {
        ::execv((self.parent_path() / kProgram).c_str(), vector.data());
    }
    ::execvp(kProgram, vector.data());
    if (errno == ENOENT) {
        return "The desktop app (korvex-desktop) is not installed.";
    }
    return "The desktop app (korvex-desktop) could not be started: " +
           std::string(std::strerror(errno)) + ".";
}

} // namespace korvex::cli
