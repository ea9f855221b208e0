#pragma once

#include "base/Calendar.h"
#include "base/Log.h"
#include "base/Signal.h"
#include "schedule/ReminderCenter.h"
#include "services/Collaborators.h"
#include "store/ModelContainer.h"
#include "ui/workspace/Workspace.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace korvex::ui {

/// Makes what the views work with over an open store, and keeps it. It reads nothing of the
/// store by itself; what costs more than a start should pay is made at its first use. Main thread.
class WorkspaceOwner {
public:
    /// What is there before. All that is referred to outlives the owner.
    struct Surroundings {
        store::ModelContainer& container;
        /// One of that container that has read something already; null for a new one.
        std::unique_ptr<store::ModelContext> context = nullptr;
        bool isUsersOwn = true;
        app::AppPreferences& preferences;
        app::UserDefaults& defaults;
        const base::Clock& clock;
        base::RunLoop& runLoop;
        storage::BackgroundThreads& threads;
        base::LogSink& log;
        /// Who shows reminders, and who shows todos outside the windows; null for nobody.
        schedule::ReminderCenter* reminders = nullptr;
        services::WidgetReloading* widgets = nullptr;
        /// How Quick Entry is reached from anywhere; null where nobody sets that up here.
        app::QuickEntrySetup* quickEntry = nullptr;
        std::function<base::TimeZone()> timeZone = base::TimeZone::system;
        /// Of dates and times; empty for the user's.
        std::string locale = {};
        /// Makes the engine that colours code, which stays uncoloured without one.
        richtext::ScriptEngineFactory makeEngine = nullptr;
        /// Finds what the engine loads.
        richtext::ResourceLookup resources = nullptr;
        /// Drafts are written below this folder where they cannot stand beside the store; nowhere
        /// where it is empty.
        std::filesystem::path state = {};
        /// The folder below which other programs get copies of attachments; empty for the system's
        /// folder for temporary files.
        std::filesystem::path copies = {};
        /// How long the windows wait for a program that writes into the store. Two that write at
        /// once keep each other for less; who is kept longer is told so, and can go on.
        std::chrono::milliseconds patience{250};
    };
    explicit WorkspaceOwner(Surroundings surroundings);
    WorkspaceOwner(const WorkspaceOwner&) = delete;
    WorkspaceOwner& operator=(const WorkspaceOwner&) = delete;

    const Workspace& workspace() const { return m_workspace; }

private:
    std::unique_ptr<store::ModelContext> m_ownContext;
    store::ModelContext& m_context;
    schedule::NoReminderCenter m_noReminders;
    services::NoWidgets m_noWidgets;
    schedule::ReminderCenter& m_reminders;
    services::WidgetReloading& m_widgets;
    services::UndoManager m_undo;
    services::EntryService m_entries;
    services::BoardService m_boards;
    schedule::ScheduleClock m_scheduleClock;
    DateTexts m_dates;
    richtext::RichTextSerializer m_serializer;
    richtext::CodeHighlighter m_code;
    services::TemporaryAttachmentCopies m_copies;
    base::TextFolding m_folding;
    services::FoldedTexts m_texts;
    services::SearchService m_search;
    app::DraftFolder m_drafts;
    storage::BackupService m_backup;
    storage::AutomaticBackupService m_automaticBackups;
    OnFirstUse<schedule::UpcomingTodos> m_upcoming;
    OnFirstUse<schedule::MissedReminders> m_missedReminders;
    Workspace m_workspace;
    base::Subscription m_replacements;
};

} // namespace korvex::ui
