// The node pool on its own, built with the pool even in sanitizer builds (which otherwise use
// operator new), so that ThreadSanitizer checks its cross-thread paths: frees by other threads,
// heaps of ended threads, blocks wanted after a thread's heap is gone.
#include "json/JsonMemory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

struct Block {
    void* fMemory;
    size_t fSize;
};

// Fills a block with a pattern of its owner's mark, so a block handed out twice shows.
Block Take(size_t size, unsigned char mark) {
    Block block{JsonMemory::Allocate(size), size};
    std::memset(block.fMemory, mark, size);
    return block;
}

bool Holds(const Block& block, unsigned char mark) {
    const auto* bytes = static_cast<const unsigned char*>(block.fMemory);
    for (size_t i = 0; i < block.fSize; ++i)
        if (bytes[i] != mark) return false;
    return true;
}

void Give(const Block& block) {
    JsonMemory::Free(block.fMemory, block.fSize);
}

size_t PagesOf(const std::vector<Block>& blocks) {
    std::set<const void*> pages;
    for (const Block& block : blocks) pages.insert(JsonMemory::PageOf(block.fMemory));
    return pages.size();
}

} // namespace

TEST(JsonMemory, BuildsInWholePagesAgainAfterALargeTreeIsFreed) {
    // A large "tree" of mixed sizes, freed, then a smaller one of one size: the second must
    // lie in as few pages as its bytes need, not in the holes the first one left.
    std::vector<Block> large;
    for (int i = 0; i < 60000; ++i) large.push_back(Take(16 + (i % 4) * 16, 1));
    for (const Block& block : large) Give(block);

    std::vector<Block> small;
    for (int i = 0; i < 4000; ++i) small.push_back(Take(48, 2));
    EXPECT_LE(PagesOf(small), 4000 * 48 / (JsonMemory::kPageSize - sizeof(JsonMemory::Page)) + 2);
    std::set<void*> distinct;
    for (const Block& block : small) {
        EXPECT_TRUE(Holds(block, 2));
        distinct.insert(block.fMemory);
        Give(block);
    }
    EXPECT_EQ(distinct.size(), small.size());
}

TEST(JsonMemory, BlocksFreedByAnotherThreadAreReused) {
    // One thread builds, another frees, round after round: the builder's pages come back
    // instead of growing by a round's worth each time.
    std::set<const void*> pages;
    for (int round = 0; round < 20; ++round) {
        std::vector<Block> built;
        std::thread builder([&built] {
            for (int i = 0; i < 5000; ++i) built.push_back(Take(32, 3));
        });
        builder.join();
        for (const Block& block : built) pages.insert(JsonMemory::PageOf(block.fMemory));
        std::thread freer([&built] {
            for (const Block& block : built) {
                EXPECT_TRUE(Holds(block, 3));
                Give(block);
            }
        });
        freer.join();
    }
    EXPECT_LE(pages.size(), 3 * (5000 * 32 / (JsonMemory::kPageSize - sizeof(JsonMemory::Page)) + 1));
}

namespace {

// A thread-local object made before the thread's first pool use is destroyed after the pool
// has left the thread's heap behind; its destructor still builds and frees.
struct LateUser {
    bool fArmed = false;
    ~LateUser() {
        if (!fArmed) return;
        std::vector<Block> blocks;
        for (int i = 0; i < 300; ++i) blocks.push_back(Take(64, 4));
        for (const Block& block : blocks) {
            EXPECT_TRUE(Holds(block, 4));
            Give(block);
        }
    }
};
thread_local LateUser tLateUser;

} // namespace

TEST(JsonMemory, BlocksOutliveTheThreadThatMadeThem) {
    std::vector<Block> orphans;
    std::thread maker([&orphans] {
        tLateUser.fArmed = true;
        for (int i = 0; i < 3000; ++i) orphans.push_back(Take(16 + (i % 16) * 16, 5));
    });
    maker.join();
    // The maker's heap is left behind: these frees act as its owner under the lock, and the
    // next thread adopts the heap.
    for (size_t i = 0; i < orphans.size(); i += 2) {
        EXPECT_TRUE(Holds(orphans[i], 5));
        Give(orphans[i]);
    }
    std::thread adopter([&orphans] {
        std::vector<Block> mine;
        for (int i = 0; i < 3000; ++i) mine.push_back(Take(16 + (i % 16) * 16, 6));
        for (size_t i = 1; i < orphans.size(); i += 2) {
            EXPECT_TRUE(Holds(orphans[i], 5));
            Give(orphans[i]);
        }
        for (const Block& block : mine) {
            EXPECT_TRUE(Holds(block, 6));
            Give(block);
        }
    });
    adopter.join();
}

TEST(JsonMemory, ManyThreadsExchangingBlocks) {
    constexpr int kThreads = 8;
    constexpr int kSteps = 20000;
    std::mutex mutex;
    std::vector<Block> shared; // blocks any thread may free
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            std::mt19937 random(static_cast<unsigned>(t));
            const auto mark = static_cast<unsigned char>(0x10 + t);
            std::vector<Block> mine;
            for (int step = 0; step < kSteps; ++step) {
                const unsigned choice = random() % 8;
                if (choice < 4) {
                    mine.push_back(Take(1 + random() % JsonMemory::kMaxPooled, mark));
                } else if (choice < 6 && !mine.empty()) {
                    if (!Holds(mine.back(), mark)) ++failures[t];
                    std::lock_guard<std::mutex> lock(mutex);
                    std::memset(mine.back().fMemory, 0xEE, mine.back().fSize);
                    shared.push_back(mine.back());
                    mine.pop_back();
                } else if (choice < 7 && !mine.empty()) {
                    if (!Holds(mine.back(), mark)) ++failures[t];
                    Give(mine.back());
                    mine.pop_back();
                } else {
                    Block other{};
                    {
                        std::lock_guard<std::mutex> lock(mutex);
                        if (shared.empty()) continue;
                        other = shared.back();
                        shared.pop_back();
                    }
                    if (!Holds(other, 0xEE)) ++failures[t];
                    Give(other);
                }
            }
            for (const Block& block : mine) {
                if (!Holds(block, mark)) ++failures[t];
                Give(block);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const Block& block : shared) {
        EXPECT_TRUE(Holds(block, 0xEE));
        Give(block);
    }
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
}
