#pragma once

#include "store/ModelContext.h"
#include "store/salvage/StoreSalvage.h"

#include <string>
#include <vector>

namespace korvex::storage {

/// For each loss of a salvage the name of the board that the lost ones stood on, as the store says
/// it now; empty where that is not known. Throws StoreError.
std::vector<std::string> boardNamesOf(const store::SalvageReport& salvage,
                                      store::ModelContext& context);

/// What could not be saved, for the user, in full sentences: "On Work: 10 entries missing."
/// `boardNames`: one for each loss.
std::vector<std::string> lossSentences(const store::SalvageReport& salvage,
                                       const std::vector<std::string>& boardNames);

} // namespace korvex::storage
