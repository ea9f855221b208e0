#include "ui/settings/NotificationsPane.h"

#include "SettingsFixture.h"
#include "app/AgentStart.h"
#include "support/ScopedEnvironment.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace korvex::ui {
namespace {

using schedule::AuthorizationStatus;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class NotificationsPaneTest : public tests::SettingsFixture {
protected:
    /// What stands on the pane's button; empty where there is none.
    std::string offered() {
        for (const auto* const button : settings->findChildren<QPushButton*>()) {
            if (button->isVisible()) {
                return toUtf8(button->text());
            }
        }
        return {};
    }

    tests::ScopedEnvironment desktop{"XDG_CURRENT_DESKTOP", ""};
};

TEST_F(NotificationsPaneTest, ItFollowsWhatIsKnownAndOffersWhatHelps) {
    openSettings(notifications);
    EXPECT_EQ(reminders.reconciles, 1) << "what is planned is looked at";
    EXPECT_THAT(words(), HasSubstr("Notifications are used only for reminders you create."));
    struct {
        schedule::ReminderCenter::Status status;
        const char* label;
        const char* told;
        const char* offered;
    } const cases[] = {
        {{}, "Unavailable", "", ""},
        {{.authorization = AuthorizationStatus::notDetermined},
         "Not Requested",
         "",
         "Enable Notifications"},
        {{.authorization = AuthorizationStatus::unavailable, .reason = "There is no daemon."},
         "Unavailable",
         "There is no daemon.\nReminders that come due are listed at the top of Upcoming",
         "Look Again"},
        {{.authorization = AuthorizationStatus::denied},
         "Disabled",
         "Enable notifications in your desktop's settings → Notifications → Korvex. Your "
         "reminder dates remain saved.",
         ""},
        {{.authorization = AuthorizationStatus::authorized, .canAct = false, .isQuieted = true},
         "Allowed",
         "You are not to be disturbed now, by your desktop's settings.\nWhat shows notifications "
         "here has no buttons: todos are completed in Korvex.\nReminders that come due are listed",
         ""},
        {{.authorization = AuthorizationStatus::authorized,
          .schedulingErrorMessage = "Reminders could not be updated."},
         "Allowed",
         "Reminders could not be updated.",
         ""},
        {{.authorization = AuthorizationStatus::notDetermined,
          .permissionErrorMessage = "It could not be requested."},
         "Not Requested",
         "It could not be requested.",
         "Enable Notifications"},
        {{.authorization = AuthorizationStatus::authorized}, "Allowed", "", ""},
    };
    for (const auto& each : cases) {
        reminders.set(each.status);
        QApplication::processEvents();
        EXPECT_THAT(words(), AllOf(HasSubstr(each.label), HasSubstr(each.told)));
        EXPECT_EQ(offered(), each.offered) << each.label;
        const auto asked = reminders.authorizationRequests;
        if (!offered().empty()) {
            press(each.offered);
            EXPECT_EQ(reminders.authorizationRequests, asked + 1);
        }
    }
    EXPECT_THAT(words(), Not(HasSubstr("could not")));
}

TEST_F(NotificationsPaneTest, WhatStartsNothingAtLoginIsSaidUnlessTheUserHasSetItUp) {
    // On a machine where nothing of ours is installed for all users.
    const tests::ScopedEnvironment settingsFolder("XDG_CONFIG_HOME", (folder / "config").native());
    const tests::ScopedEnvironment dataFolder("XDG_DATA_HOME", (folder / "data").native());
    const tests::ScopedEnvironment others("XDG_CONFIG_DIRS", (folder / "none").native());
    const auto waits = HasSubstr("After you log in, reminders wait until Korvex is started");
    reminders.set(AuthorizationStatus::authorized);
    if (!app::startsAtLogin()) {
        openSettings(notifications);
        EXPECT_THAT(words(), waits);
        settings->close();
    }
    const auto file = folder / "config" / "autostart" / "dev.korvex.Korvex.desktop";
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << "[Desktop Entry]\nExec=korvex-desktop --background\n";
    openSettings(notifications);
    reminders.set({.authorization = AuthorizationStatus::authorized, .isQuieted = true});
    QApplication::processEvents();
    EXPECT_THAT(words(), AllOf(HasSubstr("not to be disturbed"), Not(waits)));
}

TEST_F(NotificationsPaneTest, TheWindowOfAnotherStoreOffersNothingThatCannotHelp) {
    auto another = workspace;
    another.isUsersOwn = false;
    reminders.set(AuthorizationStatus::unavailable, "Of this store nobody reminds.");
    window = std::make_unique<MainWindow>(another, theme);
    window->show();
    openSettings(notifications);
    EXPECT_THAT(words(), HasSubstr("Of this store nobody reminds."));
    EXPECT_EQ(offered(), "");
}

TEST_F(NotificationsPaneTest, WhereTheDesktopHasSettingsForItTheyAreOpened) {
    const auto programs = folder / "bin";
    std::filesystem::create_directory(programs);
    const auto program = programs / "xfce4-notifyd-config";
    std::ofstream(program) << "#!/bin/sh\n: > " << (folder / "opened").native() << '\n';
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    const tests::ScopedEnvironment path("PATH", programs.native() + ":/usr/bin:/bin");
    const tests::ScopedEnvironment here("XDG_CURRENT_DESKTOP", "other:XFCE");
    reminders.set(AuthorizationStatus::denied);
    openSettings(notifications);
    press("Enable Notifications");
    workUntil([&] { return std::filesystem::exists(folder / "opened"); });

    std::filesystem::remove(program);
    press("Enable Notifications");
    EXPECT_THAT(words(), HasSubstr("could not be opened."));

    const auto all = [](const QString& name) { return name; };
    const auto oldPlasma = [](const QString& name) {
        return name == QLatin1String("systemsettings5") ? name : QString();
    };
    using Settings = DesktopNotificationSettings;
    EXPECT_EQ(Settings::of(QStringLiteral("ubuntu:GNOME"), all)->arguments,
              QStringList(QStringLiteral("notifications")));
    EXPECT_EQ(Settings::of(QStringLiteral("KDE"), oldPlasma)->program,
              QStringLiteral("systemsettings5"));
    EXPECT_FALSE(Settings::of(QStringLiteral("sway"), all));
}

} // namespace
} // namespace korvex::ui
