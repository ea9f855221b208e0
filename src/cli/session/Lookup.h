#pragma once

#include "base/Uuid.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::cli {

class Session;

/// The fewest characters that name an entry.
inline constexpr std::size_t kMinimumPrefix = 4;

/// What was typed for a board: its identifier, or a name that only one visible board has, archived
/// ones among them. A name in another case is taken when no board has it exactly. Throws
/// CommandLineError (`refused`).
model::Board& findBoard(Session& session, std::string_view typed);

/// The Inbox when nothing was typed.
model::Board& findBoardOrInbox(Session& session, const std::optional<std::string>& typed);

/// What was typed for an entry, open or completed, on any board: its identifier or at least its
/// first four characters, in either case, with or without hyphens. Throws CommandLineError
/// (`refused`).
model::Entry& findEntry(Session& session, std::string_view typed);

/// The same for where an entry is to stand: a whole identifier is taken as it is, so that the
/// service says what is wrong with it.
base::Uuid findTarget(Session& session, std::string_view typed);

/// What was typed for an attachment of an entry: its filename, which only one has, its identifier
/// or at least the first four characters of it. Throws CommandLineError (`refused`) or
/// AttachmentError.
base::Uuid findAttachment(const model::Entry& entry, std::string_view typed);

/// How many characters of the text form tell each of `ids` from the others, at least 8.
std::size_t shortIdentifierLength(std::span<const base::Uuid> ids);

} // namespace korvex::cli
