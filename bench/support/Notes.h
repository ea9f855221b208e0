#pragma once

#include "support/BenchStore.h"

namespace korvex::bench {

/// Adds so many formatted texts to the board, as people write them: a heading, a link, a list;
/// every tenth has a table and code.
void addNotes(OpenStore& store, model::Board& board, std::size_t count);

} // namespace korvex::bench
