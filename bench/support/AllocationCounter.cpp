#include "support/AllocationCounter.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace korvex::bench {

namespace {

std::atomic<std::size_t> allocated{0};
std::atomic<std::size_t> mostAllocated{0};

} // namespace

std::size_t allocatedBytes() {
    return allocated;
}

std::size_t mostAllocatedBytes() {
    return mostAllocated;
}

void forgetMostAllocated() {
    mostAllocated = allocated.load();
}

} // namespace korvex::bench

void* operator new(std::size_t size) {
    using namespace korvex::bench;
    void* const memory = std::malloc(size);
    if (!memory) {
        throw std::bad_alloc();
    }
    const auto now = allocated += malloc_usable_size(memory);
    if (now > mostAllocated) {
        mostAllocated = now;
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    korvex::bench::allocated -= malloc_usable_size(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
