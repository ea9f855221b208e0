#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/DesktopApp.h"
#include "cli/commands/Options.h"
#include "cli/session/Session.h"

#include "app/Links.h"
#include "app/StoreLocation.h"

namespace korvex::cli {

namespace {

struct OpenOptions {
    std::string url;
};

ExitStatus open(Session& session, const OpenOptions& options) {
    if (!app::Link::parse(options.url)) {
        throw wrongUsage("\"" + options.url +
                         "\" is no link of Korvex. They are korvex://board/inbox, "
                         "korvex://board/ID and korvex://entry/ID.");
    }
    const auto folder = session.storeFile().parent_path();
    std::vector<std::string> arguments{"--", options.url};
    if (app::isUsersOwn(folder)) {
        // The app that runs has the name on the bus for its own store only.
        const app::Launch launch{.links = {options.url}, .token = app::launchToken()};
        switch (session.environment().desktop.ask(launch)) {
        case RunningDesktop::Answer::taken:
            return ExitStatus::done;
        case RunningDesktop::Answer::silent:
            throw refusal("Korvex is running, but does not answer.");
        case RunningDesktop::Answer::notThere:
            break;
        }
    } else {
        arguments.insert(arguments.begin(), {"--data-dir", folder.string()});
    }
    throw refusal(becomeDesktopApp(arguments));
}

} // namespace

void addDesktopCommands(CLI::App& program, Action& chosen) {
    const auto opened =
        addCommand(program, "open", "Shows in the desktop app what a link leads to", chosen, open);
    addText(opened.parser, "URL", "URL", opened.options->url,
            "korvex://board/inbox, korvex://board/ID or korvex://entry/ID")
        ->required();
    opened.parser.footer("The app starts where it does not run. korvex URL does the same.");
}

} // namespace korvex::cli
