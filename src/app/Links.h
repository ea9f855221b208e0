#pragma once

#include "base/Uuid.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvex::app {

/// Opens the Inbox; also the pattern of links to boards.
inline constexpr std::string_view kInboxUrl = "korvex://board/inbox";

/// The board that "korvex://board/" + identifier names; none for any other link, the Inbox's too.
std::optional<base::Uuid> boardID(std::string_view url);

std::string boardUrl(const base::Uuid& board);
std::string entryUrl(const base::Uuid& entry);

/// Where a link leads into the program.
struct Link {
    enum class Kind { inbox, board, entry };
    Kind kind = Kind::inbox;
    /// Of the board or the entry.
    base::Uuid id = {};

    /// Absent for what is no link of ours.
    static std::optional<Link> parse(std::string_view url);
    bool operator==(const Link&) const = default;
};

/// Whether somebody meant a link of ours, also where it leads nowhere.
bool hasOurScheme(std::string_view url);

} // namespace korvex::app
