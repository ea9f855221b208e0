#include "cli/commands/DesktopApp.h"

#include "base/EnvironmentVariable.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace korvex::cli {

namespace {

/// A program with windows, and what people call it.
struct Program {
    const char* file;
    std::string name;
    const char* verb;
};

std::string become(const Program& program, const std::vector<std::string>& arguments) {
    if (!base::environmentVariable("DISPLAY") && !base::environmentVariable("WAYLAND_DISPLAY")) {
        return "There is no display for the " + program.name + " here.";
    }
    std::string name = program.file;
    auto copies = arguments;
    std::vector<char*> vector{name.data()};
    for (auto& argument : copies) {
        vector.push_back(argument.data());
    }
    vector.push_back(nullptr);

    std::error_code failed;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", failed);
    if (!failed) {
        ::execv((self.parent_path() / program.file).c_str(), vector.data());
    }
    ::execvp(program.file, vector.data());
    const auto error = errno;
    const auto subject = "The " + program.name + " (" + program.file + ") ";
    if (error == ENOENT) {
        return subject + program.verb + " not installed.";
    }
    return subject + "could not be started: " + std::strerror(error) + ".";
}

} // namespace

std::string becomeDesktopApp(const std::vector<std::string>& arguments) {
    return become({.file = "korvex-desktop", .name = "desktop app", .verb = "is"}, arguments);
}

std::string becomeWidgets(const std::vector<std::string>& arguments) {
    return become({.file = "korvex-widget", .name = "widgets", .verb = "are"}, arguments);
}

} // namespace korvex::cli
