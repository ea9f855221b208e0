#pragma once

#include "app/FileUserDefaults.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "platform/qt/QtRunLoop.h"
#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/VirtualScreen.h"
#include "ui/kit/Theme.h"
#include "ui/windows/MainWindow.h"

#include <QApplication>

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
    bool eventFilter(QObject*, QEvent* event) override {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

/// The desktop app's window on a store of its own. The application must be there.
class BenchWindow {
public:
    /// `fill` is called with the store before the window opens.
    explicit BenchWindow(const std::function<void(OpenStore&)>& fill)
        : m_store(m_scratch / "Primary.store", fill),
          m_boards(m_store.store.boards()),
          m_entries(m_store.store.entries(&m_undo)),
          m_defaults(m_scratch / "settings.json"),
          m_preferences(m_defaults, m_log),
          m_theme(m_preferences),
          m_scheduleClock(m_clock, m_runLoop, base::TimeZone::system, m_log),
          m_workspace{.container = m_store.store.container(),
                      .context = m_store.store.context(),
                      .boards = m_boards,
                      .entries = m_entries,
                      .undo = m_undo,
                      .scheduleClock = m_scheduleClock,
                      .clock = m_clock,
                      .preferences = m_preferences,
                      .defaults = m_defaults,
                      .dates = m_dates,
                      .serializer = m_serializer,
                      .code = m_code,
                      .folding = m_folding,
                      .texts = m_texts,
                      .search = m_search,
                      .copies = m_copies,
                      .upcoming = m_upcoming,
                      .log = m_log},
          m_window(m_workspace, m_theme) {
        m_window.show();
    }

    ui::MainWindow& window() { return m_window; }

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
    services::BoardService m_boards;
    services::UndoManager m_undo;
    services::EntryService m_entries;
    base::SystemClock m_clock;
    app::FileUserDefaults m_defaults;
    app::AppPreferences m_preferences;
    ui::Theme m_theme;
    platform::qt::QtRunLoop m_runLoop;
    schedule::ScheduleClock m_scheduleClock;
    ui::DateTexts m_dates;
    richtext::RichTextSerializer m_serializer{m_log};
    platform::javascriptcore::ScriptModule m_script{
        platform::javascriptcore::ScriptModule::defaultFile(), m_log};
    richtext::CodeHighlighter m_code{m_script.engineFactory(), m_script.resources(), m_runLoop,
                                     m_log};
    services::TemporaryAttachmentCopies m_copies{m_scratch.path()};
    base::TextFolding m_folding;
    services::FoldedTexts m_texts{m_store.store.context(), m_folding};
    services::SearchService m_search{m_store.store.context(), m_boards, m_texts};
    ui::OnFirstUse<schedule::UpcomingTodos> m_upcoming{[this] {
        return std::make_unique<schedule::UpcomingTodos>(m_store.store.context(), m_clock.now(),
                                                         base::TimeZone::system());
    }};
    ui::Workspace m_workspace;
    ui::MainWindow m_window;
};

} // namespace korvex::bench
