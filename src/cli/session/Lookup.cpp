#include "cli/session/Lookup.h"

#include "cli/session/Session.h"
#include "cli/terminal/CommandLineError.h"

#include "base/HexDigit.h"
#include "base/Text.h"
#include "services/AttachmentList.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <string>

namespace korvex::cli {

namespace {

using store::FieldReference;

constexpr std::size_t kIdentifierDigits = 32;
constexpr std::size_t kShownMatches = 4;

/// All identifiers that begin with the digits typed.
struct IdentifierRange {
    base::Uuid first;
    base::Uuid last;
    std::size_t digits = 0;

    bool isWhole() const { return digits == kIdentifierDigits; }
    bool contains(const base::Uuid& id) const { return first <= id && id <= last; }
};

/// Absent for what is no beginning of an identifier.
std::optional<IdentifierRange> identifierRange(std::string_view typed) {
    IdentifierRange range;
    range.last.bytes.fill(0xFF);
    for (const auto character : typed) {
        if (character == '-') {
            continue;
        }
        const auto value = base::hexDigit(character);
        if (value < 0 || range.isWhole()) {
            return std::nullopt;
        }
        const auto byte = range.digits / 2;
        const auto isHigh = range.digits % 2 == 0;
        const auto shifted = static_cast<std::uint8_t>(isHigh ? value << 4 : value);
        range.first.bytes[byte] = static_cast<std::uint8_t>(range.first.bytes[byte] | shifted);
        range.last.bytes[byte] =
            static_cast<std::uint8_t>(range.first.bytes[byte] | (isHigh ? 0x0F : 0));
        ++range.digits;
    }
    return range;
}

std::string quoted(std::string_view typed) {
    return "\"" + std::string(typed) + "\"";
}

icu::UnicodeString caseFolded(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
               icu::StringPiece(text.data(), static_cast<int>(text.size())))
        .foldCase();
}

std::vector<model::Board*> boardsNamed(const std::vector<model::Board*>& boards,
                                       std::string_view name) {
    std::vector<model::Board*> matches;
    std::copy_if(boards.begin(), boards.end(), std::back_inserter(matches),
                 [&](const auto* board) { return board->name() == name; });
    if (matches.empty()) {
        const auto folded = caseFolded(name);
        std::copy_if(boards.begin(), boards.end(), std::back_inserter(matches),
                     [&](const auto* board) { return caseFolded(board->name()) == folded; });
    }
    return matches;
}

std::string identifierList(const std::vector<base::Uuid>& ids) {
    std::string list;
    for (const auto& id : ids) {
        list += (list.empty() ? "" : ", ") + id.text();
    }
    return list;
}

template <typename T>
std::string identifierList(const std::vector<T*>& records) {
    std::vector<base::Uuid> ids;
    ids.reserve(records.size());
    for (const auto* record : records) {
        ids.push_back(record->id());
    }
    return identifierList(ids);
}

template <typename Predicate>
std::vector<base::Uuid> attachmentsWith(const services::AttachmentList& list,
                                        Predicate&& predicate) {
    std::vector<base::Uuid> ids;
    for (const auto& each : list.attachments) {
        if (predicate(each)) {
            ids.push_back(each.id);
        }
    }
    return ids;
}

std::vector<model::Entry*> entriesIn(const IdentifierRange& range, Session& session) {
    const FieldReference id{model::Entry::idField};
    return session.context().fetch<model::Entry>(
        {.condition = id >= range.first && id <= range.last, .limit = kShownMatches});
}

} // namespace

model::Board& findBoard(Session& session, std::string_view typed) {
    const auto name = base::trimmed(typed);
    const auto range = identifierRange(name);
    if (range && range->isWhole()) {
        if (auto* board = session.boards().board(range->first)) {
            return *board;
        }
    }
    const auto matches = boardsNamed(session.boards().boards(), name);
    if (matches.empty()) {
        throw refusal("There is no board " + quoted(typed) + ".");
    }
    if (matches.size() > 1) {
        throw refusal("There are " + std::to_string(matches.size()) + " boards named " +
                      quoted(name) + ". Name one by its identifier: " + identifierList(matches) +
                      ".");
    }
    return *matches.front();
}

model::Board& findBoardOrInbox(Session& session, const std::optional<std::string>& typed) {
    if (typed) {
        return findBoard(session, *typed);
    }
    if (auto* inbox = session.boards().inboxBoard()) {
        return *inbox;
    }
    throw refusal("This store has no Inbox.");
}

model::Entry& findEntry(Session& session, std::string_view typed) {
    const auto range = identifierRange(base::trimmed(typed));
    if (!range) {
        throw refusal(quoted(typed) + " is no identifier of an entry.");
    }
    if (range->digits < kMinimumPrefix) {
        throw refusal(quoted(typed) +
                      " is too short: give at least 4 characters of an identifier.");
    }
    const auto matches = entriesIn(*range, session);
    if (matches.empty()) {
        throw refusal("There is no entry " + quoted(typed) + ".");
    }
    if (matches.size() > 1) {
        const auto* more = matches.size() == kShownMatches ? ", …" : "";
        throw refusal("Several entries begin with " + quoted(typed) +
                      ". Give more characters: " + identifierList(matches) + more + ".");
    }
    return *matches.front();
}

base::Uuid findTarget(Session& session, std::string_view typed) {
    const auto range = identifierRange(base::trimmed(typed));
    return range && range->isWhole() ? range->first : findEntry(session, typed).id();
}

base::Uuid findAttachment(const model::Entry& entry, std::string_view typed) {
    const auto list = services::attachmentsOf(entry);
    if (list.isDamaged) {
        throw model::AttachmentError(model::AttachmentErrorCase::invalidData);
    }
    auto matches = attachmentsWith(list, [&](const auto& each) { return each.filename == typed; });
    if (matches.size() > 1) {
        throw refusal(std::to_string(matches.size()) + " attachments are named " + quoted(typed) +
                      ". Name one by its identifier: " + identifierList(matches) + ".");
    }
    const auto range = identifierRange(base::trimmed(typed));
    if (matches.empty() && range && range->digits >= kMinimumPrefix) {
        matches = attachmentsWith(list, [&](const auto& each) { return range->contains(each.id); });
    }
    if (matches.empty()) {
        throw refusal("The entry has no attachment " + quoted(typed) + ".");
    }
    if (matches.size() > 1) {
        throw refusal("Several attachments begin with " + quoted(typed) +
                      ". Give more characters: " + identifierList(matches) + ".");
    }
    return matches.front();
}

std::size_t shortIdentifierLength(std::span<const base::Uuid> ids) {
    constexpr std::size_t kUsualLength = 8;
    std::vector<base::Uuid> sorted(ids.begin(), ids.end());
    std::sort(sorted.begin(), sorted.end());
    auto length = kUsualLength;
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        // Only neighbours that share their first four bytes need more.
        if (std::equal(sorted[i].bytes.begin(), sorted[i].bytes.begin() + kUsualLength / 2,
                       sorted[i - 1].bytes.begin())) {
            const auto left = sorted[i - 1].text();
            const auto right = sorted[i].text();
            const auto differ = std::mismatch(left.begin(), left.end(), right.begin()).first;
            length = std::max(length, static_cast<std::size_t>(differ - left.begin()) + 1);
        }
    }
    return length;
}

} // namespace korvex::cli
