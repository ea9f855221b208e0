#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace korvex::app {

/// Whether desktops start one of our programs when the user logs in: a file of the user's own in
/// the folder that they look into. It is there for as long as that is wanted. What the user has
/// written into it stays, but for a program that is gone: it is only marked as switched off, and as
/// switched on again. One that cannot be read is not touched.
class AutostartFile {
public:
    /// What the desktop is told of the program.
    struct Entry {
        /// Of the file, without its ending.
        std::string id;
        /// In English.
        std::string name;
        /// With its path, followed by what it is started with.
        std::vector<std::string> command;
    };
    /// `folder` is "autostart" in the folder for settings.
    AutostartFile(std::filesystem::path folder, Entry entry);

    /// As it is now: others may remove the file, or its program, or mark the file as hidden.
    bool isOn() const;
    [[nodiscard]] std::error_code turnOn() const;
    [[nodiscard]] std::error_code turnOff() const;

private:
    /// As it is without the user's doing.
    std::string ownContents() const;
    /// Why there is something that cannot be read in the file's place, if there is.
    std::error_code whyUnread() const;

    std::filesystem::path m_file;
    Entry m_entry;
};

} // namespace korvex::app
