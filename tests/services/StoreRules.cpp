#include "services/StoreRules.h"

#include "base/Utf16.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "model/EntryAttachment.h"
#include "richtext/stored/RichTextSerializer.h"
#include "store/ModelContext.h"
#include "support/SilentLog.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace korvex::tests {

using backup::BackupDocument;
using model::Board;
using model::Entry;

namespace {

auto keyOf(const auto* record) {
    return std::tuple(record->sortOrder(), record->createdAt().seconds, record->id());
}

template <typename Record>
std::vector<Record*> inOrder(store::ModelContext& context) {
    auto all = context.fetch<Record>();
    std::sort(all.begin(), all.end(),
              [](const auto* left, const auto* right) { return keyOf(left) < keyOf(right); });
    return all;
}

bool isBlankOrPadded(const std::string& text) {
    const auto isBlank = [](char character) {
        return character == ' ' || (character >= '\t' && character <= '\r');
    };
    return text.empty() || isBlank(text.front()) || isBlank(text.back());
}

bool isDay(base::DayNumber number) {
    static constexpr int kDays[]{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const auto year = number / 10'000;
    const auto month = number / 100 % 100;
    const auto isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month >= 1 && month <= 12 && number % 100 >= 1 &&
           number % 100 <= kDays[month - 1] + (isLeap && month == 2 ? 1 : 0);
}

class Rules {
public:
    explicit Rules(store::ModelContainer& container) : m_context(container) {}

    std::vector<std::string> broken(const base::Uuid& inbox) {
        boards(inbox);
        std::map<base::Uuid, std::vector<const Entry*>> onBoards;
        for (const auto* const each : inOrder<Entry>(m_context)) {
            entry(*each);
            if (const auto* const board = each->board()) {
                onBoards[board->id()].push_back(each);
            } else {
                require(false, *each, "stands on no board");
            }
        }
        for (const auto& [board, entries] : onBoards) {
            numbers(entries);
        }
        return std::move(m_broken);
    }

private:
    void require(bool holds, const Entry& entry, const char* otherwise) {
        if (!holds) {
            m_broken.push_back("\"" + entry.content().substr(0, 40) + "\" " + otherwise);
        }
    }
    void require(bool holds, const Board& board, const char* otherwise) {
        if (!holds) {
            m_broken.push_back("board \"" + board.name() + "\" " + otherwise);
        }
    }

    void boards(const base::Uuid& inbox) {
        const Board* shown = nullptr;
        for (const auto* const board : inOrder<Board>(m_context)) {
            require(!isBlankOrPadded(board->name()), *board, "has no proper name");
            require(board->sortOrder() >= 0, *board, "has no number");
            require(!board->isSystem() || !board->isArchived(), *board, "is archived");
            const auto identifier = board->systemIdentifier().value_or("");
            require(board->isSystem() == !identifier.empty(), *board, "is half a system board");
            if ((identifier == "inbox" || identifier == "today") && !shown) {
                shown = board;
            }
        }
        if (!shown || shown->id() != inbox) {
            m_broken.push_back("the Inbox is not the first Inbox");
        }
    }

    void numbers(const std::vector<const Entry*>& entries) {
        std::int64_t next = 0;
        auto hasCompleted = false;
        for (const auto* const each : entries) {
            require(each->sortOrder() == next, *each, "leaves a gap or is there twice");
            const auto isCompleted = each->typeRawValue() == "todo" && each->isCompleted();
            require(isCompleted || !hasCompleted, *each, "is active behind a completed todo");
            hasCompleted = hasCompleted || isCompleted;
            ++next;
        }
    }

    void entry(const Entry& entry) {
        const auto isTodo = entry.typeRawValue() == "todo";
        require(isTodo || entry.typeRawValue() == "text", entry, "is neither text nor todo");
        require(isTodo || !entry.isCompleted(), entry, "is a completed text");
        require(entry.isCompleted() == entry.completedAt().has_value(), entry,
                "is completed without its moment, or open with one");
        if (isTodo) {
            require(!isBlankOrPadded(entry.content()), entry, "is blank or not trimmed");
            require(!entry.richTextData(), entry, "is a todo with formatting");
            schedule(entry);
        } else {
            text(entry);
        }
        attachments(entry);
    }

    void text(const Entry& entry) {
        require(entry.richTextData().has_value(), entry, "is a text without its formatted form");
        require(std::any_of(entry.content().begin(), entry.content().end(),
                            [](char character) { return character > ' ' || character < 0; }),
                entry, "is a blank text");
        if (entry.richTextData()) {
            require(base::utf8(m_serializer.decode(*entry.richTextData()).text()) ==
                        entry.content(),
                    entry, "says something else when it is formatted");
        }
    }

    void schedule(const Entry& entry) {
        const auto due = entry.dueDate();
        const auto start = entry.dueStartDate();
        require(!entry.dueDay() || (!due && !start), entry, "is due on a day and at a time");
        require(!entry.dueDay() || isDay(*entry.dueDay()), entry, "is due on no day");
        require(!start || (due && start->seconds < due->seconds), entry, "ends before it begins");
    }

    void attachments(const Entry& entry) {
        std::set<base::Uuid> ids;
        for (const auto& each : model::EntryAttachment::decode(entry.attachmentData())) {
            ids.insert(each.id);
        }
        require(!entry.attachmentData() || (!ids.empty() && ids.size() <= 3), entry,
                "has none, too many or doubled attachments");
    }

    SilentLog m_log;
    richtext::RichTextSerializer m_serializer{m_log};
    store::ModelContext m_context;
    std::vector<std::string> m_broken;
};

} // namespace

BackupDocument exported(store::ModelContainer& container) {
    store::ModelContext context(container);
    BackupDocument document{.exportedAt = {1000}, .appVersion = "1"};
    std::map<base::Uuid, std::vector<const Entry*>> onBoards;
    for (const auto* const entry : inOrder<Entry>(context)) {
        onBoards[*entry->boardID()].push_back(entry);
    }
    for (const auto* const board : inOrder<Board>(context)) {
        document.boards.push_back(backup::recordOf(*board));
        for (const auto* const entry : onBoards[board->id()]) {
            document.entries.push_back(backup::recordOf(*entry, board->id()));
        }
    }
    return document;
}

std::vector<std::string> brokenRules(store::ModelContainer& container, const base::Uuid& inbox) {
    return Rules(container).broken(inbox);
}

} // namespace korvex::tests
