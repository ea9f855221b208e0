#pragma once

#include "store/ChangeSet.h"

namespace korvex::ui {

/// Who has changed the store, as its user is told.
enum class ChangeCause { thisWindow, anotherProgram, replacementElsewhere };

/// A replacement by this window too is first heard of as that of another.
inline ChangeCause causeOf(const store::ChangeSet& changes) {
    return changes.origin == store::ChangeSet::Origin::thisContext ? ChangeCause::thisWindow
           : changes.isReplacement ? ChangeCause::replacementElsewhere
                                   : ChangeCause::anotherProgram;
}

} // namespace korvex::ui
