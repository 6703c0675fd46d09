// JsonMemberTable: the members of a JSON object (key, insertion sequence number, value pointer).
//
// Iteration order is observable (printing, MessagePack, script key lists), so it is exactly the
// order std::unordered_map<std::string, ...> with std::hash and libstdc++ 12's prime rehash
// policy gives for the same history; the bucket count follows that map's too.
//
// Lookups in a large table go through an open-addressing index. Every key's std::hash code is
// needed for the order anyway, so the index starts out on that code, under two rules that keep
// every lookup short: no member sits more than ProbeLimit() slots past its home slot (a few
// times the longest run random codes make), and no two members share a code. A lookup then ends
// after ProbeLimit() + 1 slots and compares at most one key. std::hash can be inverted, so keys
// that break a rule can be made on purpose; the insert that would break one instead rebuilds the
// index under JsonKeyedHash's secret, where nobody can aim keys at one slot, and the table stays
// keyed until it shrinks back to a small one.
//
// Memory: up to eight members sit in one block, in iteration order, keys included, and are
// found by a short scan. Larger tables keep the members in insertion order with order links,
// their std::hash codes and the keyed index in that block, plus a block with each bucket's
// first member. Nothing is allocated per member; an empty table allocates nothing.
#pragma once

#include "json/JsonKeyedHash.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

class JsonValue;

/// Where a table's order hash and blocks come from; the tests substitute their own.
struct JsonMemberTableHooks {
    size_t (*fOrderHash)(std::string_view key) noexcept;
    void* (*fAllocate)(size_t size);
    void (*fFree)(void* block, size_t size) noexcept;
};

/// Blocks from the engine's node pool (JsonMemory).
struct JsonMemberMemory {
    static void* Allocate(size_t size);
    static void Free(void* block, size_t size) noexcept;
};

/// The state and the hash-independent work of JsonBasicMemberTable.
///
/// The table does not own the values: it never adds or releases a reference; its owner
/// releases them. Any insert or erase may move members (like a vector's elements): pointers,
/// references and iterators into the table are invalid after it. Moving or swapping a table
/// keeps its members where they are.
class JsonMemberTableBase {
public:
    template <class M> class BasicIterator;

    /// One member; what iteration yields. The key is fixed; the owner may change the rest.
    class Member {
    public:
        std::string_view Key() const noexcept {
            if (fKeyLength != kLongKey) return {fKey, fKeyLength};
            uint64_t length;
            std::memcpy(&length, fKey - sizeof length, sizeof length);
            return {fKey, static_cast<size_t>(length)};
        }

    private:
        friend class JsonMemberTableBase;
        template <class> friend class BasicIterator;

        const char* fKey;
        // The key's length; a key of 2^32 - 1 bytes or more has kLongKey here and its length
        // in the 8 bytes before it, so that members stay 32 bytes and keys of any length fit.
        uint32_t fKeyLength;
        // Small table: the member's bucket. Large table: the next member in order.
        uint32_t fLink;

    public:
        unsigned long fSequence; ///< the owner's insertion sequence number
        JsonValue* fValue;
    };

    template <class M> class BasicIterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Member;
        using difference_type = std::ptrdiff_t;
        using pointer = M*;
        using reference = M&;

        BasicIterator() noexcept = default;
        template <class N>
        requires(std::is_const_v<M> && !std::is_const_v<N>)
            BasicIterator(const BasicIterator<N>& other)
        noexcept // iterator to const_iterator
            : fEntries(other.fEntries), fIndex(other.fIndex), fSmallEnd(other.fSmallEnd) {}

        M& operator*() const noexcept { return fEntries[fIndex]; }
        M* operator->() const noexcept { return &fEntries[fIndex]; }
        BasicIterator& operator++() noexcept {
            if (fSmallEnd)
                fIndex = fIndex + 1 < fSmallEnd ? fIndex + 1 : kNone;
            else
                fIndex = fEntries[fIndex].fLink;
            return *this;
        }
        BasicIterator operator++(int) noexcept {
            BasicIterator old = *this;
            ++*this;
            return old;
        }
        friend bool operator==(const BasicIterator& a, const BasicIterator& b) noexcept {
            return a.fIndex == b.fIndex;
        }

    private:
        friend class JsonMemberTableBase;
        template <class> friend class BasicIterator;
        BasicIterator(M* entries, uint32_t index, uint32_t smallEnd) noexcept
            : fEntries(entries), fIndex(index), fSmallEnd(smallEnd) {}

        M* fEntries = nullptr;
        uint32_t fIndex = kNone;
        uint32_t fSmallEnd = 0; ///< the size of a small table (stored in order); 0 for large
    };
    using iterator = BasicIterator<Member>;
    using const_iterator = BasicIterator<const Member>;

    size_t Size() const noexcept { return fSize; }
    bool Empty() const noexcept { return fSize == 0; }
    /// The bucket count std::unordered_map would have after the same history.
    size_t BucketCount() const noexcept { return fBucketCount; }
    /// Whether lookups go through an index under the keyed hash (see the top of this file).
    bool KeyedIndex() const noexcept { return fKeyedIndex; }

    /// Members in the map's order.
    iterator begin() noexcept { return {fEntries, First(), SmallEnd()}; }
    iterator end() noexcept { return {}; }
    const_iterator begin() const noexcept { return {fEntries, First(), SmallEnd()}; }
    const_iterator end() const noexcept { return {}; }

    static constexpr uint32_t kLongKey = UINT32_MAX;

    /// The bytes a key of `keyLength` takes in the block: its own, and 8 more for a long key.
    static size_t StoredBytes(size_t keyLength) noexcept {
        return keyLength + (keyLength >= kLongKey ? sizeof(uint64_t) : 0);
    }

protected:
    static constexpr uint32_t kNone = UINT32_MAX;
    /// Tables up to this size are kept in order and searched by a scan.
    static constexpr uint32_t kSmall = 8;

    /// Slots a member may sit past its home slot while the index is on std::hash codes. At the
    /// index's load (at most half full) the longest run random codes make grows like
    /// 3.6 log2(slots); ordinary keys never reach this (tested up to 150,000 members).
    uint32_t ProbeLimit() const noexcept { return 6 * uint32_t(std::bit_width(fSlotMask)) + 8; }

    struct Slot {
        uint32_t fEntry; ///< kNone for a free slot
        /// The low half of the key's code (std::hash, or keyed once fKeyedIndex); its low bits
        /// are the home slot.
        uint32_t fTag;
    };

    JsonMemberTableBase() noexcept = default;
    JsonMemberTableBase(const JsonMemberTableBase&) = delete;
    JsonMemberTableBase& operator=(const JsonMemberTableBase&) = delete;
    ~JsonMemberTableBase() = default;

    /// The entry holding `key`, or kNone. A large table also sets `code` to the key's std::hash
    /// code (`OrderHash`) unless its index is keyed, `keyed` to its keyed hash when it is, and
    /// `slot` to the slot holding the entry or, when absent, the free slot an insert would take:
    /// kNone when taking one would break the rules of an index on codes.
    template <class OrderHash, class KeyEqual>
    uint32_t Locate(std::string_view key, size_t& code, uint64_t& keyed,
                    uint32_t& slot) const noexcept {
        if (!fBuckets) {
            for (uint32_t i = 0; i < fSize; ++i)
                if (KeyEqual{}(fEntries[i].Key(), key)) return i;
            return kNone;
        }
        const Slot* slots = Slots();
        if (!fKeyedIndex) {
            code = OrderHash{}(key);
            const auto tag = uint32_t(code);
            const size_t* codes = Codes();
            uint32_t i = tag & fSlotMask;
            const uint32_t limit = ProbeLimit();
            for (uint32_t probe = 0; probe <= limit; ++probe, i = (i + 1) & fSlotMask) {
                const Slot s = slots[i];
                if (s.fEntry == kNone) {
                    slot = i;
                    return kNone;
                }
                if (s.fTag == tag && codes[s.fEntry] == code) {
                    // Codes are unique here: this member has the key or nobody has.
                    if (KeyEqual{}(fEntries[s.fEntry].Key(), key)) {
                        slot = i;
                        return s.fEntry;
                    }
                    break;
                }
            }
            slot = kNone;
            return kNone;
        }
        keyed = JsonKeyedHash::Hash(key);
        const auto tag = uint32_t(keyed);
        for (uint32_t i = tag & fSlotMask;; i = (i + 1) & fSlotMask) {
            const Slot s = slots[i];
            if (s.fEntry == kNone || (s.fTag == tag && KeyEqual{}(fEntries[s.fEntry].Key(), key))) {
                slot = i;
                return s.fEntry;
            }
        }
    }

    /// Adds a member for an absent key with std::hash-style `code`; `keyed` and `slot` as
    /// Locate left them (`slot` kNone when it found no slot to use). Throws std::bad_alloc (or
    /// std::length_error past 2^29 members) leaving the table as it was.
    Member* Insert(std::string_view key, size_t code, uint64_t keyed, uint32_t slot,
                   unsigned long sequence, JsonValue* value, const JsonMemberTableHooks& hooks);
    /// Removes entry `index` (found at `slot`); returns its value.
    JsonValue* Remove(uint32_t index, uint32_t slot, const JsonMemberTableHooks& hooks) noexcept;
    /// Makes this table without a block a copy of `other`, values included or all null; throws
    /// std::bad_alloc leaving it as it was.
    void CopyFrom(const JsonMemberTableBase& other, const JsonMemberTableHooks& hooks,
                  bool values);
    /// Lays a table without a block out for `count` members and `keyBytes` of keys.
    void PrepareBlock(size_t count, size_t keyBytes, const JsonMemberTableHooks& hooks);
    /// Frees the blocks; keeps the bucket count and the rehash policy's state.
    void Release(const JsonMemberTableHooks& hooks) noexcept;
    /// Takes over `other`'s members, bucket count and policy state; `other` becomes new.
    void TakeFrom(JsonMemberTableBase& other) noexcept;
    void SwapWith(JsonMemberTableBase& other) noexcept;

    Member* Entry(uint32_t index) const noexcept { return fEntries + index; }
    bool HasIndex() const noexcept { return fBuckets != nullptr; }

private:
    struct Layout;

    uint32_t First() const noexcept { return fBuckets ? fHead : fSize ? 0 : kNone; }
    uint32_t SmallEnd() const noexcept { return fBuckets ? 0 : fSize; }
    // A large block holds: entries, std::hash codes, previous links, index slots, keys.
    size_t* Codes() const noexcept { return reinterpret_cast<size_t*>(fEntries + fCapacity); }
    uint32_t* Previous() const noexcept { return reinterpret_cast<uint32_t*>(Codes() + fCapacity); }
    Slot* Slots() const noexcept { return reinterpret_cast<Slot*>(Previous() + fCapacity); }
    char* Keys() const noexcept;
    Layout CurrentLayout() const noexcept;

    static void PutSlot(Slot* slots, uint32_t mask, uint32_t tag, uint32_t entry) noexcept;
    /// Puts `entry` with `code` into an index on codes; false when that would break its rules
    /// (the slot is then left free).
    bool PutCodeSlot(uint32_t entry, size_t code) noexcept;
    /// Rebuilds the index of a large table under the keyed hash.
    void KeyIndex() noexcept;
    /// Writes `key` at `at` for `member` (its fKey and fKeyLength); returns the bytes used.
    static size_t WriteKey(char* at, std::string_view key, Member& member) noexcept;
    /// Copies the members, in order, into `entries` laid out as `to` and makes that the block
    /// (the caller frees the old one and sets fBuckets). With `buckets`, also records each
    /// bucket's first member there.
    void MoveInto(const Layout& to, Member* entries, uint32_t* buckets,
                  const JsonMemberTableHooks& hooks) noexcept;
    void Rehash(uint32_t* buckets, size_t bucketCount, const JsonMemberTableHooks& hooks) noexcept;
    void Link(uint32_t index, size_t code) noexcept;
    void Unlink(uint32_t index) noexcept;
    void EraseSlot(uint32_t slot) noexcept;
    void Shrink(const JsonMemberTableHooks& hooks) noexcept;

    Member* fEntries = nullptr;   ///< the block: members, then (large) codes, links, index; keys
    uint32_t* fBuckets = nullptr; ///< large only: each bucket's first member, or kNone
    size_t fKeyUsed = 0; ///< key bytes written, erased members' included
    size_t fKeyLive = 0; ///< key bytes of the members
    size_t fKeyCapacity = 0;
    uint32_t fSize = 0;           ///< live members
    uint32_t fUsed = 0;           ///< entries used; in a large table, erased ones too
    uint32_t fCapacity = 0;
    uint32_t fSlotMask = 0;  ///< large only: index slots - 1
    uint32_t fHead = kNone;  ///< large only: the first member in order
    // The map's bucket count and its rehash policy's state (whose load factor is always 1).
    // At most 2^29 members keep both within 32 bits.
    uint32_t fBucketCount = 1; ///< as a default-constructed map: the single bucket
    uint32_t fNextResize = 0;
    bool fKeyedIndex = false; ///< large only: the index is on keyed hashes, not on codes
};

/// A member table whose order follows `OrderHash` (production: std::hash, see JsonMemberTable)
/// and whose key comparisons and blocks come from `KeyEqual` and `Memory`.
template <class OrderHash, class KeyEqual = std::equal_to<std::string_view>,
          class Memory = JsonMemberMemory>
class JsonBasicMemberTable : public JsonMemberTableBase {
public:
    JsonBasicMemberTable() noexcept = default;
    /// Copies the members, keys, order and bucket count (not the values: the owner deep-copies
    /// them afterwards). Throws std::bad_alloc.
    JsonBasicMemberTable(const JsonBasicMemberTable& other) : JsonMemberTableBase() {
        CopyFrom(other, sHooks, true);
    }
    /// Leaves `other` as a new table (bucket count 1).
    JsonBasicMemberTable(JsonBasicMemberTable&& other) noexcept : JsonMemberTableBase() {
        TakeFrom(other);
    }
    /// On a new or cleared table: copies `other`'s members, keys, order and bucket count, with
    /// every value null. Throws std::bad_alloc, leaving this table as it was.
    void CopyKeysOf(const JsonBasicMemberTable& other) { CopyFrom(other, sHooks, false); }
    /// Strong guarantee: on std::bad_alloc this table is unchanged.
    JsonBasicMemberTable& operator=(const JsonBasicMemberTable& other) {
        if (this != &other) {
            JsonBasicMemberTable copy(other);
            SwapWith(copy);
        }
        return *this;
    }
    JsonBasicMemberTable& operator=(JsonBasicMemberTable&& other) noexcept {
        if (this != &other) {
            Release(sHooks);
            TakeFrom(other);
        }
        return *this;
    }
    ~JsonBasicMemberTable() { Release(sHooks); }

    void Swap(JsonBasicMemberTable& other) noexcept { SwapWith(other); }
    friend void swap(JsonBasicMemberTable& a, JsonBasicMemberTable& b) noexcept { a.SwapWith(b); }

    /// The member with `key`, or null.
    Member* Find(std::string_view key) noexcept {
        size_t code;
        uint64_t keyed;
        uint32_t slot;
        uint32_t index = Locate<OrderHash, KeyEqual>(key, code, keyed, slot);
        return index == kNone ? nullptr : Entry(index);
    }
    const Member* Find(std::string_view key) const noexcept {
        return const_cast<JsonBasicMemberTable*>(this)->Find(key);
    }

    /// Adds (key, sequence, value) unless `key` is present; returns the member with `key` and
    /// whether it was added (an existing member is left alone). The key bytes are copied.
    /// Throws std::bad_alloc (or std::length_error past 2^29 members), leaving the table as
    /// it was.
    std::pair<Member*, bool> TryEmplace(std::string_view key, unsigned long sequence,
                                        JsonValue* value) {
        const bool large = HasIndex();
        size_t code = 0;
        uint64_t keyed = 0;
        uint32_t slot = kNone;
        uint32_t index = Locate<OrderHash, KeyEqual>(key, code, keyed, slot);
        if (index != kNone) return {Entry(index), false};
        if (!large || KeyedIndex()) code = OrderHash{}(key);
        return {Insert(key, code, keyed, slot, sequence, value, sHooks), true};
    }

    /// Removes the member with `key` and hands back its value (the caller releases it);
    /// `found` tells whether there was one (null is returned when not).
    JsonValue* Erase(std::string_view key, bool& found) noexcept {
        size_t code;
        uint64_t keyed;
        uint32_t slot = kNone;
        uint32_t index = Locate<OrderHash, KeyEqual>(key, code, keyed, slot);
        found = index != kNone;
        return found ? Remove(index, slot, sHooks) : nullptr;
    }

    /// Removes every member and frees the blocks; keeps the bucket count, as
    /// unordered_map::clear does.
    void Clear() noexcept { Release(sHooks); }

    /// On an empty table: makes room for `count` members whose keys take `keyBytes` bytes, so
    /// that inserting them moves nothing. The order and the bucket count stay exactly those of
    /// the same inserts without it (only the map's own reserve would change them). Throws
    /// std::bad_alloc, leaving the table as it was; does nothing on a table holding a block.
    void Prepare(size_t count, size_t keyBytes) { PrepareBlock(count, keyBytes, sHooks); }

private:
    static size_t OrderHashOf(std::string_view key) noexcept { return OrderHash{}(key); }
    static constexpr JsonMemberTableHooks sHooks{&OrderHashOf, &Memory::Allocate, &Memory::Free};
};

/// The production table: ordered as std::unordered_map<std::string, ...> with std::hash
/// (std::hash<std::string_view> hashes the same bytes to the same value).
using JsonMemberTable = JsonBasicMemberTable<std::hash<std::string_view>>;
