#pragma once

#include "app/AppPreferences.h"
#include "app/DraftFolder.h"
#include "app/QuickEntrySetup.h"
#include "app/UserDefaults.h"
#include "base/Clock.h"
#include "base/RunLoop.h"
#include "base/TextFolding.h"
#include "richtext/code/CodeHighlighter.h"
#include "richtext/stored/RichTextSerializer.h"
#include "schedule/MissedReminders.h"
#include "schedule/ReminderCenter.h"
#include "schedule/ScheduleClock.h"
#include "schedule/UpcomingTodos.h"
#include "services/BoardService.h"
#include "services/Collaborators.h"
#include "services/EntryService.h"
#include "services/FoldedTexts.h"
#include "services/SearchService.h"
#include "services/TemporaryAttachmentCopies.h"
#include "storage/AutomaticBackupService.h"
#include "storage/BackgroundThreads.h"
#include "storage/BackupService.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "ui/workspace/DateTexts.h"
#include "ui/workspace/OnFirstUse.h"

namespace korvex::ui {

/// What the views work with, over one open store. Pages and windows, which put others together, are
/// handed all of it; whatever uses a few of these asks for them by name. All of it outlives the
/// views. Main thread.
struct Workspace {
    store::ModelContext& context;
    services::BoardService& boards;
    services::EntryService& entries;
    schedule::ReminderCenter& reminders;
    services::WidgetReloading& widgets;
    /// The changes that this window can take back.
    services::UndoManager& undo;
    /// It ticks when labels can change.
    schedule::ScheduleClock& scheduleClock;
    const base::Clock& clock;
    base::RunLoop& runLoop;
    storage::BackgroundThreads& threads;
    /// The store is the one of the user's own data folder, of which the preferences tell.
    bool isUsersOwn;
    app::AppPreferences& preferences;
    app::UserDefaults& defaults;
    /// Null where Quick Entry belongs to another window, or to nobody.
    app::QuickEntrySetup* quickEntry;
    /// Written by any thread.
    base::LogSink& log;
    DateTexts& dates;
    const richtext::RichTextSerializer& serializer;
    richtext::CodeHighlighter& code;
    const base::TextFolding& folding;
    /// The texts of all entries are kept here for whoever searches them.
    services::FoldedTexts& texts;
    services::SearchService& search;
    /// Other programs open these copies of attachments.
    services::TemporaryAttachmentCopies& copies;
    /// What was typed and cannot be stored is kept there.
    app::DraftFolder& drafts;
    storage::BackupService& backup;
    /// It makes none by itself before it is started.
    storage::AutomaticBackupService& automaticBackups;
    /// The pages over all boards share these todos.
    OnFirstUse<schedule::UpcomingTodos>& upcoming;
    /// Of the user's own store; of others it lists none.
    OnFirstUse<schedule::MissedReminders>& missedReminders;

    base::Instant now() const { return clock.now(); }
};

} // namespace korvex::ui
