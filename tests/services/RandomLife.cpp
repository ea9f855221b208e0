#include "services/RandomLife.h"

#include "store/StoreError.h"

#include <algorithm>
#include <fstream>
#include <utility>

namespace korvex::tests {

using model::Board;
using model::Entry;
using model::TodoSchedule;

RandomLife::RandomLife(unsigned seed, const Program& program, std::vector<base::Uuid> boards,
                       std::filesystem::path folder)
    : m_random(seed), m_program(program), m_boards(std::move(boards)), m_folder(std::move(folder)) {
    for (int i = 0; i < 3; ++i) {
        std::ofstream(m_folder / ("file " + std::to_string(i))) << "bytes " << i;
    }
}

template <typename Work>
bool RandomLife::isDone(Work&& work) {
    ++m_now.seconds;
    try {
        work();
        return true;
    } catch (const store::StoreError&) {
        throw;
    } catch (const base::Error&) {
        return false;
    }
}

bool RandomLife::step() {
    auto* const entry = any();
    return entry && isDone([&] { perform(*entry); });
}

bool RandomLife::changeBoards() {
    return isDone([&] { performOnBoards(); });
}

void RandomLife::look() const {
    for (const auto* const each : m_program.boards.boards()) {
        static_cast<void>(each->entries());
    }
}

void RandomLife::create() {
    ++m_now.seconds;
    if (roll(2) == 0) {
        m_program.entries.createTodos({.contents = {text(), text()},
                                       .board = board(),
                                       .now = m_now,
                                       .schedule = roll(2) == 0 ? TodoSchedule() : schedule()});
    } else {
        m_program.entries.createText({.rich = richtext::RichTextSerializer::plainRichText(text()),
                                      .board = board(),
                                      .now = m_now});
    }
}

Entry* RandomLife::any() {
    const auto all = m_program.context.fetch<Entry>();
    return all.empty() ? nullptr : all[m_random() % all.size()];
}

Board& RandomLife::board() {
    return *m_program.context.find<Board>(m_boards[roll(2)]);
}

Board& RandomLife::anyBoard() {
    const auto all = m_program.boards.boards();
    return roll(3) == 0 ? *all[roll(static_cast<unsigned>(all.size()))] : board();
}

richtext::AttributedString RandomLife::rich() {
    return richtext::RichTextSerializer::plainRichText(roll(8) == 0 ? " " : text());
}

std::optional<std::int64_t> RandomLife::position() {
    return roll(2) == 0 ? std::nullopt : std::optional<std::int64_t>(roll(8));
}

TodoSchedule RandomLife::schedule() {
    switch (roll(4)) {
    case 0:
        return TodoSchedule::dueOn(20250301 + roll(28));
    case 1:
        return {.dueDate = m_now + 90, .dueStartDate = m_now + 30};
    case 2:
        return {};
    default:
        return {.dueDate = m_now, .reminderDate = m_now + 60};
    }
}

void RandomLife::perform(Entry& entry) {
    using enum model::EntryPlacement;
    auto& service = m_program.entries;
    auto& other = *any();
    switch (roll(22)) {
    case 0:
        return service.completeTodo(entry, m_now);
    case 1:
        return service.restoreTodo(entry, m_now, position());
    case 2:
        return service.updateTodo(entry, text(), m_now);
    case 3:
        return service.updateText(entry, rich(), m_now);
    case 4:
        return service.updateSchedule(entry, schedule(), m_now);
    case 5:
        return service.changeType(
            entry, entry.isTodo() ? model::EntryType::text : model::EntryType::todo, m_now);
    case 6:
    case 7:
        return service.moveEntry(entry, anyBoard(), m_now, position());
    case 8:
        return service.moveEntry(entry.id(), other.id(), roll(2) == 0 ? before : after,
                                 *entry.board());
    case 9:
        return service.moveEntry(entry.id(), std::int64_t{roll(7)} - 3, *entry.board());
    case 10:
        return service.deleteEntry(entry);
    case 11: {
        std::vector<Entry*> both{&entry};
        if (&other != &entry) {
            both.push_back(&other);
        }
        return service.deleteEntries(both);
    }
    case 12:
        return roll(4) == 0 ? service.completeTodos(*entry.board(), m_now)
                            : service.completeTodo(entry, m_now);
    case 13:
        return attachTo(entry);
    case 14: {
        const auto attached = model::EntryAttachment::decode(entry.attachmentData());
        return attached.empty() ? void()
                                : service.removeAttachment(attached.front().id, entry, m_now);
    }
    case 15: {
        const auto attached = model::EntryAttachment::decode(entry.attachmentData());
        return attached.empty() ? void()
                                : service.moveAttachment(attached.front().id, entry, other,
                                                         std::nullopt, before, m_now);
    }
    case 16:
    case 17:
        return createBeside(entry);
    case 18:
        return void(service.splitText(entry, rich(), rich(), m_now, "Split Text"));
    case 19:
        return pasteLinesInto(entry);
    default:
        return type(entry);
    }
}

void RandomLife::attachTo(Entry& entry) {
    const std::filesystem::path file = m_folder / ("file " + std::to_string(roll(3)));
    m_program.entries.attachFiles({&file, 1}, entry, m_now, [&](auto files) {
        whileReading();
        return services::readAttachments(files);
    });
}

void RandomLife::type(Entry& entry) {
    if (m_edited != entry.id()) {
        m_edited = entry.id();
        m_session = {};
    }
    for (auto left = 1 + roll(3); left > 0; --left) {
        const auto typed = "typed " + std::to_string(roll(2));
        if (entry.isTodo()) {
            m_program.entries.updateTodo(entry, typed, m_now, &m_session);
        } else {
            m_program.entries.updateText(entry, richtext::RichTextSerializer::plainRichText(typed),
                                         m_now, &m_session);
        }
    }
}

void RandomLife::createBeside(const Entry& entry) {
    auto& home = roll(4) == 0 ? anyBoard() : *entry.board();
    const auto place = roll(3);
    const auto after = place == 1 ? std::optional(entry.id()) : std::nullopt;
    const auto before = place == 2 ? std::optional(entry.id()) : std::nullopt;
    m_session = {};
    if (roll(3) == 0) {
        m_edited = m_program.entries
                       .createText({.rich = rich(),
                                    .board = home,
                                    .after = after,
                                    .before = before,
                                    .now = m_now,
                                    .undoName = "New Text",
                                    .session = &m_session})
                       .id();
        return;
    }
    const auto isOne = roll(2) == 0;
    m_edited = m_program.entries
                   .createTodos({.contents = std::vector(isOne ? 1 : 2, text()),
                                 .board = home,
                                 .after = after,
                                 .before = before,
                                 .now = m_now,
                                 .undoName = "New Todo",
                                 .session = isOne ? &m_session : nullptr})
                   .front()
                   ->id();
}

void RandomLife::pasteLinesInto(Entry& entry) {
    std::optional<services::UndoManager::Group> paste;
    if (m_program.undo) {
        paste.emplace(*m_program.undo, "Paste");
    }
    m_program.entries.createTodos({.contents = {text(), text()},
                                   .board = *entry.board(),
                                   .after = entry.id(),
                                   .now = m_now,
                                   .undoName = "New Todos"});
    m_program.entries.updateTodo(entry, text(), m_now);
}

void RandomLife::performOnBoards() {
    auto& service = m_program.boards;
    auto all = service.boards();
    auto& one = *all[roll(static_cast<unsigned>(all.size()))];
    auto& another = *all[roll(static_cast<unsigned>(all.size()))];
    switch (roll(8)) {
    case 0:
        service.createBoard(" " + text(), m_now);
        return;
    case 1:
        return service.renameBoard(one, text(), m_now);
    case 2:
        return service.setArchived(!one.isArchived(), one, m_now);
    case 3:
        if (std::find(m_boards.begin(), m_boards.end(), one.id()) == m_boards.end()) {
            service.deleteBoard(one);
        }
        return;
    case 4:
        std::shuffle(all.begin(), all.end(), m_random);
        return service.reorderBoards(all, m_now);
    case 5:
        return service.moveBoard(one.id(), another.id(), model::EntryPlacement::after, m_now);
    case 6:
        return service.sortBoardsByName(services::BoardService::Direction::descending,
                                        base::NameOrder("en_US"), m_now);
    default: {
        const auto entries = one.entries();
        if (entries.empty()) {
            return;
        }
        auto& entry = *entries.front();
        const auto half = richtext::RichTextSerializer::plainRichText(text());
        return roll(4) == 0 ? m_program.entries.deleteEntries(one)
                            : void(m_program.entries.splitText(entry, half, half, m_now));
    }
    }
}

} // namespace korvex::tests
