#pragma once

#include "services/EntryChange.h"

#include <memory>

namespace korvex::services {

/// One editing of an entry, from the opening of its editor to its end: whatever of it is stored in
/// between is one step of undo. A fresh one begins a new step. A value; main thread.
struct EditingSession {
    /// The entry was created in this editing. Then there is nothing that the text was before.
    bool isCreation = false;
    /// What the step takes back, as long as it can be.
    std::weak_ptr<EntryChange> step;
};

} // namespace korvex::services
