#pragma once

#include "backup/BackupDocument.h"
#include "base/Uuid.h"
#include "store/ModelContainer.h"

#include <string>
#include <vector>

namespace korvex::tests {

/// Everything that is stored, as another program would export it, boards and entries in order.
backup::BackupDocument exported(store::ModelContainer& container);

/// The rules of a store that no operation may leave broken, stated anew and without the code that
/// keeps them: a sentence for each that is. `inbox` is the board that is the visible Inbox.
std::vector<std::string> brokenRules(store::ModelContainer& container, const base::Uuid& inbox);

} // namespace korvex::tests
