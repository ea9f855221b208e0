#include "cli/output/GroupText.h"

#include "cli/output/DueLabels.h"
#include "cli/output/StyledText.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "model/Board.h"

#include <algorithm>

namespace korvex::cli {

namespace {

/// A text in a column, with the width that a terminal gives it.
struct Cell {
    explicit Cell(std::string itsText) : text(std::move(itsText)), width(displayWidth(text)) {}

    std::string text;
    std::size_t width;
};

struct Line {
    const model::Entry* entry;
    Cell date;
    Cell board;
};

std::string time(Session& session, const model::Entry& entry) {
    const auto at = entry.completedAt();
    return at && at->isValid() ? session.formats().shortTime(*at) : std::string();
}

std::size_t widest(const std::vector<Line>& lines, Cell Line::*column) {
    std::size_t width = 0;
    for (const auto& line : lines) {
        width = std::max(width, (line.*column).width);
    }
    return width;
}

} // namespace

void printGroups(Session& session, const std::vector<TitledEntries>& groups, ListDate date) {
    DueLabels labels(session);
    std::vector<base::Uuid> ids;
    std::vector<Line> lines;
    for (const auto& group : groups) {
        for (const auto* entry : group.entries) {
            ids.push_back(entry->id());
            const auto* board = entry->board();
            lines.push_back({.entry = entry,
                             .date = Cell(date == ListDate::due ? std::string(labels.label(*entry))
                                                                : time(session, *entry)),
                             .board = Cell(board ? onOneLine(board->name()) : "")});
        }
    }
    const auto idWidth = shortIdentifierLength(ids);
    const auto dateWidth = widest(lines, &Line::date);
    const auto boardWidth = widest(lines, &Line::board);

    auto& output = session.output();
    auto column = idWidth + kGap.size();
    const auto print = [&](const Cell& cell, std::size_t width, std::string_view style) {
        if (width > 0) {
            printStyled(session, style, cell.text);
            output.spaces(width - cell.width + kGap.size());
            column += width + kGap.size();
        }
    };
    for (auto line = lines.begin(); const auto& group : groups) {
        if (line != lines.begin()) {
            output.put('\n');
        }
        printStyled(session, kBold, group.title);
        output.put('\n');
        for (const auto end = line + std::ssize(group.entries); line != end; ++line) {
            const auto& entry = *line->entry;
            printStyled(session, kDim, entry.id().text().substr(0, idWidth));
            output.write(kGap);
            column = idWidth + kGap.size();
            print(line->date, dateWidth, labelStyle(session, entry));
            print(line->board, boardWidth, {});
            printMarkedText(session, entry, column);
        }
    }
}

} // namespace korvex::cli
