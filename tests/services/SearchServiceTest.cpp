#include "services/SearchService.h"

#include "model/EntryContentLimit.h"
#include "services/ServiceFixture.h"

#include <gmock/gmock.h>

#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace korvex::tests {
namespace {

using model::Board;
using model::Entry;
using services::EntryService;
using services::SearchResult;
using services::SearchResults;
using services::SearchService;
using testing::ElementsAre;
using testing::IsEmpty;

/// Words, and what they are when case and accents make no difference, by hand.
const std::vector<std::pair<std::string, std::string>> kWords{{"milk", "milk"},
                                                              {"Milch", "milch"},
                                                              {"Straße", "strasse"},
                                                              {"STRASSE", "strasse"},
                                                              {"кот", "кот"},
                                                              {"Кот", "кот"},
                                                              {"北京", "北京"},
                                                              {"が", "が"},
                                                              {"か", "か"},
                                                              {"x", "x"},
                                                              {"xy", "xy"},
                                                              {"café", "cafe"},
                                                              {"cafe\u0301", "cafe"},
                                                              {"👍🏽", "👍🏽"},
                                                              {"İ", "i"},
                                                              {"a", "a"},
                                                              {"ab", "ab"},
                                                              {"\n", "\n"},
                                                              {"b", "b"}};

/// What a text of these words and of English letters is then. Shares no code with the search.
std::string plain(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        std::pair<std::string, std::string> longest(
            text.substr(0, 1),
            std::string(
                1, static_cast<char>(text[0] >= 'A' && text[0] <= 'Z' ? text[0] + 32 : text[0])));
        for (const auto& word : kWords) {
            if (text.starts_with(word.first) && word.first.size() > longest.first.size()) {
                longest = word;
            }
        }
        result += longest.second;
        text.remove_prefix(longest.first.size());
    }
    return result;
}

bool containsAll(std::string_view text, std::string_view query) {
    std::istringstream words(plain(query));
    const auto whole = plain(text);
    for (std::string word; words >> word;) {
        if (whole.find(word) == std::string::npos) {
            return false;
        }
    }
    return true;
}

std::vector<SearchResult> all(const SearchResults& results) {
    std::vector<SearchResult> rows;
    for (std::size_t i = 0; i < results.size(); ++i) {
        rows.push_back(results[i]);
    }
    return rows;
}

class SearchTest : public ServiceFixture {
protected:
    void SetUp() override {
        ServiceFixture::SetUp();
        // Later than the fixture's board, which has the same number: so their order is known.
        boards->initializeDefaultBoards({kNow.seconds + 1});
        texts = std::make_unique<services::FoldedTexts>(*context, folding);
        search = std::make_unique<SearchService>(*context, *boards, *texts);
    }

    std::vector<std::string> found(std::string_view query) {
        std::vector<std::string> contents;
        for (const auto& row : all(search->search(query))) {
            contents.push_back(row.content);
        }
        return contents;
    }

    /// What a search has to find, by the plainest of means.
    static std::vector<SearchResult> expected(store::ModelContext& of,
                                              const services::BoardService& boards,
                                              std::string_view query) {
        std::vector<SearchResult> rows;
        if (query.find_first_not_of(" \n") == std::string_view::npos) {
            return rows;
        }
        auto entries = of.fetch<Entry>();
        std::sort(entries.begin(), entries.end(), [](const Entry* left, const Entry* right) {
            const auto key = [](const Entry* entry) {
                return std::tuple(entry->sortOrder(), entry->createdAt().seconds, entry->id());
            };
            return key(left) < key(right);
        });
        for (const auto* board : boards.boards()) {
            if (containsAll(board->name(), query)) {
                rows.push_back({.id = SearchResult::ID::board(board->id()),
                                .boardID = board->id(),
                                .boardName = board->name(),
                                .content = board->name(),
                                .isArchived = board->isArchived()});
            }
            for (const auto* entry : entries) {
                if (entry->boardID() != board->id() || !containsAll(entry->content(), query)) {
                    continue;
                }
                rows.push_back({.id = SearchResult::ID::entry(entry->id()),
                                .boardID = board->id(),
                                .boardName = board->name(),
                                .entryType = entry->type(),
                                .content = entry->content(),
                                .isCompleted = entry->isTodo() && entry->isCompleted(),
                                .isArchived = board->isArchived()});
                if (entry->isTodo()) {
                    rows.back().schedule = entry->schedule();
                }
            }
        }
        return rows;
    }

    Entry& insert(std::string content, Board* on) {
        auto& entry = context->insert(std::make_unique<Entry>(model::EntryFields{
            .id = base::Uuid::random(), .typeRawValue = "todo", .content = std::move(content)}));
        entry.setBoard(on);
        return entry;
    }

    base::TextFolding folding{"en_US"};
    std::unique_ptr<services::FoldedTexts> texts;
    std::unique_ptr<SearchService> search;
};

TEST(SearchTerms, AreThePiecesBetweenWhiteSpaceOfAnyKind) {
    const std::vector<std::string> buyMilk{"buy", "milk"};
    EXPECT_EQ(SearchService::terms("  buy \t\n milk  "), buyMilk);
    for (const char* space :
         {"\t", "\n", "\v", "\f", "\r", "\r\n", " ", "\u0085", "\u00a0", "\u1680", "\u2000",
          "\u2003", "\u200a", "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"}) {
        EXPECT_EQ(SearchService::terms(std::string("buy") + space + "milk" + space), buyMilk);
        EXPECT_THAT(SearchService::terms(space), IsEmpty());
    }
    // No white space to Unicode.
    EXPECT_THAT(SearchService::terms("a\u200bb"), ElementsAre("a\u200bb"));

    const base::TextFolding folding("en_US");
    EXPECT_THAT(SearchService::foldedTerms("Café CAFE  \u0301 Straße", folding),
                testing::UnorderedElementsAre("cafe", "strasse"));
    EXPECT_TRUE(SearchService::matches("Milk: buy 2", "buy milk", folding));
    EXPECT_FALSE(SearchService::matches("buy bread", "buy milk", folding));
    EXPECT_TRUE(SearchService::matches("anything", " \n ", folding));
}

TEST(SearchTerms, OfALongQueryTheBeginningCounts) {
    const base::TextFolding folding("en_US");
    std::string query;
    while (query.size() < 10 * SearchService::kMaximumQuery) {
        query += "word" + std::to_string(query.size()) + "é ";
    }
    const auto terms = SearchService::foldedTerms(query, folding);
    EXPECT_GT(terms.size(), SearchService::kMaximumQuery / 20);
    EXPECT_LT(terms.size(), SearchService::kMaximumQuery / 5);
    // A word counts whole or not at all: cut, it would find what nobody asked for.
    const std::string filler(SearchService::kMaximumQuery - 3, 'x');
    for (const auto& [word, text, isFound] :
         std::vector<std::tuple<std::string, std::string, bool>>{
             {" whole", "who", false},
             {" whole", "whole", true},
             {"é", "é", true},
             {"   gone", "", true},
         }) {
        EXPECT_EQ(SearchService::matches(filler + (word[0] == ' ' ? " " : "") + text, filler + word,
                                         folding),
                  isFound)
            << word;
    }
    const std::string one(2 * SearchService::kMaximumQuery, 'x');
    EXPECT_FALSE(SearchService::matches(filler, one, folding));
    const std::string longest(model::EntryContentLimit::kMaximumBytes, 'x');
    const auto ofTooLong = SearchService::foldedTerms("a " + longest + longest, folding);
    EXPECT_THAT(ofTooLong, ElementsAre("a", longest + 'x')) << "as much as finds nothing";
}

TEST_F(SearchTest, FindsEveryWordOfTheQueryInAnyOrder) {
    add({"Milk: buy 2", "buy bread", "Café im Straßenbahndepot", "我们明天去北京买牛奶",
         "キーボードを買う", "Нужно купить молоко", "Émile’s naïve résumé",
         "line one\u2028line two"});
    struct Case {
        std::string query;
        std::vector<std::string> found;
    };
    for (const auto& [query, result] : std::vector<Case>{
             {"buy milk", {"Milk: buy 2"}},
             {"MILK BUY", {"Milk: buy 2"}},
             {"b", {"Milk: buy 2", "buy bread", "Café im Straßenbahndepot", "Inbox"}},
             {"buy buy bu b", {"Milk: buy 2", "buy bread"}},
             {"uy", {"Milk: buy 2", "buy bread"}},
             {"cafe strasse", {"Café im Straßenbahndepot"}},
             {"bahndepot STRAẞE", {"Café im Straßenbahndepot"}},
             {"北京", {"我们明天去北京买牛奶"}},
             {"奶 北", {"我们明天去北京买牛奶"}},
             {"ｷｰﾎﾞｰﾄﾞ", {"キーボードを買う"}},
             {"МОЛОКО\u3000купить", {"Нужно купить молоко"}},
             {"resume emile", {"Émile’s naïve résumé"}},
             {"line\ttwo", {"line one\u2028line two"}},
             {"onel", {}},
             {"milkbuy", {}},
             // Within the terms side by side, and within none of them.
             {"buy bread db", {}},
             {" \u3000\n", {}},
             {"", {}},
             {"\u0301", {}},
         }) {
        EXPECT_EQ(found(query), result) << query;
    }
}

TEST_F(SearchTest, RowsSayWhatWasFoundAndWhere) {
    auto& shed = boards->createBoard("Garden shed", kNow);
    auto& old = boards->createBoard("Old garden", kNow);
    const auto open = add({"garden: open", "garden: done", "garden: last"});
    entries->completeTodo(*open[1], kNow);
    entries->updateSchedule(*open[2], {.dueDay = 20250310}, kNow);
    auto& text = entries->createText(
        {.rich = richtext::RichTextSerializer::plainRichText("The garden\nin May"),
         .board = shed,
         .now = kNow});
    entries->createTodos({.contents = {"garden of old"}, .board = old, .now = kNow});
    boards->setArchived(true, old, kNow);

    const auto results = search->search("garden");
    const auto rows = all(results);
    EXPECT_EQ(rows, expected(*context, *boards, "garden"));
    struct Row {
        std::string content;
        std::string kind;
        std::string symbol;
        std::string board;
        bool isArchived;
        bool operator==(const Row&) const = default;
    };
    std::vector<Row> seen;
    for (const auto& row : rows) {
        seen.push_back({row.content, std::string(row.kind()), std::string(row.symbol()),
                        row.boardName, row.isArchived});
    }
    EXPECT_EQ(seen, (std::vector<Row>{
                        {"garden: open", "Todo", "circle", "Home", false},
                        {"garden: last", "Todo", "circle", "Home", false},
                        {"garden: done", "Completed Todo", "checkmark.circle", "Home", false},
                        {"Garden shed", "Board", "rectangle.stack", "Garden shed", false},
                        {"The garden\nin May", "Text", "text.alignleft", "Garden shed", false},
                        {"Old garden", "Board", "rectangle.stack", "Old garden", true},
                        {"garden of old", "Todo", "circle", "Old garden", true},
                    }));
    EXPECT_EQ(rows[1].schedule, (model::TodoSchedule{.dueDay = 20250310}));
    EXPECT_EQ(results.entry(4), &text);
    EXPECT_EQ(results.entry(3), nullptr);
    EXPECT_EQ(&results.board(4), &shed);
    EXPECT_EQ(results.id(3), SearchResult::ID::board(shed.id()));
    EXPECT_EQ(results.id(4), SearchResult::ID::entry(text.id()));
}

TEST_F(SearchTest, WhatStandsOnNoVisibleBoardIsNotFound) {
    const auto hidden = [&](model::BoardFields fields) -> Board& {
        fields.id = base::Uuid::random();
        fields.sortOrder = 99;
        return context->insert(std::make_unique<Board>(std::move(fields)));
    };
    auto& duplicate = hidden({.name = "Inbox", .isSystem = true, .systemIdentifier = "inbox"});
    auto& merged = hidden({.name = "Merged", .mergedIntoBoardID = board->id()});
    insert("lost on a duplicate", &duplicate);
    insert("lost on a merged board", &merged);
    insert("lost on no board", nullptr);
    insert("lost and found", board);
    context->save();
    EXPECT_THAT(found("lost"), ElementsAre("lost and found"));
    EXPECT_THAT(found("inbox"), ElementsAre("Inbox"));
    EXPECT_THAT(found("merged"), IsEmpty());
    merged.setValue(Board::mergedIntoBoardIDField, store::Value());
    EXPECT_THAT(found("merged"), ElementsAre("Merged", "lost on a merged board"));
}

TEST_F(SearchTest, FoldedTextsAreThoseOfTheEntriesAsTheyAreNow) {
    auto* entry = add({"First"}).front();
    EXPECT_EQ(texts->folded(*entry), "first");
    entry->setContent("Sécond");
    EXPECT_EQ(texts->folded(*entry), "second");
    context->rollback();
    EXPECT_EQ(texts->folded(*entry), "first");
    EXPECT_THAT(found("first"), ElementsAre("First"));
    entries->updateTodo(*entry, "Third", kNow);
    EXPECT_EQ(texts->folded(*entry), "third");
    EXPECT_THAT(found("first"), IsEmpty());
}

TEST_F(SearchTest, ChangesTakenBackWithoutAWordAreSeen) {
    auto& entry = *add({"First"}).front();
    EXPECT_THAT(found("first"), ElementsAre("First"));
    entry.setContent("Second");
    board->setName("Elsewhere");
    auto& other = insert("Second too", board);
    EXPECT_EQ(found("second").size(), 2U);
    EXPECT_THAT(found("elsewhere"), ElementsAre("Elsewhere"));
    entry.setContent("First");
    board->setName("Home");
    context->remove(other);
    ASSERT_FALSE(context->hasChanges());
    EXPECT_THAT(found("second"), IsEmpty());
    EXPECT_THAT(found("first"), ElementsAre("First"));
    EXPECT_THAT(found("elsewhere"), IsEmpty());
}

TEST_F(SearchTest, OthersDeletionsAreSeenWithoutRecordsOfThem) {
    const auto ids = [&] {
        std::vector<base::Uuid> result;
        for (const auto* entry : add({"one here", "two here", "three here"})) {
            result.push_back(entry->id());
        }
        return result;
    }();
    // A context that has never made a record of them.
    store::ModelContext reader(*container);
    services::BoardService readersBoards(reader, reminders, widgets, log);
    services::FoldedTexts readersTexts(reader, folding);
    SearchService readersSearch(reader, readersBoards, readersTexts);
    ASSERT_EQ(readersSearch.search("here").size(), 3U);

    // The last one: no other entry changes its place.
    entries->deleteEntry(*context->find<Entry>(ids[2]));
    const auto stale = readersSearch.search("three");
    EXPECT_EQ(all(stale)[0].content, "");
    EXPECT_EQ(stale.entry(0), nullptr);
    reader.refresh();
    readersBoards.createBoard("Of its own", kNow);
    EXPECT_EQ(readersSearch.search("here").size(), 2U);
    // The store gives the last row's number to the next one.
    entries->deleteEntry(*context->find<Entry>(ids[1]));
    add({"four here"});
    reader.refresh();
    EXPECT_EQ(all(readersSearch.search("here")), expected(reader, readersBoards, "here"));
}

TEST_F(SearchTest, WhatComesInThousandsIsFoundToo) {
    add({"one here"});
    ASSERT_EQ(search->search("here").size(), 1U);
    add(std::vector<std::string>(3000, "many here"));
    EXPECT_EQ(search->search("here").size(), 3001U);
    EXPECT_EQ(search->search("one").size(), 1U);
}

/// Changes of all kinds, here and elsewhere, saved and not; after each the search finds what a
/// fresh look at all records finds.
class RandomSearchTest : public SearchTest, public testing::WithParamInterface<unsigned> {
protected:
    int below(std::size_t bound) {
        return std::uniform_int_distribution(0, static_cast<int>(bound) - 1)(m_random);
    }
    template <typename List>
    auto& any(List& list) {
        return list[static_cast<std::size_t>(below(list.size()))];
    }

    std::string words() {
        auto text = any(kWords).first;
        for (auto more = below(4); more > 0; --more) {
            text += (below(3) == 0 ? "" : " ") + any(kWords).first;
        }
        return text;
    }
    std::string content() { return words() + (below(100) == 0 ? std::string(300'000, 'z') : ""); }

    void changeSomething(services::EntryService& service, services::BoardService& boardService,
                         store::ModelContext& of) {
        auto all = of.fetch<Entry>();
        auto visible = boardService.boards();
        std::erase_if(all, [](const Entry* entry) { return entry->board() == nullptr; });
        auto& on = *any(visible);
        switch (all.empty() ? 0 : below(14)) {
        case 0:
        case 1:
            service.createTodos(
                {.contents = {content(), content() + "!"}, .board = on, .now = kNow});
            break;
        case 2:
        case 3:
            service.updateTodo(*any(all), content(), kNow);
            break;
        case 4:
            service.completeTodo(*any(all), kNow);
            break;
        case 5:
            service.moveEntry(*any(all), on, kNow, 0);
            break;
        case 6:
        case 7:
            service.deleteEntry(*any(all));
            break;
        case 8:
            boardService.createBoard(words(), kNow);
            break;
        case 9:
            boardService.renameBoard(on, words(), kNow);
            break;
        case 10:
            boardService.reorderBoards(std::vector<Board*>(visible.rbegin(), visible.rend()), kNow);
            break;
        case 11:
            if (!on.isSystem()) {
                boardService.setArchived(!on.isArchived(), on, kNow);
            }
            break;
        case 12:
            if (!on.isSystem() && visible.size() > 3) {
                boardService.deleteBoard(on);
            }
            break;
        default:
            service.restoreTodo(*any(all), kNow, 1);
            break;
        }
    }

    /// Without a word to anybody.
    void leaveSomethingPending() {
        const auto all = context->fetch<Entry>();
        if (all.empty()) {
            return;
        }
        switch (below(4)) {
        case 0:
            any(all)->setContent(content());
            break;
        case 1:
            any(all)->setSortOrder(below(5));
            break;
        case 2:
            context->remove(*any(all));
            break;
        default:
            insert(content(), any(all)->board());
            break;
        }
    }

    void settlePending() {
        switch (below(4)) {
        case 0:
            context->save();
            break;
        case 1:
            context->processPendingChanges();
            break;
        default:
            context->rollback();
            break;
        }
    }

    std::mt19937 m_random{GetParam()};
};

TEST_P(RandomSearchTest, FindsWhatAFreshLookFinds) {
    const auto otherContainer = openContainer();
    store::ModelContext other(*otherContainer);
    services::EntryService othersEntries(other, reminders, widgets, log);
    services::BoardService othersBoards(other, reminders, widgets, log);
    std::size_t found = 0;
    for (int round = 0; round < 300; ++round) {
        try {
            switch (below(8)) {
            case 0:
            case 1:
                if (context->hasChanges()) {
                    context->rollback();
                }
                changeSomething(othersEntries, othersBoards, other);
                context->refresh();
                break;
            case 2:
                leaveSomethingPending();
                break;
            case 3:
                settlePending();
                break;
            case 4:
                search->prepare(std::chrono::milliseconds(below(2)));
                break;
            default:
                if (context->hasChanges()) {
                    context->rollback();
                }
                changeSomething(*entries, *boards, *context);
                break;
            }
        } catch (const base::Error&) {
            // Refused: a text too long, an entry of another type.
            context->rollback();
            other.rollback();
        }
        for (int queries = below(3); queries > 0; --queries) {
            const auto query = words();
            const auto rows = all(search->search(query));
            ASSERT_EQ(rows, expected(*context, *boards, query))
                << "round " << round << ": " << query;
            found += rows.size();
        }
        if (const auto all = context->fetch<Entry>(); !all.empty() && below(2) == 0) {
            const auto* entry = any(all);
            ASSERT_EQ(texts->folded(*entry), folding.folded(entry->content()));
        }
    }
    EXPECT_GT(found, 200U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSearchTest, testing::Range(1U, 5U));

} // namespace
} // namespace korvex::tests
