#include "cli/output/BackupText.h"

#include "cli/output/Json.h"
#include "cli/output/ListText.h"
#include "cli/output/StyledText.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "base/ByteSize.h"

#include <algorithm>
#include <array>
#include <vector>

namespace korvex::cli {

namespace {

/// The members of the object that stands for a backup.
void writeSummary(Json& json, const std::filesystem::path& file,
                  const std::optional<storage::BackupSummary>& summary, std::uintmax_t bytes) {
    json.member("file", std::string_view(file.native()));
    if (summary) {
        json.member("exportedAt", std::string_view(base::isoText(summary->exportedAt)));
        json.member("boardCount", static_cast<std::int64_t>(summary->boards));
        json.member("entryCount", static_cast<std::int64_t>(summary->entries));
    }
    json.member("bytes", static_cast<std::int64_t>(bytes));
}

std::string counted(std::size_t count, std::string_view one, std::string_view several) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : several);
}

void writeJson(Session& session, std::span<const ReadBackup> backups) {
    Json json(session.output());
    json.beginArray();
    for (const auto& each : backups) {
        json.beginObject();
        writeSummary(json, each.listed.file, each.summary, each.listed.bytes);
        json.flag("isSound", each.summary.has_value());
        if (!each.summary) {
            json.member("problem", std::string_view(each.problem));
        }
        json.endObject();
    }
    json.endArray();
}

} // namespace

void printBackup(Session& session, std::string_view text, const std::filesystem::path& file,
                 const storage::BackupSummary& summary) {
    if (session.wantsJson()) {
        Json json(session.output());
        json.beginObject();
        writeSummary(json, file, summary, summary.bytes);
        json.endObject();
        return;
    }
    session.output().write(text);
    session.output().put('\n');
    printFact(session, "Boards", std::to_string(summary.boards));
    printFact(session, "Entries", std::to_string(summary.entries));
    printFact(session, "Size", base::sizeText(summary.bytes));
}

void printBackups(Session& session, std::span<const ReadBackup> backups) {
    if (session.wantsJson()) {
        writeJson(session, backups);
        return;
    }
    constexpr std::size_t kColumns = 5;
    using Row = std::array<std::string, kColumns>;
    std::vector<Row> rows;
    std::array<std::size_t, kColumns> widths{};
    for (const auto& [listed, summary, problem] : backups) {
        const auto date = summary ? summary->exportedAt : listed.modifiedAt;
        rows.push_back({date.isValid() ? session.formats().dayAndShortTime(date) : "",
                        summary ? counted(summary->boards, "board", "boards") : "",
                        summary ? counted(summary->entries, "entry", "entries") : "",
                        base::sizeText(listed.bytes), summary ? "sound" : "damaged"});
        for (std::size_t column = 0; column < kColumns; ++column) {
            widths[column] = std::max(widths[column], displayWidth(rows.back()[column]));
        }
    }
    auto& output = session.output();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto style = backups[i].summary ? std::string_view() : kRed;
        for (std::size_t column = 0; column < kColumns; ++column) {
            if (widths[column] == 0) {
                continue;
            }
            const auto& text = rows[i][column];
            printStyled(session, column + 1 == kColumns ? style : std::string_view(), text);
            output.spaces(widths[column] - displayWidth(text));
            output.write(kGap);
        }
        output.write(onOneLine(backups[i].listed.file.native()));
        output.put('\n');
    }
}

} // namespace korvex::cli
