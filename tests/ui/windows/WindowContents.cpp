#include "ui/windows/WindowContents.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/HeadingLevel.h"
#include "ui/kit/words/Text.h"

#include <QBuffer>
#include <QImage>

#include <array>

namespace korvex::tests {

namespace {

using model::TodoSchedule;

constexpr double kHour = 3600;
constexpr double kDay = 24 * kHour;
constexpr std::size_t kMany = 10'000;

richtext::AttributedString table() {
    using richtext::RichTextTable;
    constexpr std::array<std::u16string_view, 12> kCells{
        u"Day",    u"Plan", u"Where",    u"Cost",   u"Friday", u"Old town",
        u"Alfama", u"12",   u"Saturday", u"Museum", u"Belém",  u"20"};
    auto text = RichTextTable::make(3, 4);
    const auto cells = RichTextTable::cells(text, text.styleAt(0).cells.front()->table);
    for (auto i = cells.size(); i-- > 0;) {
        const auto start = cells[i].range.location;
        text.replace({start, 0}, richtext::AttributedString(kCells[i], text.attributesAt(start),
                                                            text.styleAt(start)));
    }
    return text;
}

richtext::AttributedString note() {
    using namespace richtext;
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{disc}"});
    const auto steps = std::make_shared<TextList>(TextList{.marker = u"{decimal}."});
    AttributedString text;
    text.append(u"Trip to Lisbon\n", {.font = fontOf(HeadingLevel::level1)},
                {.spacingBefore = spacingBeforeOf(HeadingLevel::level1)});
    text.append(u"We land on ", {}, {});
    text.append(u"Friday morning", {.font = {.isBold = true}}, {});
    text.append(u", the ferry is booked: ", {}, {});
    text.append(u"example.org/ferry", {.link = "https://example.org/ferry"}, {});
    text.append(u". Nobody has asked Rui for the ", {}, {});
    text.append(u"keys", CodeSyntax::attributes("auto", CodeKind::inlineCode), {});
    text.append(u" yet.\n", {}, {});
    text.append(u"Pack\n", {.font = fontOf(HeadingLevel::level2)},
                {.spacingBefore = spacingBeforeOf(HeadingLevel::level2)});
    text.append(u"Passport\nCharger\n", {}, {.lists = {list}});
    text.append(u"Tell Ada\nWater the plants\n", {}, {.lists = {steps}});
    text.append(table());
    text.append(u"int main() {\n    // how long it takes\n"
                u"    auto minutes = distance(\"Alfama\", \"Belém\") / 4.5;\n"
                u"    return minutes > 45 ? 1 : 0;\n}",
                CodeSyntax::attributes("cpp", CodeKind::block),
                {.lineSpacing = kCodeBlockLineSpacing});
    return text;
}

model::EntryAttachment picture() {
    QImage image(320, 240, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, qRgb(70 + x / 3, 130 + y / 4, 180 - x / 4));
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return {.id = base::Uuid::random(),
            .filename = "meter.png",
            .data = base::Bytes(bytes.begin(), bytes.end())};
}

/// Adds to one board, from its top down.
class Filling {
public:
    Filling(const ui::Workspace& workspace, model::Board& board)
        : m_entries(workspace.entries), m_board(board), m_now(workspace.now()) {}

    model::Entry& add(const char* content, const TodoSchedule& schedule = {}) {
        return *m_entries
                    .createTodos({.contents = {content},
                                  .board = m_board,
                                  .now = m_now,
                                  .schedule = schedule})
                    .front();
    }
    TodoSchedule day(int fromToday) const {
        return TodoSchedule::dueOn(*TodoSchedule::day(m_now + fromToday * kDay, m_calendar));
    }
    void complete(const char* content, int daysAgo) {
        m_entries.completeTodo(add(content), m_now, m_now + -daysAgo * kDay);
    }

private:
    services::EntryService& m_entries;
    model::Board& m_board;
    base::Instant m_now;
    base::Calendar m_calendar{base::TimeZone::utc()};
};

void fillInbox(const ui::Workspace& workspace, model::Board& inbox) {
    const auto now = workspace.now();
    Filling filling(workspace, inbox);
    filling.add("Renew passport", filling.day(-1));
    filling.add("Buy milk", filling.day(0));
    const auto nine = now + kDay + kHour;
    filling.add("Water the plants",
                {.dueDate = nine + kHour, .dueStartDate = nine, .reminderDate = nine + -kHour / 4});
    auto& call =
        filling.add("Call the landlord about the heating: it knocks at night, and the meter "
                    "in the cellar has not been read since spring");
    workspace.entries.attach({picture()}, call, now);
    filling.add("Find a birthday present for Ada", filling.day(10));
    workspace.entries.createText({.rich = note(), .board = inbox, .now = now});
    filling.add("\u05dc\u05e7\u05e0\u05d5\u05ea \u05dc\u05d7\u05dd", filling.day(2));
    filling.add("Ask Rui for tips");
    filling.complete("Return library books", 0);
    filling.complete("Pay the rent", 3);
}

} // namespace

void fillWindow(const ui::Workspace& workspace) {
    auto& boards = workspace.boards;
    const auto now = workspace.now();
    boards.initializeDefaultBoards(now);
    auto& work = boards.createBoard("Work", now, {.icon = "briefcase.fill", .color = "blue"});
    auto& home = boards.createBoard("Home", now, {.icon = "house.fill", .color = "green"});
    auto& lisbon = boards.createBoard("Lisbon", now, {.icon = "airplane", .color = "orange"});
    auto& old = boards.createBoard("Garden 2024", now, {.icon = "leaf.fill", .color = "olive"});
    fillInbox(workspace, *boards.inboxBoard());
    Filling atWork(workspace, work);
    atWork.add("Write the minutes of Tuesday", atWork.day(5));
    atWork.add("Review Jonas's draft");
    for (const auto* const finished : {"Send the ferry invoice", "Book a room for the review"}) {
        atWork.complete(finished, 1);
    }
    Filling atHome(workspace, home);
    atHome.add("Paint the hall");
    Filling onTrip(workspace, lisbon);
    onTrip.add("Ferry to Cacilhas", onTrip.day(20));
    onTrip.add("Book the ferry");
    Filling(workspace, old).add("Sow the beans");
    boards.setArchived(true, old, now);
}

void fillWindowFull(const ui::Workspace& workspace) {
    fillWindow(workspace);
    const auto now = workspace.now();
    auto& boards = workspace.boards;
    for (int i = 1; i <= 30; ++i) {
        boards.createBoard("Customer " + std::to_string(i) + ": what was agreed in the meeting",
                           now);
    }
    std::vector<std::string> many;
    for (std::size_t i = 0; i < kMany; ++i) {
        many.push_back("Call back about order " + std::to_string(i) + " before the weekend");
    }
    const auto todos = workspace.entries.createTodos(
        {.contents = std::move(many), .board = *boards.inboxBoard(), .now = now});
    const std::vector<model::Entry*> done(todos.begin(), todos.begin() + kMany / 5);
    workspace.entries.completeTodos(done, now);
}

} // namespace korvex::tests
