#pragma once

#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "app/StoreChangeChannel.h"
#include "base/Clock.h"
#include "base/DateFormats.h"
#include "base/Log.h"
#include "cli/session/AskedReminders.h"
#include "cli/session/RunningAgent.h"
#include "cli/session/RunningDesktop.h"
#include "cli/terminal/Output.h"
#include "richtext/stored/RichTextSerializer.h"
#include "schedule/WidgetRefreshService.h"
#include "services/BoardService.h"
#include "services/EntryService.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <utility>

namespace korvex::cli {

/// The world around the program, as `main` picks it. All of it must outlive the session.
struct Environment {
    const base::Clock& clock;
    base::LogSink& log;
    app::StoreChangeBroadcaster& broadcaster;
    RunningDesktop& desktop;
    RunningAgent& agent;
    int inputDescriptor = 0;
    int outputDescriptor = 1;
    int errorDescriptor = 2;
};

/// What stands before or after any command.
struct GlobalOptions {
    std::optional<std::string> dataDirectory;
    bool json = false;
};

/// What one command works with. The store is opened when it is first asked for, and what costs
/// milliseconds is made when it is first needed.
class Session {
public:
    Session(const Environment& environment, const GlobalOptions& options);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const Environment& environment() const { return m_environment; }
    Output& output() { return m_output; }
    const Terminal& terminal() const { return m_terminal; }
    bool wantsJson() const { return m_options.json; }
    const std::filesystem::path& storeFile() const { return m_storeFile; }

    /// One moment for the whole command.
    base::Instant now() const { return m_now; }
    /// In English, in the order and by the clock of the user's region.
    const base::DateFormats& formats();
    const base::Calendar& calendar();
    /// The user's settings.
    app::AppPreferences& preferences();

    /// The store with its default boards, created where there is none. Throws StoreError,
    /// SharedStoreError and LegacyStoreError.
    store::ModelContext& context();
    /// The same for a command that has nothing to do where there is none: it throws `missing` then.
    store::ModelContext& existing();
    services::BoardService& boards();
    services::EntryService& entries();
    /// Whom operations on the store ask for its reminders and for its widgets. The widgets hear the
    /// change signal, which `announceChanges` sends.
    services::ReminderReconciling& reminders() { return m_reminders; }
    services::WidgetReloading& widgets() { return m_widgets; }
    richtext::RichTextSerializer serializer() const {
        return richtext::RichTextSerializer(m_environment.log);
    }

    /// Opens the store that is there: creates, upgrades and repairs nothing, and leaves what was
    /// noticed to the command. Throws StoreError and SharedStoreError.
    store::ModelContainer& openExisting();

    /// The settings that name the first of two boards name the second from now on.
    void remapBoards(std::span<const std::pair<base::Uuid, base::Uuid>> merged);
    /// For a command that changes the store past these: `announceChanges` has something to tell.
    void noteChange() {
        m_hasSaved = true;
        m_reminders.requestReconcile();
    }
    /// For the command that repairs the store: it is no advice where that fails.
    void noteRepair() { m_isRepair = true; }
    bool isRepair() const { return m_isRepair; }

    /// Tells the other programs, once, when something was saved, and the agent when that can
    /// concern reminders.
    void announceChanges() const;
    /// The last thing: leaves the store as a program that ends should.
    void leaveStore() noexcept;

    /// A remark to the person, on standard error.
    void remark(std::string_view text) const;

private:
    struct Services;

    void keep(std::unique_ptr<store::ModelContainer> container);
    Services& services();

    Environment m_environment;
    GlobalOptions m_options;
    Output m_output;
    Terminal m_terminal;
    std::filesystem::path m_storeFile;
    base::Instant m_now;
    std::optional<base::DateFormats> m_formats;
    std::optional<base::Calendar> m_calendar;
    std::optional<app::FileUserDefaults> m_defaults;
    std::optional<app::AppPreferences> m_preferences;
    std::unique_ptr<store::ModelContainer> m_container;
    base::Subscription m_saves;
    bool m_hasSaved = false;
    AskedReminders m_reminders;
    schedule::WidgetRefreshService m_widgets;
    bool m_isRepair = false;
    std::unique_ptr<Services> m_services;
};

} // namespace korvex::cli
