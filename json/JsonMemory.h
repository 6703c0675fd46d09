// Small-block memory for tree nodes and member-map nodes: per-thread free lists of fixed size
// classes, refilled from 64 KiB chunks. A tree is allocated and freed node by node as before;
// this only makes the two cheap. Any thread may free a block that another allocated (it joins
// the freeing thread's list). Lists that grow long, and the lists of a thread that ends, go to
// a shared depot that other threads refill from, so memory is reused across threads.
//
// Chunks are never returned to the system: the pool keeps its high-water mark, like most
// allocators of this kind. The chunks stay reachable (leak checkers see no leak). Sanitizer
// builds (VIRELO_JSON_NO_POOL) use operator new for every block instead.
#pragma once

#include <cstddef>
#include <new>

namespace JsonMemory {

/// Blocks up to this size come from the pool; larger ones from operator new.
constexpr size_t kMaxPooled = 256;
constexpr size_t kGranule = 16;
constexpr size_t kClasses = kMaxPooled / kGranule;
/// A thread keeps at most this many free blocks per class; beyond it half go to the depot.
constexpr size_t kMaxLocalBlocks = 4096;

struct FreeBlock {
    FreeBlock* fNext;
};

struct FreeList {
    FreeBlock* fHead = nullptr;
    size_t fCount = 0;
};

/// One thread's free lists, by size class (class c holds blocks of (c + 1) * 16 bytes).
struct ThreadLists {
    FreeList fLists[kClasses];
};

// The calling thread's lists, reached through one pointer in the initial-exec TLS model: a
// plain memory load even inside a dlopen'ed module. Null until the thread's first pool use.
extern thread_local ThreadLists* tLists [[gnu::tls_model("initial-exec")]];

void* AllocateSlow(size_t size);
void FreeSlow(void* block, size_t size) noexcept;

inline size_t ClassOf(size_t size) noexcept {
    return size ? (size - 1) / kGranule : 0;
}

inline void* Allocate(size_t size) {
#if defined(VIRELO_JSON_NO_POOL)
    return ::operator new(size);
#else
    if (size > kMaxPooled) return ::operator new(size);
    if (ThreadLists* lists = tLists) {
        FreeList& list = lists->fLists[ClassOf(size)];
        if (FreeBlock* block = list.fHead) {
            list.fHead = block->fNext;
            --list.fCount;
            return block;
        }
    }
    return AllocateSlow(size);
#endif
}

inline void Free(void* block, size_t size) noexcept {
    if (!block) return;
#if defined(VIRELO_JSON_NO_POOL)
    (void)size;
    ::operator delete(block);
#else
    if (size > kMaxPooled) {
        ::operator delete(block);
        return;
    }
    if (ThreadLists* lists = tLists) {
        FreeList& list = lists->fLists[ClassOf(size)];
        if (list.fCount < kMaxLocalBlocks) {
            auto* freed = static_cast<FreeBlock*>(block);
            freed->fNext = list.fHead;
            list.fHead = freed;
            ++list.fCount;
            return;
        }
    }
    FreeSlow(block, size);
#endif
}

/// A standard allocator over the pool, for the containers inside nodes.
template <class T> struct Allocator {
    using value_type = T;
    Allocator() noexcept = default;
    template <class U> Allocator(const Allocator<U>&) noexcept {}
    T* allocate(size_t n) {
        if (n > static_cast<size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
        return static_cast<T*>(Allocate(n * sizeof(T)));
    }
    void deallocate(T* p, size_t n) noexcept { Free(p, n * sizeof(T)); }
    template <class U> bool operator==(const Allocator<U>&) const noexcept { return true; }
};

} // namespace JsonMemory
