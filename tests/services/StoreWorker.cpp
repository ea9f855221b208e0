#include "model/SchemaVersions.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/EntryOrder.h"
#include "services/EntryService.h"
#include "store/ModelContainer.h"
#include "support/SilentLog.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <string>

namespace korvex::tests {

using model::Entry;
using services::EntryService;

namespace {

/// A program of its own on the store: creates, completes, restores, edits, moves and splits entries
/// at random, also between boards, changes their types, deletes some, and takes changes back.
/// Writes down each identifier that it was told is stored, and with a minus before it each that it
/// is about to delete.
class Worker {
public:
    Worker(const std::filesystem::path& storeFile, const base::Uuid& board, unsigned seed,
           const std::filesystem::path& journal)
        : m_container(
              store::ModelContainer::open(model::currentSchema(), {.file = storeFile}, m_log)),
          m_context(*m_container),
          m_entries(m_context, m_reminders, m_widgets, m_log, &m_undo),
          m_board(m_context.find<model::Board>(board)),
          m_random(seed),
          m_journal(journal, std::ios::app) {}

    void change(int number) {
        const auto active = services::activeEntries(*m_board);
        const auto pick = [&](std::size_t below) { return m_random() % below; };
        try {
            if (active.size() < 5 || pick(10) < 3) {
                const auto created = m_entries.createTodos(
                    {.contents = {std::to_string(number)},
                     .board = *m_board,
                     .before = active.empty() ? std::nullopt
                                              : std::optional(active[pick(active.size())]->id()),
                     .now = {double(number)}});
                m_journal << created[0]->id().text() << std::endl;
                return;
            }
            Entry& entry = *active[pick(active.size())];
            switch (pick(8)) {
            case 0:
                return m_entries.completeTodo(entry, {double(number)});
            case 1:
                return edit(entry, "edited " + std::to_string(number));
            case 2:
                return m_entries.changeType(
                    entry, entry.isTodo() ? model::EntryType::text : model::EntryType::todo, {1});
            case 3:
                m_journal << '-' << entry.id().text() << std::endl;
                return m_entries.deleteEntry(entry);
            case 4:
                return m_entries.moveEntry(entry.id(), active[pick(active.size())]->id(),
                                           model::EntryPlacement::after, *m_board);
            case 5: {
                const auto boards = m_context.fetch<model::Board>();
                m_board = boards[pick(boards.size())];
                return m_entries.moveEntry(entry, *m_board, {1}, 0);
            }
            case 6:
                return pick(3) == 0 ? m_undo.redo() : m_undo.undo();
            default: {
                const auto completed = services::completedTodos(*m_board);
                if (!completed.empty()) {
                    m_entries.restoreTodo(*completed[pick(completed.size())], {1}, 0);
                }
            }
            }
        } catch (const model::EntryServiceError&) {
            // The other program completed or moved it meanwhile: refused, as it should be.
        }
    }

private:
    void edit(Entry& entry, const std::string& text) {
        const auto plain = richtext::RichTextSerializer::plainRichText(text);
        if (entry.isTodo()) {
            m_entries.updateTodo(entry, text, {1});
        } else if (m_random() % 2 == 0) {
            m_entries.updateText(entry, plain, {1});
        } else {
            m_journal << m_entries.splitText(entry, plain, plain, {1}).id().text() << std::endl;
        }
    }

    /// An undo that comes too late is expected, and logged.
    SilentLog m_log;
    services::NoReminders m_reminders;
    services::NoWidgets m_widgets;
    std::unique_ptr<store::ModelContainer> m_container;
    store::ModelContext m_context;
    base::SystemClock m_clock;
    services::UndoManager m_undo{m_clock};
    EntryService m_entries;
    model::Board* m_board;
    std::mt19937 m_random;
    std::ofstream m_journal;
};

} // namespace

} // namespace korvex::tests

// store_worker STORE BOARD SEED CHANGES JOURNAL
int main(int count, char** arguments) {
    if (count != 6) {
        return 2;
    }
    try {
        korvex::tests::Worker worker(arguments[1], *korvex::base::Uuid::parse(arguments[2]),
                                     static_cast<unsigned>(std::atoi(arguments[3])), arguments[5]);
        const int changes = std::atoi(arguments[4]);
        for (int i = 0; i < changes; ++i) {
            worker.change(i);
        }
    } catch (const korvex::base::Error& error) {
        std::cerr << error.errorDescription() << '\n';
        return 1;
    }
    return 0;
}
