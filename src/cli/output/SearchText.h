#pragma once

#include "base/TextFolding.h"
#include "services/SearchService.h"

#include <string>
#include <vector>

namespace korvex::cli {

class Session;

/// One row of a search a line for people: short identifier, kind, board, due label and text. A
/// terminal shows in bold what was looked for, and wraps long texts under themselves.
void printResults(Session& session, const services::SearchResults& results,
                  const std::vector<std::string>& foldedTerms, const base::TextFolding& folding);

/// The same as a JSON array.
void writeResults(Session& session, const services::SearchResults& results);

} // namespace korvex::cli
