#pragma once

#include "app/Launch.h"
#include "base/Uuid.h"
#include "model/EntryType.h"

#include <optional>
#include <string_view>

namespace korvex::app {

/// What desktops, our programs and the desktop file call Quick Entry by.
inline constexpr const char* kQuickEntryAction = "quick-entry";

/// What Quick Entry is to open with; what is absent is as the user's settings and draft have it.
struct QuickEntryRequest {
    std::optional<base::Uuid> board = {};
    std::optional<model::EntryType> type = {};

    bool operator==(const QuickEntryRequest&) const = default;

    /// What is not understood in the parameters is left aside: the panel opens in any case.
    static QuickEntryRequest of(const Launch& launch);
    Launch launch() const;
};

/// "todo" or "text"; absent for anything else.
std::optional<model::EntryType> entryTypeNamed(std::string_view name);

} // namespace korvex::app
