// JsonMemberTable: the same order and bucket count as std::unordered_map over random histories
// (with std::hash and with a hash of three values), real std::hash collisions and a pinned
// order, lookups that stay constant under flooding, the strong guarantee when a block cannot be
// had, and the memory a table holds.
#include "json/JsonMemberTable.h"

#include "json/JsonKeyedHash.h"
#include "tests/support/CollidingKeys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

// Spreads keys over three far-apart codes, so that a few buckets hold long runs.
struct ThreeValueHash {
    size_t operator()(std::string_view key) const noexcept {
        static constexpr size_t kCodes[] = {0x9e3779b97f4a7c15ULL, 12345, ~size_t(0)};
        return kCodes[std::hash<std::string_view>{}(key) % 3];
    }
};

// Keys with one home slot in every index but distinct codes: the other way to flood an index
// on codes (std::hash can be solved for its low bits as well as for all of them).
struct SameHomeHash {
    size_t operator()(std::string_view key) const noexcept {
        return std::hash<std::string_view>{}(key) << 32;
    }
};

} // namespace

// Have the map cache codes and use its small-size paths with this hash as it does with std::hash.
template <> struct std::__is_fast_hash<ThreeValueHash> : std::false_type {};
template <> struct std::__is_fast_hash<SameHomeHash> : std::false_type {};

namespace {

// Blocks from operator new, counted, optionally failing after a number of allocations; each
// block must come back with the size it was allocated with.
struct CountingMemory {
    static inline size_t sLiveBytes = 0;
    static inline long sFailAfter = -1; ///< allocations that still succeed; -1 for all
    static inline std::unordered_map<void*, size_t> sBlocks;
    static void* Allocate(size_t size) {
        if (sFailAfter == 0) throw std::bad_alloc();
        if (sFailAfter > 0) --sFailAfter;
        void* block = ::operator new(size);
        sBlocks[block] = size;
        sLiveBytes += size;
        return block;
    }
    static void Free(void* block, size_t size) noexcept {
        auto it = sBlocks.find(block);
        if (it == sBlocks.end() || it->second != size) ADD_FAILURE() << "freed with another size";
        if (it != sBlocks.end()) sBlocks.erase(it);
        sLiveBytes -= size;
        ::operator delete(block);
    }
};

struct CountingEqual {
    static inline size_t sCalls = 0;
    bool operator()(std::string_view a, std::string_view b) const noexcept {
        ++sCalls;
        return a == b;
    }
};

template <class Hash>
using CountedTable = JsonBasicMemberTable<Hash, std::equal_to<std::string_view>, CountingMemory>;
template <class Hash>
using Map = std::unordered_map<std::string, std::pair<unsigned long, JsonValue*>, Hash>;
using StdMap = Map<std::hash<std::string>>;

JsonValue* FakeValue(uint64_t n) {
    return reinterpret_cast<JsonValue*>(uintptr_t((n + 1) * 16));
}

struct Row {
    std::string fKey;
    unsigned long fSequence;
    JsonValue* fValue;
    bool operator==(const Row&) const = default;
};

template <class Table> std::vector<Row> Rows(const Table& table) {
    std::vector<Row> rows;
    for (const auto& member : table)
        rows.push_back({std::string(member.Key()), member.fSequence, member.fValue});
    return rows;
}

template <class Table> std::vector<std::string> Keys(const Table& table) {
    std::vector<std::string> keys;
    for (const auto& member : table)
        keys.emplace_back(member.Key());
    return keys;
}

// Same members in the same order, same bucket count; with `lookups`, every key found.
template <class Table, class M>
testing::AssertionResult Same(const Table& table, const M& map, bool lookups = false) {
    if (table.Size() != map.size())
        return testing::AssertionFailure() << "size " << table.Size() << " vs " << map.size();
    if (table.BucketCount() != map.bucket_count())
        return testing::AssertionFailure()
               << "bucket count " << table.BucketCount() << " vs " << map.bucket_count();
    auto it = map.begin();
    size_t position = 0;
    for (const auto& member : table) {
        if (it == map.end()) return testing::AssertionFailure() << "table longer than map";
        if (member.Key() != it->first || member.fSequence != it->second.first ||
            member.fValue != it->second.second)
            return testing::AssertionFailure() << "position " << position << ": '" << member.Key()
                                               << "' vs '" << it->first << "'";
        ++it;
        ++position;
    }
    if (it != map.end()) return testing::AssertionFailure() << "table shorter than map";
    if (lookups) {
        for (const auto& [key, entry] : map) {
            auto* member = table.Find(key);
            if (!member || member->fValue != entry.second)
                return testing::AssertionFailure() << "lookup of '" << key << "'";
        }
    }
    return testing::AssertionSuccess();
}

// ---- Differential histories ----

std::vector<std::string> MakeUniverse(size_t count, uint64_t seed) {
    std::mt19937_64 random(seed);
    std::vector<std::string> keys;
    std::unordered_map<std::string, bool> seen;
    while (keys.size() < count) {
        uint64_t bits = random();
        // Mostly short keys, some empty or one byte, some past the string's small buffer,
        // a few longer than a pool block.
        size_t length = bits % 100 < 5    ? bits % 2
                        : bits % 100 < 90 ? 2 + bits % 14
                        : bits % 100 < 98 ? 16 + bits % 40
                                          : 200 + bits % 200;
        std::string key;
        for (size_t i = 0; i < length; ++i)
            key += static_cast<char>('!' + random() % 90);
        if (seen.emplace(key, true).second) keys.push_back(std::move(key));
    }
    return keys;
}

struct Phase {
    size_t fTarget; ///< the size the histories hover around
    size_t fSteps;
    size_t fCheckEvery;
};

enum EOperation { eCopyConstruct, eCopyAssign, eMoveConstruct, eMoveAssign, eSwap };

// Runs the same random operations on tables and maps side by side and compares them.
template <class Table, class M> class Differential {
public:
    Differential(uint64_t seed, const std::vector<std::string>& universe)
        : fSeed(seed), fRandom(seed), fUniverse(universe), fTables(3), fMaps(3) {}

    void Run(const Phase& phase) {
        // Large targets grow one table, and try copies, moves and swaps once at the end.
        const bool large = phase.fTarget >= 2000;
        for (size_t step = 0; step < phase.fSteps && !testing::Test::HasFailure(); ++step) {
            // Mostly the largest table, so that one reaches the target (copies, moves and swaps
            // take it as their source); now and then the others.
            const size_t largest = Largest();
            const size_t a = large || Below(4) != 0 ? largest : Below(3), b = Below(3);
            if (!large && Below(1000) < 8)
                Structural(static_cast<EOperation>(eCopyConstruct + Below(5)), b, largest);
            else if (!large && Below(4 * phase.fTarget + 100) == 0)
                Clear(a);
            else
                InsertOrErase(a, phase.fTarget);
            if (step % phase.fCheckEvery == 0 || step + 1 == phase.fSteps) {
                const bool lookups = step % (phase.fCheckEvery * 16) == 0;
                ASSERT_TRUE(Same(fTables[a], fMaps[a], lookups)) << Where(phase, step);
                ASSERT_TRUE(Same(fTables[b], fMaps[b], lookups)) << Where(phase, step);
            }
        }
        if (!large) return;
        for (int op = eCopyConstruct; op <= eSwap && !testing::Test::HasFailure(); ++op) {
            const size_t largest = Largest();
            Structural(static_cast<EOperation>(op), (largest + 1 + op % 2) % 3, largest);
            for (size_t i = 0; i < 3; ++i)
                ASSERT_TRUE(Same(fTables[i], fMaps[i])) << Where(phase, op) << " (structural)";
        }
    }

    /// Erases the universe's keys in turn from the largest table until `left` members are left;
    /// clears the others.
    void EraseAllBut(size_t left) {
        const size_t largest = Largest();
        fTables[0].Swap(fTables[largest]);
        fMaps[0].swap(fMaps[largest]);
        Clear(1);
        Clear(2);
        for (size_t i = 0; i < fUniverse.size() && fMaps[0].size() > left; ++i) {
            bool found = false;
            fTables[0].Erase(fUniverse[i], found);
            ASSERT_EQ(found, fMaps[0].erase(fUniverse[i]) == 1);
            if (fMaps[0].size() < 100 || i % 10000 == 0) {
                ASSERT_TRUE(Same(fTables[0], fMaps[0], fMaps[0].size() < 100))
                    << "seed " << fSeed << ", erase " << i;
            }
        }
    }

private:
    size_t Below(size_t n) { return fRandom() % n; }

    size_t Largest() const {
        size_t largest = 0;
        for (size_t i = 1; i < fMaps.size(); ++i)
            if (fMaps[i].size() > fMaps[largest].size()) largest = i;
        return largest;
    }

    std::string Where(const Phase& phase, size_t step) const {
        return "seed " + std::to_string(fSeed) + ", target " + std::to_string(phase.fTarget) +
               ", step " + std::to_string(step);
    }

    void Clear(size_t a) {
        fTables[a].Clear();
        fMaps[a].clear();
    }

    void InsertOrErase(size_t a, size_t target) {
        Table& table = fTables[a];
        M& map = fMaps[a];
        // Keys come from a part of the universe half as large again as the target, so that
        // inserts meet present keys and erases absent ones; below the target, three keys in four
        // are the next one in turn, mostly absent.
        const size_t range = std::min(fUniverse.size(), target + target / 2 + 2);
        const bool grow = map.size() < target;
        const std::string& key = fUniverse[grow && Below(4) ? fCursor++ % range : Below(range)];
        if (Below(1000) < (grow ? 900u : 400u)) {
            const unsigned long sequence = fSequence++;
            auto [member, added] = table.TryEmplace(key, sequence, FakeValue(sequence));
            auto [it, inserted] = map.try_emplace(key, sequence, FakeValue(sequence));
            EXPECT_EQ(added, inserted);
            EXPECT_EQ(member->fValue, it->second.second);
        } else {
            bool found = false;
            JsonValue* value = table.Erase(key, found);
            auto it = map.find(key);
            EXPECT_EQ(found, it != map.end());
            if (it != map.end()) {
                EXPECT_EQ(value, it->second.second);
                map.erase(it);
            }
        }
    }

    void Structural(EOperation op, size_t a, size_t b) {
        switch (op) {
        case eCopyConstruct: {
            Table table(fTables[b]);
            M map(fMaps[b]);
            ASSERT_TRUE(Same(table, map, true)) << "seed " << fSeed << ": copy";
            fTables[a].Swap(table);
            fMaps[a].swap(map);
            break;
        }
        case eCopyAssign:
            fTables[a] = fTables[b]; // a == b sometimes: self-assignment
            fMaps[a] = fMaps[b];
            break;
        case eMoveConstruct: {
            Table table(std::move(fTables[b]));
            M map(std::move(fMaps[b]));
            ASSERT_TRUE(Same(fTables[b], fMaps[b])) << "seed " << fSeed << ": moved-from";
            fTables[a].Swap(table);
            fMaps[a].swap(map);
            break;
        }
        case eMoveAssign:
            if (a != b) {
                fTables[a] = std::move(fTables[b]);
                fMaps[a] = std::move(fMaps[b]);
            }
            break;
        default:
            swap(fTables[a], fTables[b]);
            std::swap(fMaps[a], fMaps[b]);
            break;
        }
    }

    uint64_t fSeed;
    std::mt19937_64 fRandom;
    const std::vector<std::string>& fUniverse;
    std::vector<Table> fTables;
    std::vector<M> fMaps;

    unsigned long fSequence = 0;
    size_t fCursor = 0;
};

const std::vector<std::string>& Universe() {
    static const std::vector<std::string> universe = MakeUniverse(150000, 11);
    return universe;
}

TEST(JsonMemberTable, OrderHashEqualsTheMapsHash) {
    for (const std::string& key : MakeUniverse(200, 5))
        EXPECT_EQ(std::hash<std::string_view>{}(key), std::hash<std::string>{}(key));
}

TEST(JsonMemberTable, FollowsTheMapThroughRandomHistories) {
    const Phase phases[] = {
        {0, 300, 1},   {2, 1500, 1},  {5, 2000, 1},   {9, 2000, 1},
        {14, 2000, 1}, {40, 3000, 1}, {300, 4000, 1}, {1500, 8000, 3},
    };
    for (uint64_t seed : {1, 2, 3}) {
        Differential<JsonMemberTable, StdMap> run(seed, Universe());
        for (const Phase& phase : phases)
            run.Run(phase);
    }
}

TEST(JsonMemberTable, FollowsTheMapAtOneHundredThousandMembers) {
    Differential<JsonMemberTable, StdMap> run(4, Universe());
    run.Run({100000, 150000, 10000}); // grows to 100,000 through every rehash to 172,933 buckets
    run.Run({100000, 4000, 500});
    run.EraseAllBut(5); // compacts on the way down, and ends small
    run.Run({20, 3000, 1});
}

TEST(JsonMemberTable, FollowsTheMapWithLongCollisionRuns) {
    const Phase phases[] = {
        {3, 1500, 1}, {12, 2000, 1}, {60, 3000, 1}, {700, 5000, 2}, {2500, 8000, 200}};
    for (uint64_t seed : {5, 6}) {
        Differential<CountedTable<ThreeValueHash>, Map<ThreeValueHash>> run(seed, Universe());
        for (const Phase& phase : phases)
            run.Run(phase);
    }
    EXPECT_EQ(CountingMemory::sLiveBytes, 0u);
}

// Copies and moves carry the policy's state: at one member short of the bucket count, the next
// insert must not rehash (the first insert of a new map would).
TEST(JsonMemberTable, CopiesAndMovesGrowLikeTheMapAtEverySize) {
    const auto& universe = Universe();
    JsonMemberTable table;
    StdMap map;
    for (unsigned long n = 0; n < 140; ++n) {
        JsonMemberTable copy(table);
        StdMap mapCopy(map);
        JsonMemberTable assigned;
        assigned.TryEmplace("x", 0, nullptr);
        StdMap mapAssigned{{"x", {0, nullptr}}};
        assigned = table;
        mapAssigned = map;
        JsonMemberTable moved(std::move(copy));
        StdMap mapMoved(std::move(mapCopy));
        for (unsigned long i = n; i < n + 2; ++i) {
            for (auto [t, m] :
                 {std::pair{&moved, &mapMoved}, {&assigned, &mapAssigned}, {&copy, &mapCopy}}) {
                t->TryEmplace(universe[i], i, FakeValue(i));
                m->try_emplace(universe[i], i, FakeValue(i));
                ASSERT_TRUE(Same(*t, *m)) << n << " members";
            }
        }
        table.TryEmplace(universe[n], n, FakeValue(n));
        map.try_emplace(universe[n], n, FakeValue(n));
    }
}

// A table laid out in advance for its members (as readers do) still follows the map: the
// room made changes neither the order nor the bucket count. Duplicates and a wrong guess of
// the key bytes included.
TEST(JsonMemberTable, PreparedTablesFollowTheMap) {
    const auto& universe = Universe();
    for (size_t n : {1, 2, 8, 9, 13, 14, 100, 1000}) {
        for (const size_t guess : {size_t(0), size_t(1), size_t(100000)}) {
            SCOPED_TRACE(std::to_string(n) + " members, key bytes guessed " + std::to_string(guess));
            JsonMemberTable table;
            table.Prepare(n, guess ? guess : 16 * n);
            StdMap map;
            for (unsigned long i = 0; i < n; ++i) {
                const std::string& key = universe[i % (n - n / 5)]; // a fifth are duplicates
                table.TryEmplace(key, i, FakeValue(i));
                map.try_emplace(key, i, FakeValue(i));
            }
            ASSERT_TRUE(Same(table, map));
        }
    }
}

// ---- Real std::hash collisions ----

const std::vector<std::string>& CollidingKeys() {
    static const std::vector<std::string> keys = json_test::MakeCollidingKeys(20000, 7);
    return keys;
}

TEST(JsonMemberTable, CollidingKeysReallyCollide) {
    const std::vector<std::string>& keys = CollidingKeys();
    const size_t code = std::hash<std::string>{}(keys[0]);
    for (const std::string& key : keys) {
        ASSERT_EQ(std::hash<std::string>{}(key), code) << key;
        for (char c : key)
            ASSERT_TRUE(c >= 0x20 && c <= 0x7e && c != '"' && c != '\\') << key;
    }
    std::vector<std::string> sorted = keys; // (a hash map of these keys would be the flood)
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::unique(sorted.begin(), sorted.end()), sorted.end());
}

// A future libstdc++ that orders differently is noticed here even if the map and the table
// agree. With colliding keys every insert goes to the front of the one bucket, and the rehash at
// the 14th re-inserts the run in list order, which reverses it.
TEST(JsonMemberTable, PinsTheOrder) {
    struct Case {
        std::vector<std::string> fKeys;
        std::vector<std::string> fExpected;
    };
    const Case cases[] = {
        {json_test::MakeCollidingKeys(20, 1),
         {R"(:=ADrVRCyLT%9+C2)", R"(3b@DrVRC`8d8;|q*)", R"(oB@DrVRCGJ4W..l5)",
          R"(^A@DrVRCw!>e?p`})", R"(q}>DrVRCN(KIt9B/)", R"(tv>DrVRC 4*]&a)+)",
          R"(i_=DrVRCQK|7n{T^)", R"(^H:DrVRCZT?gWq9#)", R"({s:DrVRC}|LG@* K)",
          R"(eZ;DrVRC`a&7{f#.)", R"(0,<DrVRCP^I dy[.)", R"(E:<DrVRCY1&:f86d)",
          R"(}A<DrVRC@/NY@;E7)", R"(IF<DrVRC9^^k<4tq)", R"(kx<DrVRCFY*9h;&^)",
          R"(%/=DrVRCHJY>[7sM)", R"($4=DrVRC5]zm)B+-)", R"(+J=DrVRCJBr*HC#b)",
          R"(AZ=DrVRC/Q g=KKY)", R"(Q^=DrVRCuc}j0|m8)"}},
        {{"id", "name", "type",  "value", "x",     "y",      "z",     "tags", "items", "a",
          "b",  "c",    "title", "url",   "width", "height", "count", "next", "prev",  "data"},
         {"prev", "next",  "count", "data",  "height", "url", "id",   "type", "z", "x",
          "y",    "width", "c",     "items", "value",  "a",   "name", "tags", "b", "title"}},
    };
    for (const Case& c : cases) {
        JsonMemberTable table;
        StdMap map;
        for (unsigned long i = 0; i < c.fKeys.size(); ++i) {
            table.TryEmplace(c.fKeys[i], i, FakeValue(i));
            map.try_emplace(c.fKeys[i], i, FakeValue(i));
        }
        EXPECT_TRUE(Same(table, map, true));
        EXPECT_EQ(Keys(table), c.fExpected);
        EXPECT_EQ(table.BucketCount(), 29u);
    }
}

TEST(JsonMemberTable, FollowsTheMapOverCollidingKeys) {
    const std::vector<std::string> keys(CollidingKeys().begin(), CollidingKeys().begin() + 2000);
    Differential<JsonMemberTable, StdMap> run(8, keys);
    run.Run({1400, 6000, 50});
}

// ---- Flooding: counted, not timed ----

template <class Hash>
void ExpectFloodCostsOneComparisonPerKey(const std::vector<std::string>& keys) {
    using Table = JsonBasicMemberTable<Hash, CountingEqual>;
    const size_t n = keys.size();
    Table table;
    CountingEqual::sCalls = 0;
    for (size_t i = 0; i < n; ++i)
        ASSERT_TRUE(table.TryEmplace(keys[i], i, FakeValue(i)).second);
    // Only the first eight inserts scan; afterwards a new key meets no equal tag but by chance.
    EXPECT_LE(CountingEqual::sCalls, 28 + n / 256);
    EXPECT_TRUE(table.KeyedIndex()); // the flood moved the index to the keyed hash

    CountingEqual::sCalls = 0;
    for (size_t i = 0; i < n; ++i)
        ASSERT_EQ(table.Find(keys[i])->fValue, FakeValue(i));
    EXPECT_LE(CountingEqual::sCalls, n + n / 256);

    CountingEqual::sCalls = 0;
    for (size_t i = 0; i < n; ++i)
        ASSERT_FALSE(table.TryEmplace(keys[i], 0, nullptr).second);
    EXPECT_LE(CountingEqual::sCalls, n + n / 256);

    CountingEqual::sCalls = 0;
    for (size_t i = 0; i < n; i += 2) {
        bool found = false;
        ASSERT_EQ(table.Erase(keys[i], found), FakeValue(i));
        ASSERT_TRUE(found);
    }
    EXPECT_LE(CountingEqual::sCalls, n / 2 + n / 256);
    EXPECT_EQ(table.Size(), n / 2);
}

TEST(JsonMemberTable, FloodsCostOneComparisonPerKey) {
    {
        SCOPED_TRACE("keys with one std::hash code");
        ExpectFloodCostsOneComparisonPerKey<std::hash<std::string_view>>(CollidingKeys());
    }
    {
        SCOPED_TRACE("codes with one home slot");
        const std::vector<std::string> keys(Universe().begin(), Universe().begin() + 20000);
        ExpectFloodCostsOneComparisonPerKey<SameHomeHash>(keys);
    }
}

// The move to the keyed index changes no order, bucket count or lookup.
TEST(JsonMemberTable, FollowsTheMapWithOneHomeSlot) {
    {
        Differential<CountedTable<SameHomeHash>, Map<SameHomeHash>> run(9, Universe());
        run.Run({60, 3000, 1});
        run.Run({3000, 8000, 200});
    }
    EXPECT_EQ(CountingMemory::sLiveBytes, 0u);
}

// Ordinary keys keep the index on their codes, so they are hashed once: grown member by member,
// prepared, copied, and thinned out.
TEST(JsonMemberTable, OrdinaryKeysKeepTheIndexOnCodes) {
    const auto& universe = Universe();
    for (size_t n : {9, 100, 10000, 150000}) {
        SCOPED_TRACE(std::to_string(n) + " members");
        JsonMemberTable grown, prepared;
        prepared.Prepare(n, 16 * n);
        for (size_t i = 0; i < n; ++i) {
            grown.TryEmplace(universe[i], i, FakeValue(i));
            prepared.TryEmplace(universe[i], i, FakeValue(i));
        }
        JsonMemberTable copy(grown);
        for (size_t i = 0; i < n; i += 3) {
            bool found = false;
            copy.Erase(universe[i], found);
        }
        for (const JsonMemberTable* table : {&grown, &prepared, &copy}) {
            EXPECT_FALSE(table->KeyedIndex());
            for (size_t i = 0; i < n; ++i) {
                const bool erased = table == &copy && i % 3 == 0;
                const auto* member = table->Find(universe[i]);
                ASSERT_EQ(member ? member->fValue : nullptr, erased ? nullptr : FakeValue(i)) << i;
            }
        }
    }
}

// ---- Allocation failures ----

struct Counted : testing::Test {
    void TearDown() override {
        CountingMemory::sFailAfter = -1;
        EXPECT_EQ(CountingMemory::sLiveBytes, 0u) << "leaked";
    }
};
using Table = CountedTable<std::hash<std::string_view>>;

TEST_F(Counted, FailedInsertLeavesTheTableAsItWas) {
    Table table;
    StdMap map;
    // Through the small sizes, the switch to large, growth of members and of keys, rehashes.
    for (unsigned long i = 0; i < 400; ++i) {
        const std::string key = "k" + std::to_string(i) + std::string(i % 7 == 0 ? 40 : 0, 'x');
        for (long failAfter = 0;; ++failAfter) {
            const std::vector<Row> before = Rows(table);
            const size_t bytes = CountingMemory::sLiveBytes;
            CountingMemory::sFailAfter = failAfter;
            try {
                table.TryEmplace(key, i, FakeValue(i));
                CountingMemory::sFailAfter = -1;
                break;
            } catch (const std::bad_alloc&) {
                CountingMemory::sFailAfter = -1;
                ASSERT_EQ(Rows(table), before)
                    << "insert " << i << ", failing allocation " << failAfter;
                ASSERT_EQ(CountingMemory::sLiveBytes, bytes);
                ASSERT_EQ(table.Find(key), nullptr);
            }
        }
        map.try_emplace(key, i, FakeValue(i));
        // The bucket count and later rehashes show whether the policy's state was restored.
        ASSERT_TRUE(Same(table, map, i % 50 == 0)) << "insert " << i;
    }
}

TEST_F(Counted, FailedCopyLeavesTheTargetAsItWas) {
    for (size_t size : {3, 30}) {
        Table source;
        Table target;
        for (unsigned long i = 0; i < size; ++i)
            source.TryEmplace("s" + std::to_string(i), i, FakeValue(i));
        target.TryEmplace("t", 1, FakeValue(1));
        const std::vector<Row> before = Rows(target);
        const size_t bucketCount = target.BucketCount();
        for (long failAfter = 0; failAfter < 2; ++failAfter) {
            const size_t bytes = CountingMemory::sLiveBytes;
            CountingMemory::sFailAfter = failAfter;
            EXPECT_THROW(Table copy(source), std::bad_alloc);
            CountingMemory::sFailAfter = failAfter;
            EXPECT_THROW(target = source, std::bad_alloc);
            CountingMemory::sFailAfter = -1;
            EXPECT_EQ(Rows(target), before);
            EXPECT_EQ(target.BucketCount(), bucketCount);
            EXPECT_EQ(CountingMemory::sLiveBytes, bytes);
            if (size < 8) break; // a small table is one block
        }
        target = source;
        EXPECT_EQ(Rows(target), Rows(source));
    }
}

TEST_F(Counted, EraseWorksWhenCompactionCannotAllocate) {
    Table table;
    StdMap map;
    for (unsigned long i = 0; i < 1000; ++i) {
        table.TryEmplace(std::to_string(i), i, FakeValue(i));
        map.try_emplace(std::to_string(i), i, FakeValue(i));
    }
    CountingMemory::sFailAfter = 0;
    for (unsigned long i = 0; i < 990; ++i) {
        bool found = false;
        EXPECT_EQ(table.Erase(std::to_string(i), found), FakeValue(i));
        map.erase(std::to_string(i));
    }
    CountingMemory::sFailAfter = -1;
    EXPECT_TRUE(Same(table, map, true));
    for (unsigned long i = 0; i < 50; ++i) {
        table.TryEmplace("n" + std::to_string(i), i, FakeValue(i));
        map.try_emplace("n" + std::to_string(i), i, FakeValue(i));
    }
    EXPECT_TRUE(Same(table, map, true));
}

// ---- Memory ----

TEST_F(Counted, EmptyTablesAllocateNothing) {
    Table table;
    Table copy(table);
    EXPECT_EQ(CountingMemory::sLiveBytes, 0u);
    table.TryEmplace("a", 0, nullptr);
    table.Clear();
    EXPECT_EQ(CountingMemory::sLiveBytes, 0u);
    EXPECT_EQ(table.BucketCount(), 13u); // kept, like unordered_map::clear
    Table copyOfCleared(table);
    EXPECT_EQ(CountingMemory::sLiveBytes, 0u);
}

TEST_F(Counted, SmallTablesStaySmall) {
    const char* keys[] = {"id", "name", "type", "tags"};
    Table table;
    for (unsigned long i = 0; i < 4; ++i) {
        table.TryEmplace(keys[i], i, FakeValue(i));
        EXPECT_LE(CountingMemory::sLiveBytes, i < 2 ? 80u : 160u) << i + 1 << " members";
    }
    Table copy(table);
    EXPECT_LE(CountingMemory::sLiveBytes, 160u + 144u);
}

TEST_F(Counted, BytesPerMemberAreBounded) {
    // Stated bound: 128 bytes per member, twice the key bytes, 4 per bucket, and a block's
    // rounding (members, codes, links and index take 60 bytes per entry, with capacity at
    // most twice the size while no member was erased).
    const auto& universe = Universe();
    Table table;
    size_t keyBytes = 0;
    for (unsigned long i = 0; i < 100000; ++i) {
        table.TryEmplace(universe[i], i, FakeValue(i));
        keyBytes += universe[i].size();
        if (i % 997 == 0 || i < 40) {
            const size_t bound = 128 * table.Size() + 2 * keyBytes + 4 * table.BucketCount() + 32;
            ASSERT_LE(CountingMemory::sLiveBytes, bound) << table.Size() << " members";
        }
    }
    // Erasing squeezes holes out, so the bound holds for what is left.
    for (unsigned long i = 0; i < 99000; ++i) {
        bool found = false;
        table.Erase(universe[i], found);
        keyBytes -= universe[i].size();
        if (i % 997 == 0) {
            const size_t bound =
                2 * 128 * table.Size() + 4 * keyBytes + 4 * table.BucketCount() + 32;
            ASSERT_LE(CountingMemory::sLiveBytes, bound) << table.Size() << " members";
        }
    }
}

// ---- The keyed hash ----

TEST(JsonKeyedHash, SipHashMatchesTheReferenceVectors) {
    // SipHash-2-4 under key 00 01 .. 0f, messages 00 01 .. (n-1).
    unsigned char message[15];
    for (int i = 0; i < 15; ++i)
        message[i] = static_cast<unsigned char>(i);
    const uint64_t k0 = 0x0706050403020100ULL, k1 = 0x0f0e0d0c0b0a0908ULL;
    EXPECT_EQ((JsonKeyedHash::SipHash<2, 4>(message, 0, k0, k1)), 0x726fdb47dd0e0e31ULL);
    EXPECT_EQ((JsonKeyedHash::SipHash<2, 4>(message, 15, k0, k1)), 0xa129ca6149be45e5ULL);
}

TEST(JsonKeyedHash, IsStableAndSpreadsKeys) {
    EXPECT_EQ(JsonKeyedHash::Hash("key"), JsonKeyedHash::Hash(std::string("key")));
    EXPECT_NE(JsonKeyedHash::Hash("key"), JsonKeyedHash::Hash("kez"));
    EXPECT_NE(JsonKeyedHash::Hash(""), JsonKeyedHash::Hash(std::string_view("\0", 1)));
}

} // namespace
