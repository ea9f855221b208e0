#include "cli/output/SearchText.h"

#include "cli/output/DueLabels.h"
#include "cli/output/Json.h"
#include "cli/output/StyledText.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "base/Text.h"

#include <algorithm>
#include <string>
#include <vector>

namespace korvex::cli {

namespace {

struct Row {
    /// This is empty for a board, which is found by its name.
    std::string id;
    std::string kind;
    std::string board;
    std::string due;
    std::string text;
};

constexpr std::string_view kArchived = " (archived)";

Row rowOf(const services::SearchResult& result, const model::Entry* entry, DueLabels& labels) {
    Row row{.kind = std::string(result.kind()), .text = onOneLine(base::trimmed(result.content))};
    auto& name = result.entryType ? row.board : row.text;
    if (result.entryType) {
        row.id = result.id.id.text();
        name = onOneLine(result.boardName);
    }
    if (result.isArchived) {
        name += kArchived;
    }
    if (entry) {
        row.due = labels.label(*entry);
    }
    return row;
}

/// `piece` lies in the text that `ranges` are of, from `offset` on.
void printMarked(Session& session, std::string_view piece, std::size_t offset,
                 const std::vector<base::ByteRange>& ranges) {
    std::size_t done = 0;
    for (const auto& range : ranges) {
        const auto start = std::clamp(range.offset, offset, offset + piece.size()) - offset;
        const auto end =
            std::clamp(range.offset + range.length, offset, offset + piece.size()) - offset;
        session.output().write(piece.substr(done, start - done));
        printStyled(session, kBold, piece.substr(start, end - start));
        done = end;
    }
    session.output().write(piece.substr(done));
}

/// The text from the column where it begins.
void printText(Session& session, std::string_view text, std::size_t column,
               const std::vector<base::ByteRange>& ranges) {
    auto& output = session.output();
    const auto& terminal = session.terminal();
    const auto isWrapped = terminal.isPresent && terminal.width >= column + kNarrowestText;
    std::size_t indent = 0;
    for (const auto piece :
         isWrapped ? wrapped(text, terminal.width - column) : std::vector<std::string_view>{text}) {
        output.spaces(indent);
        printMarked(session, piece, static_cast<std::size_t>(piece.data() - text.data()), ranges);
        output.put('\n');
        indent = column;
    }
}

} // namespace

void printResults(Session& session, const services::SearchResults& results,
                  const std::vector<std::string>& foldedTerms, const base::TextFolding& folding) {
    DueLabels labels(session);
    std::vector<Row> rows;
    std::vector<base::Uuid> ids;
    for (std::size_t i = 0; i < results.size(); ++i) {
        rows.push_back(rowOf(results[i], results.entry(i), labels));
        if (!rows.back().id.empty()) {
            ids.push_back(results.id(i).id);
        }
    }
    const auto idWidth = ids.empty() ? 0 : shortIdentifierLength(ids);
    for (auto& row : rows) {
        row.id.resize(std::min(row.id.size(), idWidth));
    }
    const std::vector<std::pair<std::string Row::*, std::string_view>> columns{
        {&Row::id, kDim}, {&Row::kind, {}}, {&Row::board, {}}, {&Row::due, {}}};
    std::vector<std::size_t> widths;
    for (const auto& [member, style] : columns) {
        std::size_t width = 0;
        for (const auto& row : rows) {
            width = std::max(width, displayWidth(row.*member));
        }
        widths.push_back(width);
    }
    for (const auto& row : rows) {
        std::size_t column = 0;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (widths[i] == 0) {
                continue;
            }
            const auto& text = row.*columns[i].first;
            printStyled(session, columns[i].second, text);
            session.output().spaces(widths[i] - displayWidth(text) + kGap.size());
            column += widths[i] + kGap.size();
        }
        printText(session, row.text, column,
                  session.terminal().hasColor ? folding.ranges(row.text, foldedTerms)
                                              : std::vector<base::ByteRange>());
    }
}

void writeResults(Session& session, const services::SearchResults& results) {
    DueLabels labels(session);
    Json json(session.output());
    json.beginArray();
    for (std::size_t i = 0; i < results.size(); ++i) {
        const auto result = results[i];
        json.beginObject();
        json.member("kind", result.kind());
        json.member("symbol", result.symbol());
        json.member("boardID", std::string_view(result.boardID.text()));
        json.member("boardName", std::string_view(result.boardName));
        if (result.entryType) {
            json.member("entryID", std::string_view(result.id.id.text()));
        }
        json.member("content", std::string_view(result.content));
        json.flag("isCompleted", result.isCompleted);
        json.flag("isArchived", result.isArchived);
        if (const auto* entry = results.entry(i)) {
            if (const auto label = labels.label(*entry); !label.empty()) {
                json.member("dueLabel", label);
            }
        }
        json.endObject();
    }
    json.endArray();
}

} // namespace korvex::cli
