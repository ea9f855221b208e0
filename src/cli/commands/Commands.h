#pragma once

#include "cli/terminal/CommandLineError.h"

#include <functional>

namespace CLI {
class App;
}

namespace korvex::cli {

class Session;

/// What a command does once its arguments are understood.
using Action = std::function<ExitStatus(Session&)>;

// Each adds its commands to `program`; the parser sets `chosen` to what the arguments ask for. Both
// must outlive the parsing.
void addBoardCommands(CLI::App& program, Action& chosen);
void addListCommands(CLI::App& program, Action& chosen);
void addViewCommands(CLI::App& program, Action& chosen);
void addCreationCommands(CLI::App& program, Action& chosen);
void addTextCommands(CLI::App& program, Action& chosen);
void addEntryCommands(CLI::App& program, Action& chosen);
void addAttachmentCommands(CLI::App& program, Action& chosen);
void addSearchCommands(CLI::App& program, Action& chosen);
void addBackupCommands(CLI::App& program, Action& chosen);
void addAutomaticBackupCommands(CLI::App& backupCommands, Action& chosen);
void addStoreCommands(CLI::App& program, Action& chosen);
void addReminderCommands(CLI::App& program, Action& chosen);
void addDesktopCommands(CLI::App& program, Action& chosen);

/// The open entries of the Inbox, for who starts the program without a display.
void printInbox(Session& session);

} // namespace korvex::cli
