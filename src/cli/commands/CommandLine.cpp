#include "cli/commands/CommandLine.h"

#include "cli/commands/Commands.h"
#include "cli/commands/DesktopApp.h"
#include "cli/commands/HelpFormatter.h"

#include "app/Links.h"
#include "storage/ErrorsOnly.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreAdvice.h"
#include "store/StoreError.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>

namespace korvex::cli {

namespace {

struct ParsedArguments {
    GlobalOptions options;
    /// Empty when no command was named.
    Action action;
    /// What --help or --version print instead of running a command.
    std::string information;
};

constexpr const char* kProgramHelp =
    "Without a COMMAND the desktop app starts.\n\n"
    "A board is named by its name or identifier, an entry by its identifier or the first 4 or\n"
    "more characters of it. korvex COMMAND --help tells more about each command.\n\n"
    "The program ends with 0 when it is done, with 1 when the command was refused and nothing\n"
    "was changed, with 2 when it was not understood, and with 3 when the store could not be used\n"
    "or the results could not be written.";

/// The innermost command that the parser met, and how it is written.
struct MetCommand {
    const CLI::App* parser;
    std::string path;

    explicit MetCommand(const CLI::App& program) : parser(&program), path(program.get_name()) {
        while (!parser->get_subcommands().empty()) {
            parser = parser->get_subcommands().front();
            path += " " + parser->get_name();
        }
    }
    bool isGroup() const {
        return !parser->get_subcommands([](const CLI::App*) { return true; }).empty();
    }
};

/// The parser ends a command at a lone "++" and says nothing of what it drops.
void refuseLonePlusPlus(const std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    if (std::find(arguments.begin(), end, "++") != end) {
        throw wrongUsage("Write -- before a text that is just \"++\".");
    }
}

/// A link in the place of a command is to be opened: desktops know no more than that.
void putOpenBeforeLink(std::vector<std::string>& arguments) {
    auto place = arguments.begin();
    while (place != arguments.end() && place->starts_with("--") && *place != "--") {
        const auto count = *place == "--data-dir" ? 2 : 1;
        place += std::min<std::ptrdiff_t>(count, arguments.end() - place);
    }
    if (place != arguments.end() && app::hasOurScheme(*place)) {
        arguments.insert(place, {std::string("open"), std::string("--")});
    }
}

ParsedArguments parse(std::vector<std::string> arguments) {
    putOpenBeforeLink(arguments);
    refuseLonePlusPlus(arguments);
    ParsedArguments parsed;
    CLI::App program("Notes and todos, beautifully simple", "korvex");
    program.formatter(std::make_shared<HelpFormatter>());
    program.option_defaults()->group("Options");
    program.set_help_flag("-h,--help", "Shows this help");
    program
        .add_option(
            "--data-dir",
            [&](const CLI::results_t& typed) {
                if (typed.front().empty()) {
                    throw wrongUsage("--data-dir needs the path of a folder.");
                }
                parsed.options.dataDirectory = typed.front();
                return true;
            },
            "The folder of the store, instead of ~/.local/share/korvex")
        ->type_name("DIR");
    program.add_flag("--json", parsed.options.json, "Print one JSON document, for other programs");
    program.set_version_flag("--version", "korvex " KORVEX_VERSION, "Shows the version");
    addListCommands(program, parsed.action);
    addViewCommands(program, parsed.action);
    addSearchCommands(program, parsed.action);
    addCreationCommands(program, parsed.action);
    addTextCommands(program, parsed.action);
    addEntryCommands(program, parsed.action);
    addAttachmentCommands(program, parsed.action);
    addBoardCommands(program, parsed.action);
    addBackupCommands(program, parsed.action);
    addStoreCommands(program, parsed.action);
    addReminderCommands(program, parsed.action);
    addDesktopCommands(program, parsed.action);
    program.require_subcommand(0, 1);
    program.footer(kProgramHelp); // not before: commands inherit it

    std::reverse(arguments.begin(), arguments.end()); // the parser takes them from the back
    try {
        program.parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        parsed.information = program.help();
    } catch (const CLI::CallForVersion& version) {
        parsed.information = std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        const MetCommand met(program);
        const auto lacksCommand = met.isGroup() && error.get_name() == "RequiredError";
        const auto what = lacksCommand ? met.path + " needs one of its commands" : error.what();
        throw wrongUsage(what + ". See " + met.path + " --help.");
    }
    return parsed;
}

/// No command: the windows, or in their place what a terminal can show.
ExitStatus startDesktopApp(Session& session, const GlobalOptions& options) {
    if (options.json) {
        throw wrongUsage("--json needs a command. korvex --help lists them.");
    }
    std::vector<std::string> arguments;
    if (options.dataDirectory) {
        arguments = {"--data-dir", *options.dataDirectory};
    }
    const auto reason = becomeDesktopApp(arguments);
    session.remark(reason + " This is the Inbox; korvex --help shows what else can be done here.");
    printInbox(session);
    return ExitStatus::done;
}

/// A store that refuses a save is a refusal; one that cannot be opened, read or written is no use.
ExitStatus exitStatus(store::StoreErrorCase which) {
    switch (which) {
    case store::StoreErrorCase::readOnly:
    case store::StoreErrorCase::conflict:
    case store::StoreErrorCase::invalidRecord:
        return ExitStatus::refused;
    case store::StoreErrorCase::missing:
    case store::StoreErrorCase::incomplete:
    case store::StoreErrorCase::notAStore:
    case store::StoreErrorCase::symbolicLink:
    case store::StoreErrorCase::newerVersion:
    case store::StoreErrorCase::olderVersion:
    case store::StoreErrorCase::needsUpgrade:
    case store::StoreErrorCase::upgradeNeedsWriting:
    case store::StoreErrorCase::noFolder:
    case store::StoreErrorCase::unreadable:
    case store::StoreErrorCase::busy:
    case store::StoreErrorCase::damaged:
    case store::StoreErrorCase::nothingReadable:
    case store::StoreErrorCase::full:
    case store::StoreErrorCase::inputOutput:
    case store::StoreErrorCase::changesMissing:
    case store::StoreErrorCase::other:
        return ExitStatus::unusable;
    }
    return ExitStatus::unusable;
}

} // namespace

ExitStatus CommandLine::run(std::vector<std::string> arguments) {
    const auto fail = [&](ExitStatus status, std::string_view message) {
        writeMessage(m_environment.errorDescriptor, message);
        return status;
    };
    const auto failWithAdvice = [&](ExitStatus status, const base::Error& error,
                                    const auto& adviceFor) {
        fail(status, error.errorDescription());
        const auto advice = m_session ? adviceFor(m_session->storeFile()) : std::string();
        return advice.empty() ? status : fail(status, advice);
    };
    const auto status = [&] {
        try {
            return carryOut(std::move(arguments));
        } catch (const CommandLineError& error) {
            return fail(error.status(), error.errorDescription());
        } catch (const store::StoreError& error) {
            return failWithAdvice(exitStatus(error.which()), error, [&](const auto& storeFile) {
                return storage::adviceOn(error.which(), storeFile,
                                         m_session->isRepair() ? storage::Attempt::repair
                                                               : storage::Attempt::opening);
            });
        } catch (const storage::SharedStoreError& error) {
            return failWithAdvice(ExitStatus::unusable, error, [&](const auto& storeFile) {
                return storage::adviceOn(error.which(), storeFile);
            });
        } catch (const storage::LegacyStoreError& error) {
            return fail(ExitStatus::unusable, error.errorDescription());
        } catch (const base::Error& error) {
            return fail(ExitStatus::refused, error.errorDescription());
        } catch (const std::filesystem::filesystem_error& error) {
            return fail(ExitStatus::unusable, error.path1().string() + " could not be used: " +
                                                  error.code().message() + ".");
        } catch (...) {
            try {
                storage::throwAsError();
            } catch (const base::Error& error) {
                return fail(ExitStatus::unusable, error.errorDescription());
            }
        }
    }();
    // Also after a failure: the Inbox may have been made, or some of several todos completed.
    if (m_session) {
        m_session->announceChanges();
        m_session->leaveStore();
    }
    return status;
}

ExitStatus CommandLine::carryOut(std::vector<std::string> arguments) {
    const auto parsed = parse(std::move(arguments));
    if (!parsed.information.empty()) {
        Output output(m_environment.outputDescriptor);
        output.write(parsed.information);
        output.flush();
        return ExitStatus::done;
    }
    m_session = std::make_unique<Session>(m_environment, parsed.options);
    const auto status =
        parsed.action ? parsed.action(*m_session) : startDesktopApp(*m_session, parsed.options);
    m_session->output().flush();
    return status;
}

} // namespace korvex::cli
