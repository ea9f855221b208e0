#include "ui/workspace/WorkspaceOwner.h"

#include <utility>

namespace korvex::ui {

namespace {

/// In the settings: how far reminders that no notification has shown were seen. It lives for ever.
constexpr std::string_view kSeenUntil = "remindersSeenUntil";
/// The same of the latest that is listed and was not seen.
constexpr std::string_view kListedUntil = "remindersListedUntil";

/// What is said where a program gives nobody who shows reminders.
schedule::ReminderCenter::Status ofNobody(const WorkspaceOwner::Surroundings& surroundings) {
    return {.reason = surroundings.isUsersOwn
                          ? std::string()
                          : "Reminders are shown only for the boards in your own data folder."};
}

std::optional<schedule::MissedReminders::Seen>
seenReminders(const WorkspaceOwner::Surroundings& surroundings) {
    if (!surroundings.isUsersOwn) {
        return std::nullopt;
    }
    auto& defaults = surroundings.defaults;
    const auto moment = [&defaults](std::string_view key) {
        const auto seconds = defaults.real(key);
        return seconds ? std::optional(base::Instant{*seconds}) : std::nullopt;
    };
    return schedule::MissedReminders::Seen{
        .until = moment(kSeenUntil),
        .keep = [&defaults](base::Instant seen) { defaults.setReal(kSeenUntil, seen.seconds); },
        .listedUntil = moment(kListedUntil),
        .keepListed =
            [&defaults](std::optional<base::Instant> until) {
                if (until) {
                    defaults.setReal(kListedUntil, until->seconds);
                } else {
                    defaults.remove(kListedUntil);
                }
            }};
}

std::vector<std::filesystem::path> draftFolders(const WorkspaceOwner::Surroundings& surroundings) {
    const auto& file = surroundings.container.configuration().file;
    std::vector folders{app::DraftFolder::beside(file)};
    if (!surroundings.state.empty()) {
        folders.push_back(app::DraftFolder::in(surroundings.state, file));
    }
    return folders;
}

} // namespace

WorkspaceOwner::WorkspaceOwner(Surroundings surroundings)
    : m_ownContext(surroundings.context
                       ? std::move(surroundings.context)
                       : std::make_unique<store::ModelContext>(surroundings.container)),
      m_context(*m_ownContext),
      m_noReminders(ofNobody(surroundings)),
      m_reminders(surroundings.reminders ? *surroundings.reminders : m_noReminders),
      m_widgets(surroundings.widgets ? *surroundings.widgets : m_noWidgets),
      m_undo(surroundings.clock),
      m_entries(m_context, m_reminders, m_widgets, surroundings.log, &m_undo),
      m_boards(m_context, m_reminders, m_widgets, surroundings.log),
      m_scheduleClock(surroundings.clock, surroundings.runLoop, surroundings.timeZone,
                      surroundings.log),
      m_dates(surroundings.locale),
      m_serializer(surroundings.log),
      m_code(surroundings.makeEngine, surroundings.resources, surroundings.runLoop,
             surroundings.log),
      m_copies(surroundings.copies),
      m_texts(m_context, m_folding),
      m_search(m_context, m_boards, m_texts),
      m_drafts(draftFolders(surroundings)),
      m_backup(m_context, m_reminders, m_widgets, surroundings.log),
      m_automaticBackups({.store = surroundings.isUsersOwn
                                       ? storage::AutomaticBackupService::Store::usersOwn
                                       : storage::AutomaticBackupService::Store::another,
                          .preferences = surroundings.preferences,
                          .defaults = surroundings.defaults,
                          .container = surroundings.container,
                          .threads = surroundings.threads,
                          .clock = surroundings.clock,
                          .runLoop = surroundings.runLoop,
                          .log = surroundings.log}),
      m_upcoming([this, timeZone = surroundings.timeZone] {
          return std::make_unique<schedule::UpcomingTodos>(m_context, m_scheduleClock.now(),
                                                           timeZone());
      }),
      m_missedReminders([this, seen = seenReminders(surroundings)] {
          return std::make_unique<schedule::MissedReminders>(m_context, m_reminders,
                                                             m_scheduleClock, seen);
      }),
      m_workspace{.context = m_context,
                  .boards = m_boards,
                  .entries = m_entries,
                  .reminders = m_reminders,
                  .widgets = m_widgets,
                  .undo = m_undo,
                  .scheduleClock = m_scheduleClock,
                  .clock = surroundings.clock,
                  .runLoop = surroundings.runLoop,
                  .threads = surroundings.threads,
                  .isUsersOwn = surroundings.isUsersOwn,
                  .preferences = surroundings.preferences,
                  .defaults = surroundings.defaults,
                  .quickEntry = surroundings.quickEntry,
                  .log = surroundings.log,
                  .dates = m_dates,
                  .serializer = m_serializer,
                  .code = m_code,
                  .folding = m_folding,
                  .texts = m_texts,
                  .search = m_search,
                  .copies = m_copies,
                  .drafts = m_drafts,
                  .backup = m_backup,
                  .automaticBackups = m_automaticBackups,
                  .upcoming = m_upcoming,
                  .missedReminders = m_missedReminders} {
    surroundings.container.setPatience(surroundings.patience);
    m_replacements = m_context.didChange().connect([this](const store::ChangeSet& changes) {
        // The steps speak of what is gone, whoever has replaced it.
        if (changes.isReplacement) {
            m_undo.forgetEverything();
        }
    });
}

} // namespace korvex::ui
