#include "app/AutostartFile.h"

#include "base/FileReplacement.h"
#include "base/SmallFile.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace korvex::app {

namespace {

constexpr std::size_t kMaximumBytes = 64 * 1024;
constexpr std::string_view kGroup = "[Desktop Entry]";
constexpr std::string_view kOff = "Hidden=true";

/// As a command line in a desktop file has it: quoted for the command, and that once more for the
/// file; a percent sign stands for more than itself.
std::string argumentText(std::string_view argument) {
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

std::string commandLine(const std::vector<std::string>& command) {
    std::string line;
    for (const auto& word : command) {
        line += (line.empty() ? "Exec=" : " ") + argumentText(word);
    }
    return line;
}

std::vector<std::string_view> linesOf(std::string_view contents) {
    std::vector<std::string_view> lines;
    while (!contents.empty()) {
        const auto end = std::min(contents.find('\n'), contents.size());
        lines.push_back(contents.substr(0, end));
        contents.remove_prefix(std::min(end + 1, contents.size()));
    }
    return lines;
}

/// Without the blanks that may stand around its equals sign.
std::string withoutBlanks(std::string_view line) {
    std::string result(line);
    std::erase_if(result, [](char each) { return each == ' ' || each == '\t' || each == '\r'; });
    return result;
}

/// The marks that desktops' own settings switch such a file off by.
bool isSwitch(std::string_view line) {
    const auto plain = withoutBlanks(line);
    return plain.starts_with("Hidden=") || plain.starts_with("X-GNOME-Autostart-enabled=");
}

bool isSwitchedOff(std::string_view line) {
    const auto plain = withoutBlanks(line);
    return plain == kOff || plain == "X-GNOME-Autostart-enabled=false";
}

/// Whether the line starts a program that is not there, as one of a checkout that was deleted. Of
/// what we do not write so nothing is known.
bool leadsNowhere(std::string_view line) {
    constexpr std::string_view kStart = "Exec=\"";
    if (!line.starts_with(kStart)) {
        return false;
    }
    line.remove_prefix(kStart.size());
    const auto end = line.find('"');
    const std::string program(line.substr(0, end));
    return end != std::string_view::npos && program.starts_with('/') &&
           program.find_first_of("\\%") == std::string::npos &&
           ::access(program.c_str(), X_OK) != 0;
}

/// The line of the file that does; empty where there is none.
std::string_view lostCommand(std::string_view contents) {
    const auto lines = linesOf(contents.substr(0, contents.find("\n[", 1)));
    const auto found = std::find_if(lines.begin(), lines.end(), leadsNowhere);
    return found != lines.end() ? *found : std::string_view();
}

/// The same with other marks: none where `mark` is empty.
std::string marked(std::string_view contents, std::string_view mark) {
    std::string result;
    for (const auto line : linesOf(contents)) {
        if (isSwitch(line)) {
            continue;
        }
        result.append(line) += '\n';
        if (withoutBlanks(line) == withoutBlanks(kGroup) && !mark.empty()) {
            result.append(mark) += '\n';
        }
    }
    return result;
}

} // namespace

AutostartFile::AutostartFile(std::filesystem::path folder, Entry entry)
    : m_file(std::move(folder)), m_entry(std::move(entry)) {
    m_file /= m_entry.id + ".desktop";
}

bool AutostartFile::isOn() const {
    const auto contents = base::readSmallFile(m_file, kMaximumBytes);
    if (!contents) {
        return false;
    }
    const auto lines = linesOf(*contents);
    return lostCommand(*contents).empty() &&
           std::none_of(lines.begin(), lines.end(), isSwitchedOff);
}

std::error_code AutostartFile::turnOn() const {
    if (isOn()) {
        return {};
    }
    if (auto contents = base::readSmallFile(m_file, kMaximumBytes)) {
        if (const auto lost = lostCommand(*contents); !lost.empty()) {
            const auto start = static_cast<std::size_t>(lost.data() - contents->data());
            contents->replace(start, lost.size(), commandLine(m_entry.command));
        }
        return base::replaceFile(m_file, marked(*contents, {}));
    }
    if (const auto error = whyUnread()) {
        return error;
    }
    if (const auto error = base::makeFolders(m_file.parent_path(), 0777)) {
        return error;
    }
    return base::replaceFile(m_file, ownContents());
}

std::error_code AutostartFile::turnOff() const {
    const auto contents = base::readSmallFile(m_file, kMaximumBytes);
    if (!contents) {
        return whyUnread();
    }
    if (*contents != ownContents()) {
        return base::replaceFile(m_file, marked(*contents, kOff));
    }
    std::error_code error;
    std::filesystem::remove(m_file, error);
    return error;
}

std::error_code AutostartFile::whyUnread() const {
    std::error_code error;
    const auto size = std::filesystem::file_size(m_file, error);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
        return {};
    }
    if (error) {
        return error;
    }
    return std::make_error_code(size > kMaximumBytes ? std::errc::file_too_large
                                                     : std::errc::permission_denied);
}

std::string AutostartFile::ownContents() const {
    return std::string(kGroup) + "\nType=Application\nName=" + m_entry.name + '\n' +
           commandLine(m_entry.command) + "\nIcon=korvex\nTerminal=false\nNoDisplay=true\n";
}

} // namespace korvex::app
