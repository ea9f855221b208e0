#include "cli/output/BackupText.h"

#include "cli/output/Json.h"
#include "cli/output/ListText.h"
#include "cli/output/StyledText.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "base/ByteSize.h"
#include "base/CountText.h"

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

std::string stateText(BackupState state) {
    switch (state) {
    case BackupState::sound:
        return "sound";
    case BackupState::damaged:
        return "damaged";
    case BackupState::unsupported:
        return "unsupported version";
    case BackupState::tooLarge:
        return "too large";
    case BackupState::unreadable:
        return "unreadable";
    }
    return {};
}

/// For programs.
std::string_view rawValue(BackupState state) {
    switch (state) {
    case BackupState::sound:
        return "sound";
    case BackupState::damaged:
        return "damaged";
    case BackupState::unsupported:
        return "unsupportedVersion";
    case BackupState::tooLarge:
        return "tooLarge";
    case BackupState::unreadable:
        return "unreadable";
    }
    return {};
}

void writeJson(Session& session, std::span<const ReadBackup> backups,
               std::span<const std::string> unlisted) {
    Json json(session.output());
    json.beginArray();
    for (const auto& each : backups) {
        json.beginObject();
        writeSummary(json, each.listed.file, each.summary, each.listed.bytes);
        json.flag("isSound", each.state == BackupState::sound);
        json.member("state", rawValue(each.state));
        if (!each.summary) {
            json.member("problem", std::string_view(each.problem));
        }
        json.endObject();
    }
    for (const auto& problem : unlisted) {
        json.beginObject();
        json.member("state", rawValue(BackupState::unreadable));
        json.member("problem", std::string_view(problem));
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
    printFact(session, "File", file.native());
    printFact(session, "Boards", base::numberText(summary.boards));
    printFact(session, "Entries", base::numberText(summary.entries));
    printFact(session, "Size", base::sizeText(summary.bytes));
}

void printBackups(Session& session, std::span<const ReadBackup> backups,
                  std::span<const std::string> unlisted) {
    if (session.wantsJson()) {
        writeJson(session, backups, unlisted);
        return;
    }
    constexpr std::size_t kColumns = 5;
    using Row = std::array<std::string, kColumns>;
    std::vector<Row> rows;
    std::array<std::size_t, kColumns> widths{};
    for (const auto& [listed, summary, state, problem] : backups) {
        const auto date = summary ? summary->exportedAt : listed.modifiedAt;
        rows.push_back({date.isValid() ? session.formats().dayAndShortTime(date) : "",
                        summary ? base::countText(summary->boards, "board", "boards") : "",
                        summary ? base::countText(summary->entries, "entry", "entries") : "",
                        base::sizeText(listed.bytes), stateText(state)});
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
