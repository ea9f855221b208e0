#include "cli/session/Session.h"

#include "app/StoreLocation.h"
#include "base/UserLocale.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreMigration.h"
#include "storage/StoreStart.h"

namespace korvex::cli {

struct Session::Services {
    Services(std::unique_ptr<store::ModelContext> opened, Session& session)
        : owned(std::move(opened)),
          context(*owned),
          boards(context, session.m_reminders, session.m_widgets, session.m_environment.log),
          entries(context, session.m_reminders, session.m_widgets, session.m_environment.log) {}

    std::unique_ptr<store::ModelContext> owned;
    store::ModelContext& context;
    services::BoardService boards;
    services::EntryService entries;
};

Session::Session(const Environment& environment, const GlobalOptions& options)
    : m_environment(environment),
      m_options(options),
      m_output(environment.outputDescriptor),
      m_terminal(Terminal::of(environment.outputDescriptor)),
      m_storeFile(app::storeFile(app::dataDirectory(options.dataDirectory))),
      m_now(environment.clock.now()),
      m_widgets([](std::string_view) {}, m_environment.log) {}

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
        m_defaults.emplace(app::FileUserDefaults::defaultFile(), &m_environment.log);
        m_preferences.emplace(*m_defaults, m_environment.log);
    }
    return *m_preferences;
}

store::ModelContext& Session::context() {
    return services().context;
}

store::ModelContext& Session::existing() {
    std::error_code error;
    const auto legacy = app::legacyStoreFile(m_storeFile.parent_path());
    if (!m_services && !std::filesystem::exists(m_storeFile, error) &&
        !(legacy && storage::SharedStoreMigration::isLeft(*legacy))) {
        openExisting();
    }
    return context();
}

services::BoardService& Session::boards() {
    return services().boards;
}

services::EntryService& Session::entries() {
    return services().entries;
}

store::ModelContainer& Session::openExisting() {
    if (!m_container) {
        keep(storage::SharedModelContainer::openExisting(
            m_storeFile, store::ModelConfiguration::Older::refuse, m_environment.log));
    }
    return *m_container;
}

void Session::remapBoards(std::span<const std::pair<base::Uuid, base::Uuid>> merged) {
    if (!app::isUsersOwn(m_storeFile.parent_path())) {
        return; // of no other store do they tell
    }
    for (const auto& [from, to] : merged) {
        preferences().remapBoard(from, to);
    }
}

void Session::announceChanges() const {
    if (m_hasSaved) {
        m_environment.broadcaster.storeChanged(m_storeFile);
    }
    // Of no other store does anybody remind.
    if (m_reminders.isAsked() && app::isUsersOwn(m_storeFile.parent_path())) {
        m_environment.agent.planReminders(m_storeFile, m_reminders.withdrawn());
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

void Session::keep(std::unique_ptr<store::ModelContainer> container) {
    m_container = std::move(container);
    m_saves = m_container->didSave().connect([this](const auto&) { m_hasSaved = true; });
}

Session::Services& Session::services() {
    if (!m_services) {
        const auto missing = app::missingStoreNotice(m_storeFile.parent_path());
        auto store = storage::StoreStart::open(
            {.storeFile = m_storeFile,
             .legacyFile = app::legacyStoreFile(m_storeFile.parent_path()),
             .now = m_now},
            m_environment.log);
        keep(std::move(store.container));
        remapBoards(store.mergedBoards);
        if (missing) {
            remark(*missing);
        }
        for (const auto& notice : store.notices) {
            remark(notice);
        }
        m_services = std::make_unique<Services>(std::move(store.context), *this);
        if (m_container->allowsSave()) {
            m_services->boards.initializeDefaultBoards(m_now);
        }
    }
    return *m_services;
}

} // namespace korvex::cli
