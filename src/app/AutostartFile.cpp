#include "app/AutostartFile.h"

#include "base/FileReplacement.h"
#include "base/SmallFile.h"

#include <sstream>
#include <string_view>
#include <utility>

namespace korvex::app {

namespace {

constexpr std::size_t kMaximumBytes = 64 * 1024;

/// As a command line in a desktop file has it: quoted for the command, and that once more for the
/// file; a percent sign stands for more than itself.
std::string commandWord(std::string_view argument) {
    std::string result = "\"";
    for (const auto character : argument) {
        if (character == '"' || character == '`' || character == '$') {
            result += "\\\\";
        } else if (character == '\\') {
            result += "\\\\\\";
        } else if (character == '%') {
            result += '%';
        }
        result += character;
    }
    return result + '"';
}

} // namespace

AutostartFile::AutostartFile(std::filesystem::path folder, Entry entry)
    : m_file(std::move(folder) / (entry.id + ".desktop")), m_entry(std::move(entry)) {}

bool AutostartFile::isOn() const {
    const auto contents = base::readSmallFile(m_file, kMaximumBytes);
    if (!contents) {
        return false;
    }
    std::istringstream lines(*contents);
    for (std::string line; std::getline(lines, line);) {
        if (line == "Hidden=true" || line == "X-GNOME-Autostart-enabled=false") {
            return false;
        }
    }
    return true;
}

std::error_code AutostartFile::turnOn() const {
    if (const auto error = base::makeFolders(m_file.parent_path(), 0777)) {
        return error;
    }
    std::string command;
    for (const auto& word : m_entry.command) {
        command += (command.empty() ? "" : " ") + commandWord(word);
    }
    return base::replaceFile(m_file, "[Desktop Entry]\nType=Application\nName=" + m_entry.name +
                                         "\nExec=" + command +
                                         "\nIcon=korvex\nTerminal=false\nNoDisplay=true\n");
}

std::error_code AutostartFile::turnOff() const {
    std::error_code error;
    std::filesystem::remove(m_file, error);
    return error;
}

} // namespace korvex::app
