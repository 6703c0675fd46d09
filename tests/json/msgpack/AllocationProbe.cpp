// Replaces the global operator new of the test program to record the largest single request,
// so that readers given hostile lengths can be shown not to allocate by them.
#include "tests/json/JsonTestHelpers.h"

#include <cstdlib>
#include <new>

std::atomic<size_t> json_test::gLargestAllocation{0};

void* operator new(size_t size) {
    size_t seen = json_test::gLargestAllocation.load(std::memory_order_relaxed);
    while (size > seen && !json_test::gLargestAllocation.compare_exchange_weak(seen, size)) {
    }
    if (void* block = std::malloc(size ? size : 1)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
