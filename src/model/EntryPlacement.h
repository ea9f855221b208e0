#pragma once

namespace korvex::model {

/// On which side of its target a moved or inserted entry lands. Boards are moved among each other
/// in the same way, and share the enumeration.
enum class EntryPlacement { before, after };

} // namespace korvex::model
