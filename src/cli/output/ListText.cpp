#include "cli/output/ListText.h"

#include "cli/output/AttachmentText.h"
#include "cli/output/DueLabels.h"
#include "cli/output/ReadableText.h"
#include "cli/output/StyledText.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "base/ByteSize.h"
#include "base/Text.h"
#include "richtext/stored/EntryText.h"
#include "services/OpenTodos.h"

#include <algorithm>
#include <string>
#include <vector>

namespace korvex::cli {

namespace {

std::string_view mark(const model::Entry& entry) {
    if (!entry.isTodo()) {
        return "   ";
    }
    return entry.isCompleted() ? "[x]" : "[ ]";
}

std::string moment(Session& session, std::optional<base::Instant> instant) {
    return instant && instant->isValid() ? session.formats().dayAndShortTime(*instant)
                                         : std::string();
}

/// The text from the column where it begins.
void printText(Session& session, const model::Entry& entry, std::size_t column) {
    auto& output = session.output();
    auto text = onOneLine(base::trimmed(entry.content()));
    if (const auto mark = attachmentMark(services::attachmentsOf(entry)); !mark.empty()) {
        text.append("  ").append(mark);
    }
    const auto& terminal = session.terminal();
    if (!terminal.isPresent || terminal.width < column + kNarrowestText) {
        output.write(text);
        output.put('\n');
        return;
    }
    std::size_t indent = 0;
    for (const auto piece : wrapped(text, terminal.width - column)) {
        output.spaces(indent);
        output.write(piece);
        output.put('\n');
        indent = column;
    }
}

void printAttachmentFacts(Session& session, const model::Entry& entry) {
    const auto list = services::attachmentsOf(entry);
    if (list.isDamaged) {
        printFact(session, "Attached", "files that cannot be read");
    }
    std::string_view name = "Attached";
    for (const auto& each : list.attachments) {
        printFact(session, name, each.filename + " (" + base::sizeText(each.size) + ")");
        name = "";
    }
}

} // namespace

std::string_view labelStyle(Session& session, const model::Entry& entry) {
    // Only color says so, so without it the calendar need not be asked.
    const auto isLate = session.terminal().hasColor && entry.isOpenTodo() &&
                        entry.schedule().hasDue() &&
                        entry.schedule().isOverdue(session.now(), session.calendar());
    return isLate ? kRed : std::string_view();
}

void printMarkedText(Session& session, const model::Entry& entry, std::size_t column) {
    session.output().write(mark(entry));
    session.output().put(' ');
    printText(session, entry, column + mark(entry).size() + 1);
}

void printFact(Session& session, std::string_view name, std::string_view value) {
    constexpr std::size_t kNameWidth = 12;
    if (value.empty()) {
        return;
    }
    printStyled(session, kDim, name);
    session.output().spaces(kNameWidth - name.size());
    session.output().write(onOneLine(value));
    session.output().put('\n');
}

void printEntries(Session& session, std::span<model::Entry* const> entries, ListDate date) {
    DueLabels dueLabels(session);
    std::vector<base::Uuid> ids;
    std::vector<std::string> labels;
    std::vector<std::size_t> labelWidths;
    ids.reserve(entries.size());
    labels.reserve(entries.size());
    labelWidths.reserve(entries.size());
    for (const auto* entry : entries) {
        ids.push_back(entry->id());
        labels.push_back(date == ListDate::due ? std::string(dueLabels.label(*entry))
                                               : moment(session, entry->completedAt()));
        labelWidths.push_back(displayWidth(labels.back()));
    }
    const auto idWidth = shortIdentifierLength(ids);
    const auto labelWidth =
        labelWidths.empty() ? 0 : *std::max_element(labelWidths.begin(), labelWidths.end());

    auto& output = session.output();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto& entry = *entries[i];
        printStyled(session, kDim, entry.id().text().substr(0, idWidth));
        output.write(kGap);
        auto column = idWidth + kGap.size();
        if (labelWidth > 0) {
            printStyled(session, labelStyle(session, entry), labels[i]);
            output.spaces(labelWidth - labelWidths[i]);
            output.write(kGap);
            column += labelWidth + kGap.size();
        }
        printMarkedText(session, entry, column);
    }
}

std::string textOf(const Session& session, const model::Entry& entry) {
    if (entry.isTodo()) {
        return entry.content();
    }
    const auto text = richtext::wholeRichText(entry, session.serializer());
    return text ? readableText(*text) : entry.content();
}

void printEntry(Session& session, const model::Entry& entry) {
    auto& output = session.output();
    auto text = inLines(textOf(session, entry));
    text.resize(text.find_last_not_of('\n') + 1);
    output.write(text);
    output.write("\n\n");
    printFact(session, "Board", entry.board() ? entry.board()->name() : "");
    // A text entry may keep what it was as a todo: it sleeps.
    if (entry.isTodo()) {
        DueLabels dueLabels(session);
        const auto hasDue = entry.schedule().hasDue();
        printFact(session, "Due", hasDue ? dueLabels.label(entry) : "");
        printFact(session, "Reminder", moment(session, entry.reminderDate()));
        printFact(session, "Completed", moment(session, entry.completedAt()));
    }
    printAttachmentFacts(session, entry);
    printFact(session, "Created", moment(session, entry.createdAt()));
    printFact(session, "Changed", moment(session, entry.updatedAt()));
    printFact(session, "Identifier", entry.id().text());
}

void printBoards(Session& session, std::span<model::Board* const> boards) {
    struct Row {
        std::string name;
        std::size_t nameWidth;
        std::string count;
    };
    std::vector<Row> rows;
    std::size_t nameWidth = 0;
    std::size_t countWidth = 0;
    for (const auto* board : boards) {
        auto name = onOneLine(board->name()) + (board->isArchived() ? " (archived)" : "");
        const auto width = displayWidth(name);
        rows.push_back(
            {std::move(name), width,
             std::to_string(services::openTodoCount(session.context(), *board)) + " open"});
        nameWidth = std::max(nameWidth, width);
        countWidth = std::max(countWidth, rows.back().count.size());
    }
    auto& output = session.output();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        output.write(rows[i].name);
        output.spaces(nameWidth - rows[i].nameWidth + kGap.size());
        output.spaces(countWidth - rows[i].count.size());
        output.write(rows[i].count);
        output.write(kGap);
        printStyled(session, kDim, boards[i]->id().text());
        output.put('\n');
    }
}

} // namespace korvex::cli
