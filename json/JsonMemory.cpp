// JsonMemory: the slow paths of the pool (refill, chunks, the depot, thread end).
#include "json/JsonMemory.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace JsonMemory {

thread_local ThreadLists* tLists = nullptr;

#if !defined(VIRELO_JSON_NO_POOL)

namespace {

constexpr size_t kChunkSize = 64 * 1024;

// Free blocks shared between threads: filled by threads with long lists and by ending threads.
// Trivially destructible, so it outlives every thread that may still give blocks back.
struct Depot {
    std::mutex fMutex;
    FreeList fLists[kClasses];
    // Read without the lock, so that a thread with an empty list does not lock the depot
    // while the depot has nothing to give.
    std::atomic<size_t> fAvailable[kClasses] = {};
};
constinit Depot gDepot;

// Every chunk ever taken, linked through its first granule, so that the pool's memory stays
// reachable for leak checkers.
constinit std::atomic<void*> gChunks{nullptr};

char* NewChunk() {
    auto* chunk = static_cast<char*>(std::malloc(kChunkSize));
    if (!chunk) throw std::bad_alloc();
    void* previous = gChunks.load(std::memory_order_relaxed);
    do {
        *reinterpret_cast<void**>(chunk) = previous;
    } while (!gChunks.compare_exchange_weak(previous, chunk, std::memory_order_release,
                                            std::memory_order_relaxed));
    return chunk;
}

// Moves up to `count` blocks from the front of `from` to the front of `to`.
void Give(FreeList& to, FreeList& from, size_t count) {
    while (count-- && from.fHead) {
        FreeBlock* block = from.fHead;
        from.fHead = block->fNext;
        --from.fCount;
        block->fNext = to.fHead;
        to.fHead = block;
        ++to.fCount;
    }
}

void Publish(size_t c) {
    gDepot.fAvailable[c].store(gDepot.fLists[c].fCount, std::memory_order_relaxed);
}

// A thread's lists and the chunk it carves new blocks from. The owner hands the lists to the
// depot when the thread ends; later pool calls on that thread work on the depot directly.
struct ThreadCache {
    ThreadLists fLists;
    char* fBump = nullptr;
    char* fBumpEnd = nullptr;

    ~ThreadCache() {
        tLists = nullptr;
        std::lock_guard<std::mutex> lock(gDepot.fMutex);
        for (size_t c = 0; c < kClasses; ++c) {
            Give(gDepot.fLists[c], fLists.fLists[c], fLists.fLists[c].fCount);
            Publish(c);
        }
    }
};

[[gnu::tls_model("initial-exec")]] thread_local ThreadCache* tCache = nullptr;
[[gnu::tls_model("initial-exec")]] thread_local bool tCacheGone = false;

ThreadCache* Cache() {
    if (ThreadCache* cache = tCache) return cache;
    if (tCacheGone) return nullptr;
    static thread_local struct Owner {
        ThreadCache fCache;
        ~Owner() {
            tCache = nullptr;
            tCacheGone = true;
        }
    } owner;
    tCache = &owner.fCache;
    tLists = &owner.fCache.fLists;
    return tCache;
}

} // namespace

void* AllocateSlow(size_t size) {
    const size_t c = ClassOf(size);
    ThreadCache* cache = Cache();
    if (cache) {
        // The thread's list is empty: take from the depot, else carve from the chunk.
        FreeList& list = cache->fLists.fLists[c];
        if (gDepot.fAvailable[c].load(std::memory_order_relaxed) != 0) {
            std::lock_guard<std::mutex> lock(gDepot.fMutex);
            Give(list, gDepot.fLists[c], kMaxLocalBlocks / 2);
            Publish(c);
        }
        if (FreeBlock* block = list.fHead) {
            list.fHead = block->fNext;
            --list.fCount;
            return block;
        }
        const size_t bytes = (c + 1) * kGranule;
        if (static_cast<size_t>(cache->fBumpEnd - cache->fBump) < bytes) {
            char* chunk = NewChunk();
            cache->fBump = chunk + kGranule; // the first granule links the chunk list
            cache->fBumpEnd = chunk + kChunkSize;
        }
        void* block = cache->fBump;
        cache->fBump += bytes;
        return block;
    }
    // The thread is ending: the depot, or a chunk of its own for this rare late block.
    {
        std::lock_guard<std::mutex> lock(gDepot.fMutex);
        if (FreeBlock* block = gDepot.fLists[c].fHead) {
            gDepot.fLists[c].fHead = block->fNext;
            --gDepot.fLists[c].fCount;
            Publish(c);
            return block;
        }
    }
    return NewChunk() + kGranule;
}

void FreeSlow(void* memory, size_t size) noexcept {
    const size_t c = ClassOf(size);
    auto* block = static_cast<FreeBlock*>(memory);
    if (ThreadCache* cache = Cache()) {
        FreeList& list = cache->fLists.fLists[c];
        block->fNext = list.fHead;
        list.fHead = block;
        ++list.fCount;
        if (list.fCount <= kMaxLocalBlocks) return;
        std::lock_guard<std::mutex> lock(gDepot.fMutex);
        Give(gDepot.fLists[c], list, kMaxLocalBlocks / 2);
        Publish(c);
        return;
    }
    std::lock_guard<std::mutex> lock(gDepot.fMutex);
    block->fNext = gDepot.fLists[c].fHead;
    gDepot.fLists[c].fHead = block;
    ++gDepot.fLists[c].fCount;
    Publish(c);
}

#else

void* AllocateSlow(size_t size) {
    return ::operator new(size);
}

void FreeSlow(void* block, size_t) noexcept {
    ::operator delete(block);
}

#endif

} // namespace JsonMemory
