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

    unsigned roll(unsigned sides) { return static_cast<unsigned>(m_random() % sides); }
    /// Called while files are read that are to be attached: outside the step of the service.
    std::function<void()> whileReading = [] {};

private:
    model::Entry* any();
    model::Board& board();
    std::string text() { return "words " + std::to_string(m_random() % 1000); }
    richtext::AttributedString rich();
    std::optional<std::int64_t> position();
    model::TodoSchedule schedule();
    template <typename Work>
    bool isDone(Work&& work);
    void perform(model::Entry& entry);
    void performOnBoards();

    std::minstd_rand m_random;
    Program m_program;
    std::vector<base::Uuid> m_boards;
    std::filesystem::path m_folder;
    base::Instant m_now{5000};
};

} // namespace korvex::tests
