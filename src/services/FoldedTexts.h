#pragma once

#include "base/Signal.h"
#include "base/TextFolding.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace korvex::services {

/// The folded contents of entries, kept as long as an entry's content stays what it is, in one
/// block of memory that a search runs through from end to end. Follows its context, which must
/// outlive it. Main thread.
class FoldedTexts {
public:
    FoldedTexts(store::ModelContext& context, const base::TextFolding& folding);

    const base::TextFolding& folding() const { return m_folding; }

    /// Valid until the next call of a function that is not const, or the next change of the store.
    std::string_view folded(const model::Entry& entry);

    // … the rest is the search's own.
private:
    store::ModelContext& m_context;
    const base::TextFolding& m_folding;
};

} // namespace korvex::services
