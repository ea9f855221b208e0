#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "model/Entry.h"
#include "schedule/CompleteTodoIntent.h"
#include "schedule/NotificationScheduling.h"
#include "schedule/ScheduleClock.h"
#include "schedule/WidgetRefreshService.h"
#include "services/BoardService.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace korvex::ui {

/// The store as widgets see it: one that somebody else has made, which may come and go while they
/// stand there. It is opened where it is there, never made, upgraded or repaired, and opened anew
/// when another file has its name. Who must be alone with it gets it (`store::SoleRequest`). Main
/// thread.
class WidgetStore {
public:
    /// What it works with; all of it outlives this.
    struct Surroundings {
        std::filesystem::path file;
        const base::Clock& clock;
        base::RunLoop& runLoop;
        services::ReminderReconciling& reconciling;
        schedule::NotificationScheduling& reminders;
        /// Tells the other programs that the store has changed. Must not throw.
        std::function<void()> announceChange;
        base::LogSink& log;
        std::function<base::TimeZone()> timeZone = base::TimeZone::system;
        /// A click is not to wait longer than this for other programs.
        std::chrono::milliseconds patience{250};
    };
    explicit WidgetStore(Surroundings surroundings);
    ~WidgetStore();
    WidgetStore(const WidgetStore&) = delete;
    WidgetStore& operator=(const WidgetStore&) = delete;

    /// The store while it is open.
    struct Open {
        Open(std::unique_ptr<store::ModelContainer> opened, const Surroundings& surroundings,
             services::WidgetReloading& widgets);

        std::unique_ptr<store::ModelContainer> container;
        store::ModelContext context;
        services::BoardService boards;
        /// It ticks when labels can change.
        schedule::ScheduleClock scheduleClock;

    private:
        base::Subscription m_changes;
    };
    /// Null while there is none.
    Open* open() const { return m_open.get(); }
    /// Why there is none, in English, to be translated.
    const std::string& reason() const { return m_reason; }

    /// To be called when the store may have changed, or come, or gone. Not within what uses it.
    void follow();
    /// Emitted when it was opened, and when there is another reason why it is not.
    base::Signal<>& didChange() { return m_didChange; }
    /// Emitted while all of it is still there.
    base::Signal<>& willClose() { return m_willClose; }

    /// Completes the todo where it still may be. Throws what the store and the service throw.
    void complete(const model::Entry& entry);
    /// Takes that back: the todo stands at this place again.
    void restore(const model::Entry& entry, std::optional<std::int64_t> position);

private:
    /// Which file has the name; absent for none.
    using FileID = std::optional<std::pair<dev_t, ino_t>>;
    FileID fileThere() const;
    bool refreshes();
    void close();
    void tryToOpen();
    bool isAskedFor() const;
    /// Whether that is another reason than before.
    bool takeReason(std::string reason);

    Surroundings m_surroundings;
    schedule::WidgetRefreshService m_widgets;
    schedule::CompleteTodoIntent m_intent;
    std::unique_ptr<Open> m_open;
    FileID m_openedFile;
    std::string m_reason;
    base::Signal<> m_didChange;
    base::Signal<> m_willClose;
};

} // namespace korvex::ui
