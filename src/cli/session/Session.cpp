#include "cli/session/Session.h"

#include "app/StoreLocation.h"
#include "base/UserLocale.h"
#include "model/SchemaVersions.h"

namespace korvex::cli {

struct Session::Services {
    Services(store::ModelContainer& container, base::LogSink& log)
        : context(container),
          boards(context, reminders, widgets, log),
          entries(context, reminders, widgets, log) {}

    services::NoReminders reminders;
    services::NoWidgets widgets;
    store::ModelContext context;
    services::BoardService boards;
    services::EntryService entries;
};

Session::Session(const Environment& environment, const GlobalOptions& options)
    : m_environment(environment),
      m_options(options),
      m_output(environment.outputDescriptor),
      m_terminal(Terminal::of(environment.outputDescriptor)),
      m_storeFile(app::storeFile(app::dataDirectory(options.dataDirectory))),
      m_now(environment.clock.now()) {}

Session::~Session() = default;

const base::DateFormats& Session::formats() {
    if (!m_formats) {
        // All that commands say is English, so the words for days are too.
        m_formats.emplace(base::localeSpeaking("en", "LC_TIME"), base::TimeZone::system());
    }
    return *m_formats;
}

const base::Calendar& Session::calendar() {
    if (!m_calendar) {
        m_calendar.emplace(base::TimeZone::system());
    }
    return *m_calendar;
}

app::AppPreferences& Session::preferences() {
    if (!m_preferences) {
        m_defaults.emplace(app::FileUserDefaults::defaultFile());
        m_preferences.emplace(*m_defaults, m_environment.log);
    }
    return *m_preferences;
}

store::ModelContext& Session::context() {
    return services().context;
}

services::BoardService& Session::boards() {
    return services().boards;
}

services::EntryService& Session::entries() {
    return services().entries;
}

store::ModelContainer& Session::openExisting() {
    return open(store::ModelConfiguration::Missing::refuse);
}

void Session::announceChanges() const {
    if (m_hasSaved) {
        m_environment.broadcaster.storeChanged(m_storeFile);
    }
}

void Session::leaveStore() noexcept {
    if (m_container) {
        m_container->shortenJournal();
    }
}

void Session::remark(std::string_view text) const {
    writeMessage(m_environment.errorDescriptor, text);
}

store::ModelContainer& Session::open(store::ModelConfiguration::Missing whenMissing) {
    if (!m_container) {
        m_container = store::ModelContainer::open(model::currentSchema(),
                                                  {.file = m_storeFile, .whenMissing = whenMissing},
                                                  m_environment.log);
        m_saves = m_container->didSave().connect([this](const auto&) { m_hasSaved = true; });
    }
    return *m_container;
}

Session::Services& Session::services() {
    if (!m_services) {
        const auto missing = app::missingStoreNotice(m_storeFile.parent_path());
        auto& container = open(store::ModelConfiguration::Missing::create);
        if (missing) {
            remark(*missing);
        }
        for (const auto& notice : container.notices()) {
            remark(notice);
        }
        m_services = std::make_unique<Services>(container, m_environment.log);
        if (container.allowsSave()) {
            m_services->boards.initializeDefaultBoards(m_now);
        }
    }
    return *m_services;
}

} // namespace korvex::cli
