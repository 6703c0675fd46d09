// The replaced global operator new and delete behind AllocationProbe.h. Every block carries a
// header with its requested size, so that frees can be counted; aligned blocks put the header
// just before the aligned address.
#include "tests/support/AllocationProbe.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> gLive{0};
std::atomic<size_t> gPeak{0};
std::atomic<size_t> gLargest{0};
std::atomic<size_t> gCountdown{0}; // 0: disarmed; otherwise allocations until the failure
std::atomic<bool> gFired{false};

constexpr size_t kHeader = 16; // keeps the default new alignment of 16

void Raise(std::atomic<size_t>& value, size_t candidate) noexcept {
    size_t seen = value.load(std::memory_order_relaxed);
    while (candidate > seen && !value.compare_exchange_weak(seen, candidate)) {
    }
}

/// Counts one request; false when it is the one that must fail.
bool Admit(size_t size) noexcept {
    size_t left = gCountdown.load(std::memory_order_relaxed);
    while (left != 0 && !gCountdown.compare_exchange_weak(left, left - 1)) {
    }
    if (left == 1) {
        gFired.store(true);
        return false;
    }
    Raise(gLargest, size);
    return true;
}

void Count(size_t size) noexcept {
    Raise(gPeak, gLive.fetch_add(size) + size);
}

void* Allocate(size_t size, size_t alignment) noexcept {
    if (!Admit(size)) return nullptr;
    char* base;
    char* user;
    if (alignment <= kHeader) {
        base = static_cast<char*>(std::malloc(size + kHeader));
        user = base ? base + kHeader : nullptr;
    } else {
        // The header sits in the alignment's worth of room before the aligned block.
        const size_t total = (size + alignment + alignment - 1) / alignment * alignment;
        base = static_cast<char*>(std::aligned_alloc(alignment, total));
        user = base ? base + alignment : nullptr;
    }
    if (!user) return nullptr;
    reinterpret_cast<size_t*>(user - kHeader)[0] = size;
    Count(size);
    return user;
}

void Free(void* block, size_t alignment) noexcept {
    if (!block) return;
    char* user = static_cast<char*>(block);
    gLive.fetch_sub(reinterpret_cast<size_t*>(user - kHeader)[0]);
    std::free(alignment <= kHeader ? user - kHeader : user - alignment);
}

void* AllocateOrThrow(size_t size, size_t alignment) {
    if (void* block = Allocate(size, alignment)) return block;
    throw std::bad_alloc();
}

} // namespace

namespace AllocationProbe {

size_t LiveBytes() noexcept { return gLive.load(); }
size_t PeakBytes() noexcept { return gPeak.load(); }
void ResetPeak() noexcept { gPeak.store(gLive.load()); }
size_t LargestRequest() noexcept { return gLargest.load(); }
void ResetLargest() noexcept { gLargest.store(0); }

void FailAt(size_t k) noexcept {
    gFired.store(false);
    gCountdown.store(k);
}
bool Fired() noexcept { return gFired.load(); }

Pause::Pause() noexcept : fSaved(gCountdown.exchange(0)) {}
Pause::~Pause() { gCountdown.store(fSaved); }

} // namespace AllocationProbe

// MARK: - The replaced operators

void* operator new(size_t size) { return AllocateOrThrow(size, 0); }
void* operator new[](size_t size) { return AllocateOrThrow(size, 0); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return Allocate(size, 0); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return Allocate(size, 0); }
void* operator new(size_t size, std::align_val_t a) { return AllocateOrThrow(size, size_t(a)); }
void* operator new[](size_t size, std::align_val_t a) { return AllocateOrThrow(size, size_t(a)); }
void* operator new(size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
    return Allocate(size, size_t(a));
}
void* operator new[](size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
    return Allocate(size, size_t(a));
}

void operator delete(void* block) noexcept { Free(block, 0); }
void operator delete[](void* block) noexcept { Free(block, 0); }
void operator delete(void* block, size_t) noexcept { Free(block, 0); }
void operator delete[](void* block, size_t) noexcept { Free(block, 0); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Free(block, 0); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Free(block, 0); }
void operator delete(void* block, std::align_val_t a) noexcept { Free(block, size_t(a)); }
void operator delete[](void* block, std::align_val_t a) noexcept { Free(block, size_t(a)); }
void operator delete(void* block, size_t, std::align_val_t a) noexcept { Free(block, size_t(a)); }
void operator delete[](void* block, size_t, std::align_val_t a) noexcept { Free(block, size_t(a)); }
void operator delete(void* block, std::align_val_t a, const std::nothrow_t&) noexcept {
    Free(block, size_t(a));
}
void operator delete[](void* block, std::align_val_t a, const std::nothrow_t&) noexcept {
    Free(block, size_t(a));
}
