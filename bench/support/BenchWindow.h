#pragma once

#include "app/FileUserDefaults.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "platform/qt/QtRunLoop.h"
#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/VirtualScreen.h"
#include "ui/kit/style/QuietStyle.h"
#include "ui/kit/theme/Theme.h"
#include "ui/windows/MainWindow.h"
#include "ui/workspace/WorkspaceOwner.h"

#include <QApplication>

#include <chrono>
#include <cstdlib>
#include <functional>

namespace korvex::bench {

/// The application, on a screen of its own. Made once for the process.
inline QApplication& application() {
    static const VirtualScreen screen;
    static const bool isSet = [] {
        for (const auto& [name, value] : screen.environment()) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        return true;
    }();
    static_cast<void>(isSet);
    // The application needs these for as long as it lives.
    static int argumentCount = 1;
    static char programName[] = "bench";
    static char* arguments[] = {programName, nullptr};
    // Never destroyed: at exit parts of Qt that it would take down are gone already.
    static QApplication& instance = *new QApplication(argumentCount, arguments);
    return instance;
}

/// Counts the paint events of a widget.
class PaintCount final : public QObject {
public:
    explicit PaintCount(QWidget& widget) { widget.installEventFilter(this); }

    int count() const { return m_count; }
    /// Until more paints were counted. The event loop's turn in which a widget is painted ends when
    /// the picture has been handed over.
    void waitForMoreThan(int count) const {
        while (m_count <= count) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    /// From the act until what it changed has been painted.
    template <typename Act>
    double secondsOf(Act&& act) const {
        const int before = m_count;
        const auto start = std::chrono::steady_clock::now();
        act();
        waitForMoreThan(before);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    bool eventFilter(QObject*, QEvent* event) override {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

/// What a start puts off until the window has been painted is no part of what is measured then.
inline void settle() {
    constexpr std::chrono::seconds kSettling{3};
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < kSettling) {
        QApplication::processEvents(QEventLoop::AllEvents, 100);
    }
}

/// The desktop app's window on a store of its own. The application must be there.
class BenchWindow {
public:
    /// `fill` is called with the store before the window opens.
    explicit BenchWindow(const std::function<void(OpenStore&)>& fill)
        : m_store(m_scratch / "Primary.store", fill),
          m_defaults(m_scratch / "settings.json"),
          m_preferences(m_defaults, m_log),
          m_theme(m_preferences),
          m_style(m_theme),
          m_owner({.container = m_store.store.container(),
                   .preferences = m_preferences,
                   .defaults = m_defaults,
                   .clock = m_clock,
                   .runLoop = m_runLoop,
                   .threads = m_threads,
                   .log = m_log,
                   .makeEngine = m_script.engineFactory(),
                   .resources = m_script.resources(),
                   .copies = m_scratch.path()}),
          m_window(m_owner.workspace(), m_theme) {
        m_window.show();
    }

    ui::MainWindow& window() { return m_window; }
    const ui::Theme& theme() const { return m_theme; }
    const ui::Workspace& workspace() const { return m_owner.workspace(); }
    /// As the sidebar lists them.
    std::vector<model::Board*> boards() const { return m_owner.workspace().boards.boards(); }

private:
    struct FilledStore {
        FilledStore(const std::filesystem::path& file, const std::function<void(OpenStore&)>& fill)
            : store((makeStore(file), file)) {
            fill(store);
        }
        OpenStore store;
    };

    Scratch m_scratch;
    base::StandardErrorLog m_log{base::LogLevel::warning};
    FilledStore m_store;
    base::SystemClock m_clock;
    app::FileUserDefaults m_defaults;
    app::AppPreferences m_preferences;
    ui::Theme m_theme;
    ui::InstalledStyle m_style;
    platform::qt::QtRunLoop m_runLoop;
    storage::BackgroundThreads m_threads;
    platform::javascriptcore::ScriptModule m_script{
        platform::javascriptcore::ScriptModule::defaultFile(), m_log};
    ui::WorkspaceOwner m_owner;
    ui::MainWindow m_window;
};

} // namespace korvex::bench
