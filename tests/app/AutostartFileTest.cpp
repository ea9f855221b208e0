#include "app/AutostartFile.h"

#include "app/DesktopKind.h"
#include "base/SmallFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace korvex::app {
namespace {

class AutostartFileTest : public ::testing::Test {
protected:
    std::string contents() const { return base::readSmallFile(path, 10'000).value_or("none"); }
    void write(const std::string& text) const { std::ofstream(path) << text; }

    tests::TemporaryFolder folder;
    std::filesystem::path path = folder / "autostart" / "some.id.desktop";
    AutostartFile file{folder / "autostart",
                       {.id = "some.id",
                        .name = "Some",
                        .command = {"/opt/a \"b\" $c\\d 100%/some", "--background"}}};
};

TEST_F(AutostartFileTest, IsThereForAsLongAsItIsWanted) {
    EXPECT_FALSE(file.isOn());
    ASSERT_FALSE(file.turnOn());
    EXPECT_TRUE(file.isOn());
    EXPECT_EQ(contents(), R"([Desktop Entry]
Type=Application
Name=Some
Exec="/opt/a \\"b\\" \\$c\\\\d 100%%/some" "--background"
Icon=korvex
Terminal=false
NoDisplay=true
)");
    ASSERT_FALSE(file.turnOff());
    EXPECT_FALSE(std::filesystem::exists(path));
    ASSERT_FALSE(file.turnOff()) << "there is nothing to be done";
}

TEST_F(AutostartFileTest, WhatTheUserHasWrittenStays) {
    ASSERT_FALSE(file.turnOn());
    const std::string own = "[Desktop Entry]\n# mine\nExec=nice some\n\n[Other]\nKey=1\n";
    write(own);
    EXPECT_TRUE(file.isOn());
    ASSERT_FALSE(file.turnOn());
    EXPECT_EQ(contents(), own);
    ASSERT_FALSE(file.turnOff());
    EXPECT_FALSE(file.isOn());
    EXPECT_EQ(contents(),
              "[Desktop Entry]\nHidden=true\n# mine\nExec=nice some\n\n[Other]\nKey=1\n");
    ASSERT_FALSE(file.turnOn());
    EXPECT_EQ(contents(), own);
}

TEST_F(AutostartFileTest, OneThatLeadsToAProgramThatIsGoneIsOffAndLeadsToOursWhenItIsTurnedOn) {
    const AutostartFile there(
        folder / "autostart",
        {.id = "some.id", .name = "Some", .command = {"/bin/true", "--here"}});
    ASSERT_FALSE(there.turnOn());
    const auto fresh = contents();
    const std::string around = "[Desktop Entry]\n# mine\n";
    for (const auto* const elsewhere :
         {R"(Exec="/gone/bin/some" "--background")", R"(Exec="/etc/passwd")",
          "Exec=\"/gone/some\"\nHidden=true"}) {
        SCOPED_TRACE(elsewhere);
        write(around + elsewhere + "\n[Other]\nExec=\"/gone\"\n");
        EXPECT_FALSE(there.isOn());
        ASSERT_FALSE(there.turnOn());
        EXPECT_TRUE(there.isOn());
        EXPECT_EQ(contents(), around + "Exec=\"/bin/true\" \"--here\"\n[Other]\nExec=\"/gone\"\n");
    }
    // Written by the program itself when it stood elsewhere.
    const AutostartFile before(
        folder / "autostart",
        {.id = "some.id", .name = "Some", .command = {"/gone/a b/some", "-x"}});
    std::filesystem::remove(path);
    ASSERT_FALSE(before.turnOn());
    ASSERT_FALSE(there.isOn());
    ASSERT_FALSE(there.turnOn());
    EXPECT_EQ(contents(), fresh);
    // Of others it is not known what they lead to.
    for (const auto* const other : {"Exec=nice some", "Exec=\"some\"", "Exec=/gone/some",
                                    "Exec=\"/gone/\\\\$c/some\"", "Exec=\"/gone", "Exec="}) {
        write(std::string("[Desktop Entry]\n") + other + "\n");
        EXPECT_TRUE(there.isOn()) << other;
    }
}

TEST_F(AutostartFileTest, WhatCannotBeReadIsNotTouched) {
    ASSERT_FALSE(file.turnOn());
    const std::string much = "[Desktop Entry]\nHidden=true\n#" + std::string(70'000, 'x');
    write(much);
    EXPECT_EQ(file.turnOff(), std::errc::file_too_large);
    EXPECT_EQ(file.turnOn(), std::errc::file_too_large);
    EXPECT_EQ(std::filesystem::file_size(path), much.size());
}

TEST_F(AutostartFileTest, HeedsTheSwitchesOfDesktops) {
    ASSERT_FALSE(file.turnOn());
    for (const auto* const mark : {"Hidden = true", "X-GNOME-Autostart-enabled=false"}) {
        write("[Desktop Entry]\nExec=some\n" + std::string(mark) + "\n");
        EXPECT_FALSE(file.isOn()) << mark;
        ASSERT_FALSE(file.turnOn());
        EXPECT_TRUE(file.isOn()) << mark;
        EXPECT_EQ(contents(), "[Desktop Entry]\nExec=some\n");
    }
    write("[Desktop Entry]\r\nExec=some\r\n");
    ASSERT_FALSE(file.turnOff());
    EXPECT_FALSE(file.isOn()) << "whatever the ends of lines are";
}

TEST(DesktopKind, IsTheFirstThatIsKnown) {
    EXPECT_EQ(desktopKind("ubuntu:GNOME"), DesktopKind::gnome);
    EXPECT_EQ(desktopKind("KDE"), DesktopKind::kde);
    EXPECT_EQ(desktopKind("XFCE"), DesktopKind::xfce);
    EXPECT_EQ(desktopKind("sway:wlroots"), DesktopKind::wlroots);
    EXPECT_EQ(desktopKind("LXQt"), DesktopKind::other);
    EXPECT_EQ(desktopKind(""), DesktopKind::other);
}

} // namespace
} // namespace korvex::app
