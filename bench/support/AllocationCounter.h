#pragma once

#include <cstddef>

namespace korvex::bench {

// What the program that links this has allocated with `new`, as the allocator counts it.

std::size_t allocatedBytes();
/// The most since the last `forgetMostAllocated`.
std::size_t mostAllocatedBytes();
void forgetMostAllocated();

} // namespace korvex::bench
