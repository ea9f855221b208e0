#include "app/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace korvex::app {

namespace {

std::filesystem::path home() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    const auto* user = ::getpwuid(::getuid());
    return user != nullptr ? user->pw_dir : "/";
}

} // namespace

std::filesystem::path userFolder(const char* variable, const std::filesystem::path& underHome) {
    if (const char* value = std::getenv(variable); value != nullptr && *value == '/') {
        return value;
    }
    return home() / underHome;
}

} // namespace korvex::app
