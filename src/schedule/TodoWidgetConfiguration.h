#pragma once

#include "base/Uuid.h"
#include "services/BoardService.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::schedule {

/// A board that a widget can show.
struct WidgetBoardEntity {
    base::Uuid id;
    /// It is shown by this.
    std::string name;

    bool operator==(const WidgetBoardEntity&) const = default;
};

/// What a widget shows, as the user has set it.
struct TodoWidgetConfiguration {
    /// In English, to be translated.
    static constexpr std::string_view kTitle = "Board";

    /// Absent: the Inbox.
    std::optional<WidgetBoardEntity> board = std::nullopt;
};

/// Answers which boards a widget can show, always by what the service says now. Throws StoreError.
/// Main thread; the service must outlive it.
class WidgetBoardQuery {
public:
    explicit WidgetBoardQuery(const services::BoardService& boards) : m_boards(boards) {}

    /// For the picker, in the order of the boards.
    std::vector<WidgetBoardEntity> suggestedEntities() const;
    /// Those of them that are there, in the order of the boards, whatever that of the identifiers.
    std::vector<WidgetBoardEntity> entities(std::span<const base::Uuid> identifiers) const;

private:
    const services::BoardService& m_boards;
};

} // namespace korvex::schedule
