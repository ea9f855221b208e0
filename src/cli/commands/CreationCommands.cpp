#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/EntryOutput.h"
#include "cli/session/Input.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"

#include "base/Text.h"

namespace korvex::cli {

namespace {

struct PlaceOptions {
    std::optional<std::string> board;
    std::optional<std::string> after;
    std::optional<std::string> before;
};

struct AddOptions {
    std::vector<std::string> texts;
    PlaceOptions place;
    ScheduleOptions schedule;
    std::vector<std::string> files;
};

struct NoteOptions {
    std::optional<std::string> text;
    std::optional<std::int64_t> heading;
    std::optional<std::string> rtf;
    PlaceOptions place;
    std::vector<std::string> files;
};

struct Place {
    model::Board& board;
    std::optional<base::Uuid> after;
    std::optional<base::Uuid> before;
};

/// Beside another entry means on its board, unless a board was named.
Place findPlace(Session& session, const PlaceOptions& options) {
    const auto target = [&](const std::optional<std::string>& typed) {
        return typed ? std::optional(findTarget(session, *typed)) : std::nullopt;
    };
    const auto after = target(options.after);
    const auto before = target(options.before);
    model::Board* board = nullptr;
    if (const auto& beside = before ? before : after; beside && !options.board) {
        const auto* entry = session.context().find<model::Entry>(*beside);
        board = entry ? entry->board() : nullptr;
    }
    return {board ? *board : findBoardOrInbox(session, options.board), after, before};
}

void appendInputLines(Session& session, std::vector<std::string>& contents) {
    const auto input = readAll(session.environment().inputDescriptor);
    std::size_t number = 0;
    base::forEachLine(input, [&](std::string_view line) {
        ++number;
        if (!base::isValidUtf8(line)) {
            throw refusal("Line " + std::to_string(number) +
                          " of standard input is not valid UTF-8 text. Nothing was added.");
        }
        if (!base::trimmed(line).empty()) {
            contents.emplace_back(line);
        }
    });
}

std::vector<model::EntryAttachment> readAttached(const Session& session,
                                                 const std::vector<std::string>& files) {
    return readFiles(session, std::vector<std::filesystem::path>(files.begin(), files.end()));
}

ExitStatus add(Session& session, const AddOptions& options) {
    // Everything typed is understood before the store is opened: opening may create it.
    const auto schedule = readSchedule(options.schedule, session);
    std::vector<std::string> contents;
    for (const auto& text : options.texts) {
        if (text == "-") {
            appendInputLines(session, contents);
        } else {
            contents.push_back(text);
        }
    }
    auto attachments = readAttached(session, options.files);
    const auto place = findPlace(session, options.place);
    printCreated(session, session.entries().createTodos({
                              .contents = std::move(contents),
                              .board = place.board,
                              .after = place.after,
                              .before = place.before,
                              .now = session.now(),
                              .schedule = schedule,
                              .attachments = std::move(attachments),
                          }));
    return ExitStatus::done;
}

std::optional<richtext::HeadingLevel> headingLevel(const std::optional<std::int64_t>& typed) {
    if (!typed) {
        return std::nullopt;
    }
    if (*typed < 1 || *typed > static_cast<std::int64_t>(richtext::kHeadingLevels.size())) {
        throw wrongUsage("--heading takes 1, 2 or 3.");
    }
    return static_cast<richtext::HeadingLevel>(*typed);
}

richtext::AttributedString readNote(Session& session, const NoteOptions& options) {
    const auto level = headingLevel(options.heading);
    if (options.rtf) {
        return session.serializer().decode(readFormattedText(*options.rtf));
    }
    const auto isTyped = options.text && options.text != "-";
    return richtext::RichTextSerializer::applyingHeading(
        level,
        plainText(isTyped ? *options.text : readText(session.environment().inputDescriptor)));
}

ExitStatus note(Session& session, const NoteOptions& options) {
    auto text = readNote(session, options);
    auto attachments = readAttached(session, options.files);
    const auto place = findPlace(session, options.place);
    printCreated(session, session.entries().createText({
                              .rich = std::move(text),
                              .board = place.board,
                              .after = place.after,
                              .before = place.before,
                              .now = session.now(),
                              .attachments = std::move(attachments),
                          }));
    return ExitStatus::done;
}

void addPlaceOptions(CLI::App& command, PlaceOptions& target) {
    addText(command, "--board", "BOARD", target.board,
            "The board to add to, by name or identifier; the Inbox when it is left out");
    auto* after = addText(command, "--after", "ID", target.after,
                          "Directly after this entry, instead of at the end");
    addText(command, "--before", "ID", target.before, "Directly before this entry")
        ->excludes(after);
}

} // namespace

void addCreationCommands(CLI::App& program, Action& chosen) {
    const auto added =
        addCommand(program, "add", "Adds todos and prints their identifiers", chosen, add);
    addTexts(added.parser, "TEXT", added.options->texts,
             "A todo's text; - stands for standard input, one todo a line");
    addPlaceOptions(added.parser, added.options->place);
    addScheduleOptions(added.parser, added.options->schedule);
    addFiles(added.parser, "--attach", added.options->files,
             "A file to attach, with a single TEXT; up to three times");

    const auto noted =
        addCommand(program, "note", "Adds a text entry and prints its identifier", chosen, note);
    auto* text =
        addText(noted.parser, "TEXT", "TEXT", noted.options->text,
                "Its text, of any number of lines; standard input for - or when it is left out");
    auto* heading =
        noted.parser.add_option("--heading", noted.options->heading, "A heading of this level")
            ->type_name("1|2|3");
    addText(noted.parser, "--rtf", "FILE", noted.options->rtf,
            "A file with formatted text, instead of TEXT")
        ->excludes(text)
        ->excludes(heading);
    addPlaceOptions(noted.parser, noted.options->place);
    addFiles(noted.parser, "--attach", noted.options->files,
             "A file to attach, but not to a heading; up to three times");
}

} // namespace korvex::cli
