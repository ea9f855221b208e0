#pragma once

#include "store/RecordType.h"
#include "store/Value.h"

namespace korvex::store {

/// Reads and writes the memory of one field by its kind. External bytes are read as they are known
/// (absent when unread).
Value readSlot(const void* slot, FieldKind kind);

/// `value` must be of the kind, or absent where the kind allows it: anything else is a fault of the
/// caller (asserts).
void writeSlot(void* slot, FieldKind kind, Value value);

} // namespace korvex::store
