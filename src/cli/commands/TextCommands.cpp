#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/EntryOutput.h"
#include "cli/output/Json.h"
#include "cli/session/Input.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"

#include "richtext/stored/EntryText.h"

#include <unicode/utf16.h>

namespace korvex::cli {

namespace {

struct EditOptions {
    std::string entry;
    std::optional<std::string> text;
    std::optional<std::string> rtf;
};

struct SplitOptions {
    std::string entry;
    std::int64_t at = 0;
};

struct TypeOptions {
    std::string entry;
    std::string type;
};

model::Entry& findText(Session& session, std::string_view typed) {
    auto& entry = findEntry(session, typed);
    if (entry.isTodo()) {
        throw refusal("A todo has no formatted text. Make it a text entry first: korvex type ID "
                      "text.");
    }
    return entry;
}

void replaceText(Session& session, model::Entry& entry, const richtext::AttributedString& text) {
    session.entries().updateText(entry, text, session.now());
    if (entry.isLive()) {
        printRecord(session, entry);
        return;
    }
    session.remark("Nothing is left of the text, so the entry is deleted.");
    if (session.wantsJson()) {
        Json(session.output()).null();
    }
}

ExitStatus edit(Session& session, const EditOptions& options) {
    if (options.text.has_value() == options.rtf.has_value()) {
        throw wrongUsage("Say what the new text is: TEXT or --rtf FILE.");
    }
    if (options.rtf) {
        const auto text = session.serializer().decode(readFormattedText(*options.rtf));
        const store::LockedStep step(session.context());
        replaceText(session, findText(session, options.entry), text);
        return ExitStatus::done;
    }
    const store::LockedStep step(session.context());
    auto& entry = findEntry(session, options.entry);
    if (entry.isTodo()) {
        session.entries().updateTodo(entry, *options.text, session.now());
        printRecord(session, entry);
    } else {
        replaceText(session, entry, plainText(*options.text));
    }
    return ExitStatus::done;
}

/// The offset, if it is one of the text and stands between two characters.
std::size_t checkedOffset(std::int64_t typed, std::u16string_view text) {
    if (typed < 0 || static_cast<std::uint64_t>(typed) > text.size()) {
        throw refusal("The text has the offsets 0 to " + std::to_string(text.size()) + ".");
    }
    const auto offset = static_cast<std::size_t>(typed);
    if (offset > 0 && offset < text.size() && U16_IS_LEAD(text[offset - 1]) &&
        U16_IS_TRAIL(text[offset])) {
        throw refusal("Offset " + std::to_string(typed) + " lies inside a character.");
    }
    return offset;
}

ExitStatus split(Session& session, const SplitOptions& options) {
    const store::LockedStep step(session.context());
    auto& entry = findText(session, options.entry);
    const auto text = richtext::wholeRichText(entry, session.serializer());
    if (!text) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::contentTooLong);
    }
    const auto at = checkedOffset(options.at, text->text());
    printCreated(session, session.entries().splitText(entry, text->slice({0, at}),
                                                      text->slice({at, text->length() - at}),
                                                      session.now()));
    return ExitStatus::done;
}

ExitStatus changeType(Session& session, const TypeOptions& options) {
    const auto type = model::entryType(options.type);
    if (options.type != model::rawValue(type)) {
        throw wrongUsage("A type is todo or text.");
    }
    auto& entry = findEntry(session, options.entry);
    session.entries().changeType(entry, type, session.now());
    printRecord(session, entry);
    return ExitStatus::done;
}

} // namespace

void addTextCommands(CLI::App& program, Action& chosen) {
    const auto edited = addCommand(program, "edit", "Gives an entry another text", chosen, edit);
    addText(edited.parser, "ID", "ID", edited.options->entry, kEntryHelp)->required();
    addText(edited.parser, "TEXT", "TEXT", edited.options->text,
            "Its new text; a text entry loses its formatting with the old one");
    addText(edited.parser, "--rtf", "FILE", edited.options->rtf,
            "A file with formatted text, instead of TEXT; only for a text entry");
    edited.parser.footer("A text entry of which nothing but white space would be left is deleted.");

    const auto halved = addCommand(
        program, "split", "Makes two of a text entry and prints the identifier of the second",
        chosen, split);
    addText(halved.parser, "ID", "ID", halved.options->entry, kEntryHelp)->required();
    halved.parser
        .add_option("--at", halved.options->at,
                    "Where the second one begins, in UTF-16 units of the text from 0")
        ->type_name("N")
        ->required();

    const auto changed =
        addCommand(program, "type", "Makes a text entry of a todo, or the other way round", chosen,
                   changeType);
    addText(changed.parser, "ID", "ID", changed.options->entry, kEntryHelp)->required();
    addText(changed.parser, "TYPE", "TYPE", changed.options->type, "todo or text")->required();
    changed.parser.footer(
        "A text becomes a todo of one line, without its formatting. A todo becomes a text that is\n"
        "not completed; its due date and its reminder come back when it is a todo again.");
}

} // namespace korvex::cli
