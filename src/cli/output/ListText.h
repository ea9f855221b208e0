#pragma once

#include "model/Entry.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace korvex::cli {

class Session;

/// What the second column says of an entry.
enum class ListDate { due, completed };

/// One entry a line for people: short identifier, date, mark and text. On a terminal long texts
/// wrap under themselves; elsewhere each entry keeps its one line.
void printEntries(Session& session, std::span<model::Entry* const> entries, ListDate date);

/// How a due label looks: that of what is late stands out.
std::string_view labelStyle(Session& session, const model::Entry& entry);
/// The end of an entry's line, from the column where it begins: its mark and its text.
void printMarkedText(Session& session, const model::Entry& entry, std::size_t column);

/// The text of an entry, in UTF-8: as it is stored for a todo, as `readableText` makes it for a
/// text entry.
std::string textOf(const Session& session, const model::Entry& entry);

/// A name of at most 11 characters and a value as one line; nothing when the value is empty.
void printFact(Session& session, std::string_view name, std::string_view value);

/// All about one entry: its text, then its facts one a line.
void printEntry(Session& session, const model::Entry& entry);

/// One board a line: name, what is open on it, identifier.
void printBoards(Session& session, std::span<model::Board* const> boards);

} // namespace korvex::cli
