// Block memory for tree nodes and their storage (member tables, element arrays, texts). A tree
// is still allocated and freed node by node; this makes both cheap and keeps a tree's nodes
// close together.
//
// Blocks live in 32 KiB pages, each page holding blocks of one size class and owned by one
// thread's heap; a block's page is found by masking its address. The owning thread allocates
// from and frees into a page's free list without atomics or locks. Another thread's free goes
// onto the page's remote list with one atomic push, and the first such block also puts the page
// on its heap's list of pages with remote frees, from where the owner takes them back. A page
// whose blocks have all come back is given up to a shared pool of empty pages (reused by any
// class and thread; beyond a few, returned to the system), so after a large tree is freed the
// next one is built in whole pages again instead of in the holes the first one left.
//
// A thread that ends leaves its heap behind: frees into it are then done under a lock, and the
// next thread that starts using the pool adopts it.
//
// Sanitizer builds (VIRELO_JSON_NO_POOL) use operator new for every block instead, so that
// the sanitizers see every node.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

namespace JsonMemory {

/// Blocks up to this size come from the pool; larger ones from operator new.
constexpr size_t kMaxPooled = 4096;
constexpr size_t kGranule = 16;
/// Classes of 16-byte steps up to 256 bytes, then four classes per doubling up to kMaxPooled
/// (320, 384, 448, 512, 640, ...): no block wastes more than a fifth of itself.
constexpr size_t kSmallClasses = 256 / kGranule;
constexpr size_t kClasses = kSmallClasses + 4 * 4;
/// Pages are aligned to their size, so that a block's page is its address rounded down. Every
/// class in use keeps one page partly filled, so the size bounds what a small tree holds beyond
/// its blocks (64 KiB pages left a parsed twitter.json 1.1 MB of untouched page); much smaller
/// pages cost the largest trees time in page traffic.
constexpr size_t kPageSize = 32 * 1024;

struct FreeBlock {
    FreeBlock* fNext;
};

struct Heap;

/// A page's header, at its start; the blocks follow.
struct alignas(64) Page {
    // The owner's side: only the thread that owns the heap (or, for a heap whose thread has
    // ended, the holder of the pool's lock) touches these.
    FreeBlock* fFree = nullptr;
    // Blocks never handed out yet, from fFresh to fEnd: a new page is carved as it is used, not
    // threaded onto a free list all at once.
    char* fFresh = nullptr;
    char* fEnd = nullptr;
    uint32_t fBlockBytes = 0;
    uint32_t fUsed = 0; ///< blocks handed out and not yet back on fFree
    uint16_t fClass = 0;
    uint8_t fState = 0;
    Page* fPrev = nullptr; ///< the heap's list of pages with free blocks, by class
    Page* fNext = nullptr;
    // Set before the page's first block is handed out; read by every thread that frees one.
    Heap* fHeap = nullptr;
    // Blocks freed by other threads. Only the heap's list of pages with remote frees leads the
    // owner to them; see FreeRemote for why.
    std::atomic<FreeBlock*> fRemote{nullptr};
    Page* fNextRemote = nullptr;
};

/// One thread's pages, by class: the page allocations come from, and the others that have
/// free blocks. Pages without free blocks are on no list until a block comes back.
struct Heap {
    Page* fCurrent[kClasses] = {};
    Page* fAvailable[kClasses] = {};
    std::atomic<Page*> fRemotePages{nullptr};
    std::atomic<bool> fAbandoned{false};
    Heap* fNextAbandoned = nullptr;
};

// The calling thread's heap, in the initial-exec TLS model: a plain memory load even inside a
// dlopen'ed module. Null until the thread's first pool use and after the thread's end.
extern thread_local Heap* tHeap [[gnu::tls_model("initial-exec")]];

void* AllocateSlow(size_t size);
void FreeSlow(void* block) noexcept;

inline size_t ClassOf(size_t size) noexcept {
    if (size <= 256) return size ? (size - 1) / kGranule : 0;
    const unsigned top = 63 - static_cast<unsigned>(__builtin_clzll(size - 1)); // 8 for 257..512
    return kSmallClasses + (top - 8) * 4 + ((size - 1 - (size_t(1) << top)) >> (top - 2));
}

/// The bytes of every block of class `c`.
constexpr size_t BlockBytes(size_t c) noexcept {
    if (c < kSmallClasses) return (c + 1) * kGranule;
    const size_t doubling = size_t(256) << ((c - kSmallClasses) / 4);
    return doubling + ((c - kSmallClasses) % 4 + 1) * (doubling / 4);
}
static_assert(BlockBytes(kClasses - 1) == kMaxPooled);

inline Page* PageOf(void* block) noexcept {
    return reinterpret_cast<Page*>(reinterpret_cast<uintptr_t>(block) & ~(kPageSize - 1));
}

inline void* Allocate(size_t size) {
#if defined(VIRELO_JSON_NO_POOL)
    return ::operator new(size);
#else
    if (size > kMaxPooled) return ::operator new(size);
    if (Heap* heap = tHeap) {
        if (Page* page = heap->fCurrent[ClassOf(size)]) {
            if (FreeBlock* block = page->fFree) {
                page->fFree = block->fNext;
                ++page->fUsed;
                return block;
            }
            if (page->fFresh != page->fEnd) {
                void* block = page->fFresh;
                page->fFresh += page->fBlockBytes;
                ++page->fUsed;
                return block;
            }
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
    Page* page = PageOf(block);
    Heap* heap = tHeap;
    // The last block of a page, and a block of a page that had none free (it may have to
    // rejoin the pages allocations look at), take the slow path.
    if (heap && page->fHeap == heap && page->fUsed > 1 && (page->fFree || page->fFresh != page->fEnd)) {
        auto* freed = static_cast<FreeBlock*>(block);
        freed->fNext = page->fFree;
        page->fFree = freed;
        --page->fUsed;
        return;
    }
    FreeSlow(block);
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
