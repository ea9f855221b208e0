#include "app/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace korvex::app {

namespace {

std::filesystem::path home() {
    if (const auto* home = std::getenv("HOME"); home && *home != '\0') {
        return home;
    }
    const auto* user = ::getpwuid(::getuid());
    return user ? user->pw_dir : "/";
}

} // namespace

std::filesystem::path userFolder(const char* variable, const std::filesystem::path& underHome) {
    if (const auto* value = std::getenv(variable); value && *value == '/') {
        return value;
    }
    return home() / underHome;
}

} // namespace korvex::app
