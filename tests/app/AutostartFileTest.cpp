#include "app/AutostartFile.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace korvex::app {
namespace {

TEST(AutostartFile, IsThereAsLongAsItIsWantedAndFollowsTheUser) {
    const tests::TemporaryFolder folder;
    const auto file = folder / "autostart" / "dev.korvex.Test.desktop";
    const AutostartFile autostart(folder / "autostart",
                                  {.id = "dev.korvex.Test",
                                   .name = "Korvex Test",
                                   .command = {"/opt/my \"$apps\" 100%\\/korvex", "--at-login"}});
    EXPECT_FALSE(autostart.isOn());
    EXPECT_EQ(autostart.turnOff(), std::error_code());
    ASSERT_EQ(autostart.turnOn(), std::error_code());
    ASSERT_EQ(autostart.turnOn(), std::error_code());
    EXPECT_TRUE(autostart.isOn());
    std::ifstream stream(file);
    const std::string contents(std::istreambuf_iterator<char>(stream), {});
    // Two backslashes in the file are one in its value, which quotes for the command.
    EXPECT_NE(contents.find(R"(Exec="/opt/my \\"\\$apps\\" 100%%\\\\/korvex" "--at-login")"),
              std::string::npos)
        << contents;
    for (const auto* const line : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
        ASSERT_EQ(autostart.turnOn(), std::error_code());
        std::ofstream(file, std::ios::app) << line << "\n";
        EXPECT_FALSE(autostart.isOn()) << line;
    }
    ASSERT_EQ(autostart.turnOn(), std::error_code());
    EXPECT_TRUE(autostart.isOn());
    EXPECT_EQ(autostart.turnOff(), std::error_code());
    EXPECT_FALSE(std::filesystem::exists(file));
}

} // namespace
} // namespace korvex::app
