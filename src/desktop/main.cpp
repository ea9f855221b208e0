#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "app/StoreLocation.h"
#include "base/Clock.h"
#include "desktop/StartupTrace.h"
#include "model/SchemaVersions.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/QtStoreChangeBroadcaster.h"
#include "platform/qt/SingleInstance.h"
#include "platform/qt/StoreWatcher.h"
#include "platform/qt/SystemAppearanceWatcher.h"
#include "platform/qt/SystemTimeWatcher.h"
#include "platform/systemd/JournalLog.h"
#include "ui/kit/QuietStyle.h"
#include "ui/kit/Refusal.h"
#include "ui/kit/Theme.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/StoreErrorWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <chrono>

using namespace korvex;

namespace {

constexpr int kStoreUnusable = 3;
constexpr std::chrono::seconds kLongestStart{2};

std::optional<std::filesystem::path> dataDirectoryArgument(const QApplication& application) {
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption option(QStringLiteral("data-dir"),
                                    QApplication::tr("The folder that holds the store."),
                                    QStringLiteral("DIR"));
    parser.addOption(option);
    parser.process(application);
    if (!parser.isSet(option)) {
        return std::nullopt;
    }
    return std::filesystem::path(parser.value(option).toStdString());
}

ui::Theme::SystemAppearance
toAppearance(platform::qt::SystemAppearanceWatcher::ColorScheme scheme) {
    using ColorScheme = platform::qt::SystemAppearanceWatcher::ColorScheme;
    switch (scheme) {
    case ColorScheme::dark:
        return ui::Theme::SystemAppearance::dark;
    case ColorScheme::light:
        return ui::Theme::SystemAppearance::light;
    case ColorScheme::noPreference:
        break;
    }
    return ui::Theme::SystemAppearance::unknown;
}

/// What need not stand before the window does: who tells of changes from outside.
struct Watchers {
    Watchers(const ui::Workspace& workspace, ui::Theme& theme, ui::MainWindow& window)
        : store(workspace.container.configuration().file) {
        subscriptions.push_back(store.changed().connect([&workspace, &window] {
            if (const auto refused = ui::refusal([&] { workspace.context.refresh(); })) {
                window.showError(*refused);
            }
        }));
        subscriptions.push_back(
            workspace.context.didChange().connect([&workspace](const store::ChangeSet& changes) {
                if (changes.origin == store::ChangeSet::Origin::elsewhere) {
                    workspace.scheduleClock.scheduleRefresh();
                }
            }));
        subscriptions.push_back(time.changed().connect([&workspace] {
            workspace.dates.renew();
            workspace.scheduleClock.scheduleRefresh();
        }));
        subscriptions.push_back(appearance.changed().connect(
            [&theme](auto scheme) { theme.setSystemAppearance(toAppearance(scheme)); }));
        subscriptions.push_back(workspace.container.didSave().connect(
            [this, file = workspace.container.configuration().file](const store::ChangeSet&) {
                broadcaster.storeChanged(file);
            }));
    }

    platform::qt::StoreWatcher store;
    platform::qt::SystemTimeWatcher time;
    platform::qt::SystemAppearanceWatcher appearance;
    platform::qt::QtStoreChangeBroadcaster broadcaster;
    std::vector<base::Subscription> subscriptions;
};

int showStoreError(const QString& message, const std::filesystem::path& file) {
    ui::StoreErrorWindow window(message, file);
    window.show();
    QApplication::exec();
    return kStoreUnusable;
}

} // namespace

int main(int argc, char* argv[]) {
    const desktop::StartupTrace trace;
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("korvex-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Korvex"));
    QApplication::setDesktopFileName(QStringLiteral("korvex"));
    const auto directory = app::dataDirectory(dataDirectoryArgument(application));
    const auto file = app::storeFile(directory);

    platform::qt::SingleInstance instance(directory);
    if (instance.raiseRunning()) {
        return 0;
    }

    base::StandardErrorLog standardError(base::LogLevel::warning);
    platform::systemd::JournalLog log(standardError);
    app::FileUserDefaults defaults(app::FileUserDefaults::defaultFile());
    app::AppPreferences preferences(defaults, log);
    ui::Theme theme(preferences);
    ui::QuietStyle::installOver(theme);

    std::unique_ptr<store::ModelContainer> container;
    if (const auto refused = ui::refusal([&] {
            container = store::ModelContainer::open(model::currentSchema(), {.file = file}, log);
        })) {
        return showStoreError(*refused, file);
    }
    store::ModelContext context(*container);
    services::NoReminders reminders;
    services::NoWidgets widgets;
    services::UndoManager undo;
    services::EntryService entries(context, reminders, widgets, log, &undo);
    services::BoardService boards(context, reminders, log);
    const base::SystemClock clock;
    if (const auto refused = ui::refusal([&] { boards.initializeDefaultBoards(clock.now()); });
        refused && !boards.inboxBoard()) {
        return showStoreError(*refused, file);
    }

    platform::qt::QtRunLoop runLoop;
    schedule::ScheduleClock scheduleClock(clock, runLoop, base::TimeZone::system, log);
    ui::DateTexts dates;
    const richtext::RichTextSerializer serializer(log);
    const platform::javascriptcore::ScriptModule script(
        platform::javascriptcore::ScriptModule::defaultFile(), log);
    richtext::CodeHighlighter code(script.engineFactory(), script.resources(), runLoop, log);
    services::TemporaryAttachmentCopies copies;
    const base::TextFolding folding;
    services::FoldedTexts texts(context, folding);
    services::SearchService search(context, boards, texts);
    ui::OnFirstUse<schedule::UpcomingTodos> upcoming([&] {
        return std::make_unique<schedule::UpcomingTodos>(context, clock.now(),
                                                         base::TimeZone::system());
    });
    const ui::Workspace workspace{.container = *container,
                                  .context = context,
                                  .boards = boards,
                                  .entries = entries,
                                  .undo = undo,
                                  .scheduleClock = scheduleClock,
                                  .clock = clock,
                                  .preferences = preferences,
                                  .defaults = defaults,
                                  .dates = dates,
                                  .serializer = serializer,
                                  .code = code,
                                  .folding = folding,
                                  .texts = texts,
                                  .search = search,
                                  .copies = copies,
                                  .upcoming = upcoming,
                                  .log = log};
    ui::MainWindow window(workspace, theme);
    std::unique_ptr<Watchers> watchers;
    const auto startWatching = [&] {
        if (watchers) {
            return;
        }
        watchers = std::make_unique<Watchers>(workspace, theme, window);
        scheduleClock.start(*container);
        instance.listen();
        copies.removeLeftovers();
    };
    QObject::connect(&window, &ui::MainWindow::firstPainted, &window, [&] {
        trace.report("first paint");
        startWatching();
    });
    // A window that starts out of sight, minimised or on another desktop, is not painted.
    QTimer::singleShot(kLongestStart, &window, startWatching);
    QObject::connect(&application, &QApplication::applicationStateChanged, &window,
                     [&](Qt::ApplicationState state) {
                         if (watchers && state == Qt::ApplicationActive) {
                             scheduleClock.scheduleRefresh();
                         }
                     });
    const auto raising = instance.raiseRequested().connect([&] { window.comeForward(); });
    window.showNotices(container->notices());
    window.show();
    const int status = QApplication::exec();
    // What a long day left in the journal moves into the store file; where that fails the journal
    // keeps it.
    if (const auto refused = ui::refusal([&] { container->checkpoint(); })) {
        log.write(base::LogLevel::warning, "Desktop", refused->toStdString());
    }
    return status;
}
