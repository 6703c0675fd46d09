// JsonMemory: the slow paths of the pool (pages, remote frees, heaps of ended threads).
#include "json/JsonMemory.h"

#include <mutex>
#include <new>

namespace JsonMemory {

thread_local Heap* tHeap = nullptr;

#if !defined(VIRELO_JSON_NO_POOL)

namespace {

enum EPageState : uint8_t { kCurrent, kAvailable, kFull };

/// Empty pages kept for reuse (4 MiB); more go back to the system.
constexpr size_t kMaxEmptyPages = 128;


// Everything shared: the empty pages, the heaps of ended threads, and the heap that serves a
// thread after its own heap was left behind. Trivially destructible, so it outlives every
// thread that may still free blocks; what it holds stays reachable for leak checkers.
// fHeapsMutex guards the heap list and makes its holder the owner of every heap left behind;
// fPagesMutex guards the empty pages and is taken inside fHeapsMutex, never around it.
struct Shared {
    std::mutex fHeapsMutex;
    Heap* fAbandoned = nullptr;
    Heap* fLate = nullptr;
    std::mutex fPagesMutex;
    Page* fEmptyPages = nullptr; // linked through fNext
    size_t fEmptyCount = 0;
};
constinit Shared gShared;

// MARK: - Pages

// An empty page for class c owned by `heap`, every block on its free list in address order.
Page* NewPage(Heap& heap, size_t c) {
    void* memory = nullptr;
    {
        std::lock_guard<std::mutex> lock(gShared.fPagesMutex);
        if (Page* page = gShared.fEmptyPages) {
            gShared.fEmptyPages = page->fNext;
            --gShared.fEmptyCount;
            page->~Page();
            memory = page;
        }
    }
    // Pages come from the aligned operator new, like every other allocation of the engine, so
    // that a program replacing operator new sees (and may fail) them too.
    if (!memory) memory = ::operator new(kPageSize, std::align_val_t{kPageSize});
    auto* page = new (memory) Page;
    page->fClass = static_cast<uint16_t>(c);
    page->fHeap = &heap;
    const size_t bytes = BlockBytes(c);
    page->fBlockBytes = static_cast<uint32_t>(bytes);
    page->fFresh = static_cast<char*>(memory) + sizeof(Page);
    page->fEnd = page->fFresh + (kPageSize - sizeof(Page)) / bytes * bytes;
    return page;
}

void ReleasePage(Page* page) noexcept {
    std::lock_guard<std::mutex> lock(gShared.fPagesMutex);
    if (gShared.fEmptyCount >= kMaxEmptyPages) {
        page->~Page();
        ::operator delete(page, std::align_val_t{kPageSize});
        return;
    }
    page->fNext = gShared.fEmptyPages;
    gShared.fEmptyPages = page;
    ++gShared.fEmptyCount;
}

void LinkAvailable(Heap& heap, Page* page) noexcept {
    Page*& head = heap.fAvailable[page->fClass];
    page->fState = kAvailable;
    page->fPrev = nullptr;
    page->fNext = head;
    if (head) head->fPrev = page;
    head = page;
}

void UnlinkAvailable(Heap& heap, Page* page) noexcept {
    if (page->fPrev) {
        page->fPrev->fNext = page->fNext;
    } else {
        heap.fAvailable[page->fClass] = page->fNext;
    }
    if (page->fNext) page->fNext->fPrev = page->fPrev;
    page->fPrev = page->fNext = nullptr;
}

// MARK: - The owner's side

// Blocks came back to a page of the heap: a page without free blocks rejoins the available
// ones; an empty page that allocations are not using is given up.
void BlocksReturned(Heap& heap, Page* page) noexcept {
    if (page->fState == kFull) LinkAvailable(heap, page);
    if (page->fUsed == 0 && page->fState == kAvailable) {
        UnlinkAvailable(heap, page);
        ReleasePage(page);
    }
}

void FreeOwned(Heap& heap, Page* page, void* block) noexcept {
    auto* freed = static_cast<FreeBlock*>(block);
    freed->fNext = page->fFree;
    page->fFree = freed;
    --page->fUsed;
    BlocksReturned(heap, page);
}

// Takes back the blocks other threads freed into the heap's pages.
void TakeRemoteFrees(Heap& heap) noexcept {
    Page* page = heap.fRemotePages.exchange(nullptr, std::memory_order_acquire);
    while (page) {
        // Read the link first: once the page's remote list is taken, the next remote free
        // puts the page on the heap's list again, through this link.
        Page* const next = page->fNextRemote;
        // Release: the freer that finds the list empty next links the page again, after this.
        FreeBlock* block = page->fRemote.exchange(nullptr, std::memory_order_acq_rel);
        while (block) {
            FreeBlock* const following = block->fNext;
            block->fNext = page->fFree;
            page->fFree = block;
            --page->fUsed;
            block = following;
        }
        BlocksReturned(heap, page);
        page = next;
    }
}

void* AllocateOwned(Heap& heap, size_t c) {
    if (heap.fRemotePages.load(std::memory_order_relaxed)) TakeRemoteFrees(heap);
    Page*& current = heap.fCurrent[c];
    if (!current || (!current->fFree && current->fFresh == current->fEnd)) {
        Page* next = heap.fAvailable[c];
        if (next) {
            UnlinkAvailable(heap, next);
        } else {
            next = NewPage(heap, c);
        }
        // The page given up has no free block: it rejoins the available ones when one comes back.
        if (current) current->fState = kFull;
        next->fState = kCurrent;
        current = next;
    }
    ++current->fUsed;
    if (FreeBlock* block = current->fFree) {
        current->fFree = block->fNext;
        return block;
    }
    void* block = current->fFresh;
    current->fFresh += current->fBlockBytes;
    return block;
}

// MARK: - Other threads' side

void FreeRemote(Page* page, void* block) noexcept {
    auto* freed = static_cast<FreeBlock*>(block);
    FreeBlock* head = page->fRemote.load(std::memory_order_acquire);
    do {
        freed->fNext = head;
    } while (!page->fRemote.compare_exchange_weak(head, freed, std::memory_order_acq_rel,
                                                  std::memory_order_acquire));
    if (head) return; // the page is on its heap's list already, or about to be taken from it
    // The first remote block since the owner last looked: put the page on the heap's list.
    // Until the owner takes it from there, the block keeps the page from being given up, so
    // the page is still this heap's while we link it; after that nothing here touches it.
    Heap* const heap = page->fHeap;
    Page* first = heap->fRemotePages.load(std::memory_order_relaxed);
    do {
        page->fNextRemote = first;
    } while (!heap->fRemotePages.compare_exchange_weak(first, page, std::memory_order_release,
                                                       std::memory_order_relaxed));
}

// MARK: - Heaps and threads

// The heap of the calling thread: made or adopted at its first use, left behind at its end.
struct ThreadHeap {
    Heap* fHeap = nullptr;

    ThreadHeap() {
        {
            std::lock_guard<std::mutex> lock(gShared.fHeapsMutex);
            if (Heap* adopted = gShared.fAbandoned) {
                gShared.fAbandoned = adopted->fNextAbandoned;
                adopted->fNextAbandoned = nullptr;
                adopted->fAbandoned.store(false, std::memory_order_relaxed);
                fHeap = adopted;
            }
        }
        if (!fHeap) fHeap = new Heap;
        tHeap = fHeap;
    }

    ~ThreadHeap() {
        tHeap = nullptr;
        std::lock_guard<std::mutex> lock(gShared.fHeapsMutex);
        fHeap->fAbandoned.store(true, std::memory_order_relaxed);
        TakeRemoteFrees(*fHeap);
        fHeap->fNextAbandoned = gShared.fAbandoned;
        gShared.fAbandoned = fHeap;
    }
};

[[gnu::tls_model("initial-exec")]] thread_local bool tHeapGone = false;

Heap* CallingThreadsHeap() {
    if (tHeapGone) return nullptr;
    static thread_local struct Owner {
        ThreadHeap fThreadHeap;
        ~Owner() { tHeapGone = true; }
    } owner;
    return owner.fThreadHeap.fHeap;
}

} // namespace

void* AllocateSlow(size_t size) {
    const size_t c = ClassOf(size);
    if (Heap* heap = tHeap ? tHeap : CallingThreadsHeap()) return AllocateOwned(*heap, c);
    // The thread's heap was left behind already (a block wanted by a later thread-exit
    // routine): a heap shared under the lock serves such blocks, and its pages count as
    // left behind, so their blocks are freed under the lock too.
    std::lock_guard<std::mutex> lock(gShared.fHeapsMutex);
    if (!gShared.fLate) {
        gShared.fLate = new Heap;
        gShared.fLate->fAbandoned.store(true, std::memory_order_relaxed);
    }
    return AllocateOwned(*gShared.fLate, c);
}

void FreeSlow(void* block) noexcept {
    Page* const page = PageOf(block);
    Heap& heap = *page->fHeap;
    if (&heap == tHeap) return FreeOwned(heap, page, block);
    if (heap.fAbandoned.load(std::memory_order_relaxed)) {
        // No thread owns the heap: whoever holds the lock acts as its owner.
        std::lock_guard<std::mutex> lock(gShared.fHeapsMutex);
        if (heap.fAbandoned.load(std::memory_order_relaxed)) {
            TakeRemoteFrees(heap);
            return FreeOwned(heap, page, block);
        }
    }
    FreeRemote(page, block);
}

#else

void* AllocateSlow(size_t size) {
    return ::operator new(size);
}

void FreeSlow(void* block) noexcept {
    ::operator delete(block);
}

#endif

} // namespace JsonMemory
