#include "platform/qt/FileWatcher.h"

#include "base/FileReplacement.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QTest>

#include <filesystem>
#include <fstream>
#include <functional>

namespace korvex::platform::qt {
namespace {

TEST(FileWatcher, HoweverAFileChangesItIsNoticed) {
    namespace fs = std::filesystem;
    const tests::TemporaryFolder temporary;
    const auto folder = temporary / "config" / "korvex";
    const auto file = folder / "settings.json";
    FileWatcher watcher(file);
    int changes = 0;
    const auto subscription = watcher.changed().connect([&] { ++changes; });
    const auto write = [&] { std::ofstream(file, std::ios::app) << "more"; };
    const auto replace = [&] { EXPECT_FALSE(base::replaceFile(file, "new")); };
    const auto link = [&] {
        fs::rename(file, folder / "dotfiles" / "settings.json");
        fs::create_symlink("dotfiles/settings.json", file);
    };
    for (const std::function<void()>& change : std::initializer_list<std::function<void()>>{
             [&] { fs::create_directories(folder / "dotfiles"); }, replace, write, replace, write,
             link, write, replace, write, [&] { fs::remove(file); }, replace,
             [&] { fs::remove_all(folder.parent_path()); },
             [&] { fs::create_directories(folder / "dotfiles"); }, replace, write}) {
        const auto before = changes;
        change();
        EXPECT_TRUE(QTest::qWaitFor([&] { return changes > before; }));
    }
}

} // namespace
} // namespace korvex::platform::qt
