#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "app/StoreLocation.h"
#include "base/Clock.h"
#include "desktop/StartupTrace.h"
#include "desktop/Watchers.h"
#include "model/SchemaVersions.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/SingleInstance.h"
#include "platform/qt/TerminationWatcher.h"
#include "platform/systemd/JournalLog.h"
#include "ui/kit/style/QuietStyle.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Theme.h"
#include "ui/kit/words/Language.h"
#include "ui/kit/words/Refusal.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/StoreErrorWindow.h"
#include "ui/workspace/WorkspaceOwner.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <chrono>

#ifdef KORVEX_GALLERY
#include "ui/gallery/Gallery.h"
#endif

using namespace korvex;

namespace {

constexpr int kStoreUnusable = 3;
constexpr std::chrono::seconds kLongestStart{2};

struct Arguments {
    std::optional<std::filesystem::path> dataDirectory;
    /// Set to show the gallery instead of the notes; how that is to look.
    std::optional<QStringList> gallery;
};

Arguments read(const QApplication& application) {
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption directory(QStringLiteral("data-dir"),
                                       QApplication::tr("The folder that holds the store."),
                                       QStringLiteral("DIR"));
    parser.addOption(directory);
#ifdef KORVEX_GALLERY
    const QCommandLineOption gallery(QStringLiteral("gallery"),
                                     QStringLiteral("Show what the windows are made of."));
    parser.addOption(gallery);
#endif
    parser.process(application);
    Arguments arguments;
    if (parser.isSet(directory)) {
        arguments.dataDirectory = parser.value(directory).toStdString();
    }
#ifdef KORVEX_GALLERY
    if (parser.isSet(gallery)) {
        arguments.gallery = parser.positionalArguments();
    }
#endif
    return arguments;
}

int showStoreError(const QString& message, const std::filesystem::path& file,
                   const ui::Theme& theme) {
    ui::StoreErrorWindow window(message, file, theme);
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
    QApplication::setWindowIcon(ui::IconSet::program());
    const auto locale = ui::setUpLanguage(application);
    const auto arguments = read(application);
#ifdef KORVEX_GALLERY
    if (arguments.gallery) {
        return ui::runGallery(*arguments.gallery);
    }
#endif
    const auto directory = app::dataDirectory(arguments.dataDirectory);
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
    ui::QuietStyle::install(theme);

    std::unique_ptr<store::ModelContainer> container;
    if (const auto refused = ui::refusal([&] {
            container = store::ModelContainer::open(model::currentSchema(), {.file = file}, log);
        })) {
        return showStoreError(*refused, file, theme);
    }
    platform::qt::QtRunLoop runLoop;
    const base::SystemClock clock;
    const platform::javascriptcore::ScriptModule script(
        platform::javascriptcore::ScriptModule::defaultFile(), log);
    const ui::WorkspaceOwner owner({.container = *container,
                                    .preferences = preferences,
                                    .defaults = defaults,
                                    .clock = clock,
                                    .runLoop = runLoop,
                                    .log = log,
                                    .locale = locale,
                                    .makeEngine = script.engineFactory(),
                                    .resources = script.resources()});
    const auto& workspace = owner.workspace();
    if (const auto refused =
            ui::refusal([&] { workspace.boards.initializeDefaultBoards(clock.now()); });
        refused && !workspace.boards.inboxBoard()) {
        return showStoreError(*refused, file, theme);
    }

    ui::MainWindow window(workspace, theme);
    desktop::Watchers watchers({.container = *container,
                                .workspace = workspace,
                                .theme = theme,
                                .window = window,
                                .instance = instance});
    QObject::connect(&window, &ui::MainWindow::firstPainted, &watchers, [&] {
        trace.report("first paint");
        watchers.start();
        window.offerDrafts();
    });
    // A window that starts out of sight, minimised or on another desktop, is not painted.
    QTimer::singleShot(kLongestStart, &watchers, &desktop::Watchers::start);
    const auto raising = instance.raiseRequested().connect([&] { window.comeForward(); });
    // A log-out asks every window first and ends the programs then.
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &window,
                     &ui::MainWindow::storeAll, Qt::DirectConnection);
    platform::qt::TerminationWatcher termination;
    const auto ending = termination.requested().connect([&] {
        window.storeAll();
        QApplication::exit();
    });
    window.showNotices(container->notices());
    window.show();
    const auto status = QApplication::exec();
    // What a long day left in the journal moves into the store file; where that fails the journal
    // keeps it.
    if (const auto refused = ui::refusal([&] { container->checkpoint(); })) {
        log.write(base::LogLevel::warning, "Desktop", refused->toStdString());
    }
    return status;
}
