#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "services/BoardService.h"
#include "services/Collaborators.h"
#include "services/EntryService.h"
#include "storage/BackupService.h"
#include "storage/Work.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "support/SilentLog.h"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::faults {

inline constexpr base::Instant kNow{800'000'000};
inline constexpr base::Instant kLater{800'000'100};
inline constexpr int kPreparedTodos = 12;
inline constexpr std::size_t kKeptBackups = 2;

/// One line on standard output. By writev, which no fault is planned for: the faults are the
/// store's, not the report's.
void say(const std::string& line);

/// The steps of an operation, as it tells of its progress and as its hooks are called. At one of
/// them another program acts.
class Steps {
public:
    /// For operations that nobody interferes with, of whose steps nothing is said.
    Steps() = default;
    /// At the step of this number, from 1, a shell runs the command; 0 is none.
    Steps(int step, std::string command) : m_step(step), m_command(std::move(command)) {}
    /// Waits for the command.
    ~Steps();
    Steps(const Steps&) = delete;
    Steps& operator=(const Steps&) = delete;

    /// Goes on when the command has ended, or after a while: it may wait for what this program has.
    void reached(std::string_view name);
    /// Whose stages are steps.
    storage::Work work();

private:
    bool waitForCommand(int options);

    int m_step = -1;
    std::string m_command;
    int m_reached = 0;
    storage::Stage m_stage = storage::Stage::reading;
    /// Of the command that runs; 0 where none does.
    pid_t m_process = 0;
};

/// An open store with the services over it, and what lies beside it.
struct Program {
    explicit Program(Steps& theSteps) : steps(theSteps) {}

    void open(const std::filesystem::path& storeFile,
              store::ModelConfiguration::Missing whenMissing);
    services::BoardService boards() { return {*context, reminders, widgets, log}; }
    services::EntryService entries() { return {*context, reminders, widgets, log}; }
    storage::BackupService backups() { return {*context, reminders, widgets, log}; }
    model::Board& inbox() { return *boards().inboxBoard(); }
    std::vector<model::Entry*> todos();
    /// Everything that a user sees, without what differs from run to run.
    std::string state();

    std::filesystem::path importedFile() const { return folder / "other.korvexbackup"; }
    std::filesystem::path exportedFile() const { return folder / "exported" / "mine.korvexbackup"; }
    std::filesystem::path recoveryFile() const {
        return folder / "Recovery" / "BeforeRestore.korvexbackup";
    }
    /// Of automatic backups; what the settings beside it name.
    std::filesystem::path chosenFolder() const { return folder / "chosen"; }

    Steps& steps;
    std::filesystem::path file;
    std::filesystem::path folder;
    tests::SilentLog log;
    services::NoReminders reminders;
    services::NoWidgets widgets;
    std::unique_ptr<store::ModelContainer> container;
    /// After the container, which must outlive it.
    std::unique_ptr<store::ModelContext> context;
};

} // namespace korvex::faults
