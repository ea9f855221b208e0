#pragma once

#include "services/BoardService.h"
#include "services/EntryService.h"
#include "store/ModelContext.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace korvex::tests {

/// What a person may do with one program, at random but repeatably.
class RandomLife {
public:
    struct Program {
        store::ModelContext& context;
        services::EntryService& entries;
        services::BoardService& boards;
        /// Given where what the user does at once is one step of undo.
        services::UndoManager* undo = nullptr;
    };
    /// The two boards are never deleted. Files to attach are made in `folder`.
    RandomLife(unsigned seed, const Program& program, std::vector<base::Uuid> boards,
               std::filesystem::path folder);

    /// One operation that can be undone, on any entry; false when it was refused.
    bool step();
    /// One or two entries more.
    void create();
    /// One operation on the boards, or the emptying of one; false when it was refused.
    bool changeBoards();

    /// Lists every board as it is known here, which may be behind the store.
    void look() const;

    unsigned roll(unsigned sides) { return static_cast<unsigned>(m_random() % sides); }
    /// Called while files are read that are to be attached: outside the step of the service.
    std::function<void()> whileReading = [] {};

private:
    model::Entry* any();
    /// One of the two.
    model::Board& board();
    /// One of all, which another may be about to delete.
    model::Board& anyBoard();
    std::string text() { return "words " + std::to_string(m_random() % 1000); }
    richtext::AttributedString rich();
    std::optional<std::int64_t> position();
    model::TodoSchedule schedule();
    template <typename Work>
    bool isDone(Work&& work);
    void perform(model::Entry& entry);
    void attachTo(model::Entry& entry);
    /// Some of what is stored of one editing while it goes on.
    void type(model::Entry& entry);
    /// Creations as a window makes them, which can be undone.
    void createBeside(const model::Entry& entry);
    void pasteLinesInto(model::Entry& entry);
    void performOnBoards();

    std::minstd_rand m_random;
    Program m_program;
    std::vector<base::Uuid> m_boards;
    std::filesystem::path m_folder;
    base::Instant m_now{5000};
    services::EditingSession m_session;
    std::optional<base::Uuid> m_edited;
};

} // namespace korvex::tests
