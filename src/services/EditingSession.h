#pragma once

#include "services/EntryChange.h"
#include "services/UndoManager.h"

#include <cstdint>
#include <memory>

namespace korvex::services {

/// One editing of an entry, from the opening of its editor to its end: whatever of it is stored in
/// between is one step of undo, as long as that step is the latest and nothing waits to be done
/// again. A fresh one begins a new step. A value; main thread.
struct EditingSession {
    UndoManager::StepId id = 0;
    /// What the step takes back, as long as it can be.
    std::weak_ptr<EntryChange> step;
    /// The same of an entry that was created in this editing: what tells its text, which the step
    /// takes back with it.
    std::weak_ptr<std::uint64_t> createdText;
};

} // namespace korvex::services
