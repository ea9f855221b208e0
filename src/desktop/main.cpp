#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "app/StoreLocation.h"
#include "base/Clock.h"
#include "desktop/StartupTrace.h"
#include "desktop/StoreOpening.h"
#include "desktop/Watchers.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/SingleInstance.h"
#include "platform/qt/TerminationWatcher.h"
#include "platform/systemd/JournalLog.h"
#include "ui/kit/theme/QuietStyle.h"
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

using namespace korvex;

namespace {

constexpr int kStoreUnusable = 3;
constexpr std::chrono::seconds kLongestStart{2};

/// What the program was started with, known before there is an application.
class Arguments {
public:
    Arguments(int count, char* given[]) {
        QStringList words;
        for (int i = 0; i < count; ++i) {
            words.append(QString::fromLocal8Bit(given[i]));
        }
        m_parser.addOption(m_directory);
        m_areClear = m_parser.parse(words) && !m_parser.isSet(m_help);
    }

    /// Nothing is to be answered, and there is none of Qt's own.
    bool areClear() const { return m_areClear; }
    /// Gives the help that was asked for, or says what is wrong; either ends the program.
    void answer(const QApplication& application) { m_parser.process(application); }
    std::optional<std::filesystem::path> dataDirectory() const {
        return m_parser.isSet(m_directory)
                   ? std::optional(std::filesystem::path(m_parser.value(m_directory).toStdString()))
                   : std::nullopt;
    }

private:
    QCommandLineParser m_parser;
    QCommandLineOption m_help = m_parser.addHelpOption();
    QCommandLineOption m_directory{QStringLiteral("data-dir"),
                                   QApplication::tr("The folder that holds the store."),
                                   QStringLiteral("DIR")};
    bool m_areClear = false;
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
    Arguments arguments(argc, argv);
    const auto directory = app::dataDirectory(arguments.dataDirectory());
    const auto file = app::storeFile(directory);
    platform::qt::SingleInstance instance(directory);
    if (arguments.areClear() && instance.raiseRunning()) {
        return 0;
    }
    base::StandardErrorLog standardError(base::LogLevel::warning);
    platform::systemd::JournalLog log(standardError);
    app::FileUserDefaults defaults(app::FileUserDefaults::defaultFile());
    app::AppPreferences preferences(defaults, log);
    using When = desktop::StoreOpening::When;
    desktop::StoreOpening opening(file, preferences.mainBoardSelectedBoardID(), log,
                                  arguments.areClear() ? When::now : When::whenTaken);

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("korvex-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Korvex"));
    QApplication::setDesktopFileName(QStringLiteral("korvex"));
    const auto locale = ui::setUpLanguage(application);
    arguments.answer(application);
    if (!arguments.areClear() && instance.raiseRunning()) {
        return 0;
    }
    ui::Theme theme(preferences);
    ui::QuietStyle::installOver(theme);

    desktop::StoreOpening::Opened store;
    if (const auto refused = ui::refusal([&] { store = opening.take(); })) {
        return showStoreError(*refused, file);
    }
    auto& container = *store.container;
    platform::qt::QtRunLoop runLoop;
    const base::SystemClock clock;
    const platform::javascriptcore::ScriptModule script(
        platform::javascriptcore::ScriptModule::defaultFile(), log);
    const ui::WorkspaceOwner owner({.container = container,
                                    .context = std::move(store.context),
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
        return showStoreError(*refused, file);
    }

    ui::MainWindow window(workspace, theme);
    desktop::Watchers watchers({.container = container,
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
    window.showNotices(container.notices());
    window.show();
    const auto status = QApplication::exec();
    // What a long day left in the journal moves into the store file; where that fails the journal
    // keeps it.
    if (const auto refused = ui::refusal([&] { container.checkpoint(); })) {
        log.write(base::LogLevel::warning, "Desktop", refused->toStdString());
    }
    return status;
}
