#pragma once

#include "app/Launch.h"

namespace korvex::cli {

/// The desktop app of the user's own store, which may run already.
class RunningDesktop {
public:
    enum class Answer {
        /// It does what it was asked for.
        taken,
        /// It runs, and says nothing.
        silent,
        /// Nobody is there, or nobody can be reached.
        notThere,
    };

    virtual ~RunningDesktop() = default;
    virtual Answer ask(const app::Launch& launch) = 0;
};

} // namespace korvex::cli
