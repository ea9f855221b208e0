#include "app/UserFolders.h"

#include "base/EnvironmentVariable.h"

#include <pwd.h>
#include <unistd.h>

namespace korvex::app {

namespace {

std::filesystem::path home() {
    if (const auto home = base::environmentVariable("HOME")) {
        return *home;
    }
    const auto* user = ::getpwuid(::getuid());
    return user ? user->pw_dir : "/";
}

} // namespace

std::filesystem::path userFolder(const char* variable, const std::filesystem::path& underHome) {
    if (const auto value = base::environmentVariable(variable); value && value->front() == '/') {
        return *value;
    }
    return folderUnderHome(underHome);
}

std::filesystem::path folderUnderHome(const std::filesystem::path& underHome) {
    return home() / underHome;
}

} // namespace korvex::app
