#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "app/StoreLocation.h"
#include "app/UserFolders.h"
#include "base/Clock.h"
#include "platform/bus/AgentClient.h"
#include "platform/bus/Bus.h"
#include "platform/bus/StoreChangeSignal.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/system/ProgramFile.h"
#include "platform/system/SingleInstance.h"
#include "platform/system/StartupTrace.h"
#include "platform/system/TerminationWatcher.h"
#include "platform/systemd/JournalLog.h"
#include "ui/kit/style/QuietStyle.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Theme.h"
#include "ui/kit/words/Language.h"
#include "ui/widget/WidgetSet.h"
#include "widget/Arguments.h"
#include "widget/DesktopOfWidgets.h"
#include "widget/Watchers.h"

#include <QApplication>

using namespace korvex;

namespace {

/// Each data folder has its own, beside the place of the app that shows the same store.
std::filesystem::path placeOfWidgets(const std::filesystem::path& dataDirectory) {
    return dataDirectory / "widgets";
}

/// Until the last widget is closed or the session ends; the exit status.
int run(int argc, char* argv[], base::LogSink& log) {
    const platform::system::StartupTrace trace;
    widget::Arguments arguments(argc, argv);
    const auto directory = app::dataDirectory(arguments.dataDirectory());
    const auto file = app::storeFile(directory);
    const auto isUsersOwn = app::isUsersOwn(directory);
    platform::system::SingleInstance instance(placeOfWidgets(directory));
    if (arguments.areClear() && instance.handOver(arguments.request().launch())) {
        return 0;
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("korvex-widget"));
    QApplication::setApplicationDisplayName(QStringLiteral("Korvex"));
    QApplication::setDesktopFileName(QStringLiteral("dev.korvex.Widget"));
    QApplication::setWindowIcon(ui::IconSet::program());
    QApplication::setQuitOnLastWindowClosed(false);
    const auto locale = ui::setUpLanguage(application);
    arguments.answer(application);

    app::FileUserDefaults defaults(app::FileUserDefaults::defaultFile(), &log);
    app::AppPreferences preferences(defaults, log);
    platform::qt::QtRunLoop runLoop;
    ui::Theme theme(preferences);
    const ui::InstalledStyle style(theme);
    theme.loadFonts();
    const base::SystemClock clock;
    platform::bus::Bus bus(platform::bus::WhichBus::session, runLoop, log);
    platform::bus::AgentClient agent(
        bus, runLoop, file,
        [] { return platform::system::startBeside(platform::bus::kAgentProgram); }, log);
    schedule::NoReminderCenter noAgent;
    schedule::NoNotifications noNotifications;
    widget::DesktopOfWidgets desktop(directory, bus, log);
    ui::DateTexts dates(locale);
    const base::TextFolding folding;
    // Of another store's reminders nobody knows.
    auto* const reconciling =
        isUsersOwn ? static_cast<services::ReminderReconciling*>(&agent) : &noAgent;
    ui::WidgetStore store({.file = file,
                           .clock = clock,
                           .runLoop = runLoop,
                           .reconciling = *reconciling,
                           .reminders = isUsersOwn ? agent.notifications() : noNotifications,
                           .announceChange = [&] { platform::bus::announceStoreChange(bus, file); },
                           .log = log});
    ui::WidgetSet widgets(app::WidgetFile(app::WidgetFile::in(
                              app::userFolder("XDG_STATE_HOME", ".local/state"), file)),
                          {.store = store,
                           .theme = theme,
                           .dates = dates,
                           .folding = folding,
                           .runLoop = runLoop,
                           .desktop = desktop},
                          log);
    QObject::connect(&widgets, &ui::WidgetSet::emptied, &application, [] { QApplication::exit(); });
    QObject::connect(&widgets, &ui::WidgetSet::firstPainted, &application,
                     [&] { trace.report("first paint"); });

    const auto asked = arguments.request();
    const auto hasRemembered = widgets.showRemembered();
    if (asked.isLogin && !hasRemembered) {
        return 0;
    }
    if (!hasRemembered || asked.board) {
        widgets.open(asked.board);
    } else if (!asked.isLogin) {
        widgets.bringForward();
    }
    const widget::Watchers watchers({.storeFile = file,
                                     .store = store,
                                     .dates = dates,
                                     .theme = theme,
                                     .preferences = preferences,
                                     .bus = bus,
                                     .runLoop = runLoop});
    bus.start();
    const auto launching = instance.launched().connect([&](const app::Launch& launch) {
        const auto later = widget::Request::of(launch);
        if (!later.isLogin) {
            widgets.open(later.board);
        }
    });
    instance.listen(runLoop);
    platform::system::TerminationWatcher termination(runLoop);
    const auto ending = termination.requested().connect([] { QApplication::exit(); });
    const auto status = QApplication::exec();
    // Before the next start is a first one, which reads it.
    widgets.save();
    instance.close();
    return status;
}

} // namespace

int main(int argc, char* argv[]) {
    base::StandardErrorLog standardError(base::LogLevel::warning);
    platform::systemd::JournalLog log(standardError);
    return run(argc, argv, log);
}
