// JsonMemberTable: the blocks' layout and growth, the map's order rules (insert at the front of
// the bucket's run or of the whole list, rehash by re-inserting in list order, erase by
// unlinking), the index and its move to the keyed hash, removal with compaction, and copies.
#include "json/JsonMemberTable.h"

#include "json/JsonMemory.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>
#include <unordered_map>

void* JsonMemberMemory::Allocate(size_t size) {
    return JsonMemory::Allocate(size);
}

void JsonMemberMemory::Free(void* block, size_t size) noexcept {
    JsonMemory::Free(block, size);
}

namespace {

// Capacity stays at most twice this, and the index at twice that, within 32 bits.
constexpr uint32_t kMaxSize = uint32_t(1) << 29;
constexpr uint32_t kMinLarge = 16;
// The pool hands out multiples of this; the rounding goes to the keys.
constexpr size_t kGranule = 16;

} // namespace

static_assert(sizeof(JsonMemberTableBase::Member) == 32);
static_assert(sizeof(JsonMemberTable) == 72, "a member of every JsonObject");

struct JsonMemberTableBase::Layout {
    uint32_t fCapacity;
    uint32_t fSlots; ///< 0 for a small table
    size_t fKeyCapacity;

    size_t KeysOffset() const noexcept {
        size_t offset = size_t(fCapacity) * sizeof(Member);
        if (fSlots)
            offset += size_t(fCapacity) * (sizeof(size_t) + sizeof(uint32_t)) +
                      size_t(fSlots) * sizeof(Slot);
        return offset;
    }
    size_t Bytes() const noexcept { return KeysOffset() + fKeyCapacity; }

    /// Room for `keyBytes` of keys or more: the block's rounding is given to the keys.
    static Layout For(uint32_t capacity, uint32_t slots, size_t keyBytes) noexcept {
        Layout layout{capacity, slots, 0};
        size_t bytes = (layout.KeysOffset() + keyBytes + kGranule - 1) & ~(kGranule - 1);
        layout.fKeyCapacity = bytes - layout.KeysOffset();
        return layout;
    }
};

size_t JsonMemberTableBase::WriteKey(char* at, std::string_view key, Member& member) noexcept {
    size_t used = 0;
    if (key.size() >= kLongKey) {
        const uint64_t length = key.size();
        std::memcpy(at, &length, sizeof length);
        used = sizeof length;
        member.fKeyLength = kLongKey;
    } else {
        member.fKeyLength = uint32_t(key.size());
    }
    member.fKey = at + used;
    if (!key.empty()) std::memcpy(at + used, key.data(), key.size());
    return used + key.size();
}

char* JsonMemberTableBase::Keys() const noexcept {
    return reinterpret_cast<char*>(fEntries) + CurrentLayout().KeysOffset();
}

JsonMemberTableBase::Layout JsonMemberTableBase::CurrentLayout() const noexcept {
    return {fCapacity, fBuckets ? fSlotMask + 1 : 0, fKeyCapacity};
}

void JsonMemberTableBase::PutSlot(Slot* slots, uint32_t mask, uint32_t tag,
                                  uint32_t entry) noexcept {
    uint32_t i = tag & mask;
    while (slots[i].fEntry != kNone)
        i = (i + 1) & mask;
    slots[i] = {entry, tag};
}

bool JsonMemberTableBase::PutCodeSlot(uint32_t entry, size_t code) noexcept {
    Slot* slots = Slots();
    const size_t* codes = Codes();
    const auto tag = uint32_t(code);
    uint32_t i = tag & fSlotMask;
    const uint32_t limit = ProbeLimit();
    for (uint32_t probe = 0; probe <= limit; ++probe, i = (i + 1) & fSlotMask) {
        const Slot s = slots[i];
        if (s.fEntry == kNone) {
            slots[i] = {entry, tag};
            return true;
        }
        // A member with the same code has the same home, so the walk passes it.
        if (s.fTag == tag && codes[s.fEntry] == code) return false;
    }
    return false;
}

void JsonMemberTableBase::KeyIndex() noexcept {
    fKeyedIndex = true;
    Slot* slots = Slots();
    std::fill_n(slots, fSlotMask + 1, Slot{kNone, 0});
    for (uint32_t entry = fHead; entry != kNone; entry = fEntries[entry].fLink)
        PutSlot(slots, fSlotMask, uint32_t(JsonKeyedHash::Hash(fEntries[entry].Key())), entry);
}

namespace {

struct RehashAnswer {
    bool fRehash;
    size_t fBucketCount;
    uint32_t fNextResize;
};

// The policy's verdict on inserting one node into a map of `size` nodes in `bucketCount`
// buckets whose policy state is `nextResize`; the verdict depends on nothing else.
RehashAnswer AskPolicy(size_t bucketCount, size_t size, uint32_t nextResize) {
    std::__detail::_Prime_rehash_policy policy;
    policy._M_reset(nextResize);
    const std::pair<bool, size_t> need = policy._M_need_rehash(bucketCount, size, 1);
    return {need.first, need.second, uint32_t(policy._M_state())};
}

// Every new object asks the same question on its first insert (most objects are small, and
// this was a good part of building them), so the answer is asked once and kept.
const RehashAnswer& FirstInsertAnswer() {
    static const RehashAnswer answer = AskPolicy(1, 0, 0);
    return answer;
}

// The index has at least twice as many slots as there are entries, so it is at most half full.
uint32_t SlotsFor(uint32_t capacity) noexcept {
    return std::bit_ceil(2 * capacity);
}

} // namespace

void JsonMemberTableBase::Link(uint32_t index, size_t code) noexcept {
    uint32_t* previous = Previous();
    uint32_t& first = fBuckets[code % fBucketCount];
    if (first == kNone) {
        // An empty bucket: the member goes to the front of the whole list.
        fEntries[index].fLink = fHead;
        previous[index] = kNone;
        if (fHead != kNone) previous[fHead] = index;
        fHead = index;
    } else {
        // Otherwise to the front of its bucket's run.
        uint32_t before = previous[first];
        fEntries[index].fLink = first;
        previous[index] = before;
        previous[first] = index;
        if (before == kNone)
            fHead = index;
        else
            fEntries[before].fLink = index;
    }
    first = index;
}

void JsonMemberTableBase::Rehash(uint32_t* buckets, size_t bucketCount,
                                 const JsonMemberTableHooks& hooks) noexcept {
    // As the map does: walk the old list, putting each member at the front of its new bucket's
    // run, or of the list when the bucket is still empty.
    std::fill_n(buckets, bucketCount, kNone);
    if (fBuckets) hooks.fFree(fBuckets, fBucketCount * sizeof(uint32_t));
    fBuckets = buckets;
    fBucketCount = bucketCount;
    const size_t* codes = Codes();
    uint32_t node = fHead;
    fHead = kNone;
    while (node != kNone) {
        uint32_t next = fEntries[node].fLink;
        Link(node, codes[node]);
        node = next;
    }
}

void JsonMemberTableBase::MoveInto(const Layout& to, Member* entries, uint32_t* buckets,
                                   const JsonMemberTableHooks& hooks) noexcept {
    const bool wasLarge = fBuckets != nullptr;
    const bool large = to.fSlots != 0;
    const size_t* oldCodes = wasLarge ? Codes() : nullptr;
    // The old previous links are not needed any more: they map old entries to new ones.
    uint32_t* renumber = wasLarge ? Previous() : nullptr;

    auto* codes = reinterpret_cast<size_t*>(entries + to.fCapacity);
    auto* previous = reinterpret_cast<uint32_t*>(codes + to.fCapacity);
    auto* slots = reinterpret_cast<Slot*>(previous + to.fCapacity);
    char* keys = reinterpret_cast<char*>(entries) + to.KeysOffset();
    const uint32_t mask = large ? to.fSlots - 1 : 0;
    if (large) std::fill_n(slots, to.fSlots, Slot{kNone, 0});
    // Kept bucket heads are renumbered afterwards, unless erasures left far more buckets than
    // entries: then each member's bucket is worked out instead.
    const bool renumberBuckets =
        buckets && buckets == fBuckets && fBucketCount <= 4 * size_t(fUsed);

    uint32_t count = 0;
    size_t keyUsed = 0;
    size_t lastCode = 0;
    size_t lastBucket = SIZE_MAX;
    for (const_iterator it = begin(); it != end(); ++it) {
        const uint32_t from = uint32_t(&*it - fEntries);
        const Member& source = *it;
        Member& target = entries[count];
        target = source;
        keyUsed += WriteKey(keys + keyUsed, source.Key(), target);
        if (!large) {
            if (wasLarge) target.fLink = uint32_t(oldCodes[from] % fBucketCount);
            ++count;
            continue;
        }
        const size_t code = wasLarge ? oldCodes[from] : hooks.fOrderHash(source.Key());
        codes[count] = code;
        previous[count] = count ? count - 1 : kNone;
        target.fLink = count + 1;
        if (wasLarge) renumber[from] = count;
        if (buckets && !renumberBuckets) {
            // Runs are contiguous, so a bucket's first member is the first one met.
            size_t bucket = !wasLarge                   ? source.fLink
                            : count && code == lastCode ? lastBucket
                                                        : code % fBucketCount;
            if (bucket != lastBucket) buckets[bucket] = count;
            lastBucket = bucket;
            lastCode = code;
        }
        ++count;
    }
    if (large && count) entries[count - 1].fLink = kNone;
    if (renumberBuckets) {
        for (size_t b = 0; b < fBucketCount; ++b)
            if (buckets[b] != kNone) buckets[b] = renumber[buckets[b]];
    }
    if (large && fKeyedIndex) {
        // (A keyed table is large: its tags stay; an index on codes is rebuilt below.)
        const Slot* oldSlots = Slots();
        for (uint32_t i = 0; i <= fSlotMask; ++i)
            if (oldSlots[i].fEntry != kNone)
                PutSlot(slots, mask, oldSlots[i].fTag, renumber[oldSlots[i].fEntry]);
    }

    fEntries = entries;
    fCapacity = to.fCapacity;
    fKeyCapacity = to.fKeyCapacity;
    fKeyUsed = keyUsed;
    fUsed = count;
    fSlotMask = mask;
    fHead = large && count ? 0 : kNone;
    if (!large) {
        fKeyedIndex = false;
    } else if (!fKeyedIndex) {
        for (uint32_t i = 0; i < count; ++i) {
            if (!PutCodeSlot(i, codes[i])) {
                KeyIndex();
                break;
            }
        }
    }
}

JsonMemberTableBase::Member* JsonMemberTableBase::Insert(std::string_view key, size_t code,
                                                         uint64_t keyed, uint32_t slot,
                                                         unsigned long sequence, JsonValue* value,
                                                         const JsonMemberTableHooks& hooks) {
    if (fSize >= kMaxSize) throw std::length_error("JSON object: too many members");
    const size_t keyBytes = StoredBytes(key.size());

    // The map asks its policy before linking the new node; the policy cannot say yes, nor
    // change its state, until the size passes the threshold it recorded.
    const uint32_t savedResize = fNextResize;
    size_t bucketCount = fBucketCount;
    bool rehash = false;
    if (fSize + size_t(1) > fNextResize) {
        const RehashAnswer answer = fSize == 0 && fBucketCount == 1 && fNextResize == 0
                                        ? FirstInsertAnswer()
                                        : AskPolicy(fBucketCount, fSize, fNextResize);
        fNextResize = answer.fNextResize;
        rehash = answer.fRehash;
        if (rehash) bucketCount = answer.fBucketCount;
    }

    const bool wasLarge = fBuckets != nullptr;
    const bool locatedKeyed = wasLarge && fKeyedIndex; // Locate left `keyed` and `slot`
    // A small table that needs a rehash while it holds members is rebuilt large (in practice
    // only an empty one rehashes: the first rehash leaves 13 buckets).
    const bool large = wasLarge || fSize >= kSmall || (rehash && fSize > 0);
    const bool relayout =
        fUsed == fCapacity || fKeyCapacity - fKeyUsed < keyBytes || large != wasLarge;
    const bool newBuckets = large && (rehash || !wasLarge);

    Layout to{};
    Member* entries = nullptr;
    uint32_t* buckets = nullptr;
    try {
        if (relayout) {
            const size_t liveKeyBytes = fKeyLive + keyBytes;
            uint32_t capacity = fCapacity; // when only the keys are full
            if (!large)
                capacity = fCapacity == 0       ? 2
                           : fUsed == fCapacity ? std::min(kSmall, 2 * fCapacity)
                                                : fCapacity;
            else if (!wasLarge)
                capacity = kMinLarge;
            else if (fUsed == fCapacity && fSize >= fCapacity / 2)
                capacity = std::bit_ceil(fCapacity + 1);
            // (else the holes are squeezed out at the same capacity)
            to = Layout::For(capacity, large ? SlotsFor(capacity) : 0,
                             std::max<size_t>(2 * liveKeyBytes, 16));
            entries = static_cast<Member*>(hooks.fAllocate(to.Bytes()));
        }
        if (newBuckets)
            buckets = static_cast<uint32_t*>(hooks.fAllocate(bucketCount * sizeof(uint32_t)));
    } catch (...) {
        if (entries) hooks.fFree(entries, to.Bytes());
        fNextResize = savedResize;
        throw;
    }

    // Nothing below fails. The old block stays until the key is copied: it may lie in it.
    Member* oldEntries = fEntries;
    const Layout from = CurrentLayout();
    if (relayout) {
        if (buckets && !rehash) std::fill_n(buckets, bucketCount, kNone);
        MoveInto(to, entries, rehash ? nullptr : wasLarge ? fBuckets : buckets, hooks);
        if (buckets && !rehash) fBuckets = buckets;
    }
    if (rehash && large)
        Rehash(buckets, bucketCount, hooks);
    else
        fBucketCount = bucketCount;

    Member written{};
    WriteKey(Keys() + fKeyUsed, key, written);
    fKeyUsed += keyBytes;
    fKeyLive += keyBytes;
    if (relayout && oldEntries) hooks.fFree(oldEntries, from.Bytes());

    Member* member;
    const uint32_t index = fUsed;
    if (!fBuckets) {
        // Small tables are kept in order: the front of the bucket's run, else of the table.
        const auto bucket = uint32_t(code % fBucketCount);
        uint32_t at = 0;
        for (uint32_t i = 0; i < fSize; ++i) {
            if (fEntries[i].fLink == bucket) {
                at = i;
                break;
            }
        }
        std::memmove(fEntries + at + 1, fEntries + at, (fSize - at) * sizeof(Member));
        member = fEntries + at;
        member->fLink = bucket;
    } else {
        member = fEntries + index;
        Codes()[index] = code;
        Link(index, code);
    }
    member->fKey = written.fKey;
    member->fKeyLength = written.fKeyLength;
    member->fSequence = sequence;
    member->fValue = value;
    if (fBuckets) {
        // The index: the free slot Locate left when it is still good, else a probe of its own.
        if (!fKeyedIndex && !relayout && slot != kNone) {
            Slots()[slot] = {index, uint32_t(code)};
        } else if (!fKeyedIndex) {
            if (!PutCodeSlot(index, code)) KeyIndex(); // places this member too
        } else if (locatedKeyed && !relayout) {
            Slots()[slot] = {index, uint32_t(keyed)};
        } else {
            if (!locatedKeyed) keyed = JsonKeyedHash::Hash(member->Key());
            PutSlot(Slots(), fSlotMask, uint32_t(keyed), index);
        }
    }
    ++fSize;
    ++fUsed;
    return member;
}

void JsonMemberTableBase::Unlink(uint32_t index) noexcept {
    const size_t* codes = Codes();
    uint32_t* previous = Previous();
    const uint32_t next = fEntries[index].fLink;
    const uint32_t before = previous[index];
    const size_t code = codes[index];
    uint32_t& first = fBuckets[code % fBucketCount];
    if (first == index) {
        bool sameBucket = next != kNone && (codes[next] == code ||
                                            codes[next] % fBucketCount == code % fBucketCount);
        first = sameBucket ? next : kNone;
    }
    if (before == kNone)
        fHead = next;
    else
        fEntries[before].fLink = next;
    if (next != kNone) previous[next] = before;
}

void JsonMemberTableBase::EraseSlot(uint32_t slot) noexcept {
    // Backward-shift deletion: later members of the probe run move up unless that would put
    // them before their home slot.
    Slot* slots = Slots();
    uint32_t hole = slot;
    for (uint32_t i = (hole + 1) & fSlotMask; slots[i].fEntry != kNone; i = (i + 1) & fSlotMask) {
        uint32_t home = slots[i].fTag & fSlotMask;
        if (((i - home) & fSlotMask) >= ((i - hole) & fSlotMask)) {
            slots[hole] = slots[i];
            hole = i;
        }
    }
    slots[hole].fEntry = kNone;
}

JsonValue* JsonMemberTableBase::Remove(uint32_t index, uint32_t slot,
                                       const JsonMemberTableHooks& hooks) noexcept {
    Member* member = fEntries + index;
    JsonValue* value = member->fValue;
    fKeyLive -= StoredBytes(member->Key().size());
    if (!fBuckets) {
        std::memmove(member, member + 1, (fSize - index - 1) * sizeof(Member));
        --fSize;
        --fUsed;
        return value;
    }
    EraseSlot(slot);
    Unlink(index);
    --fSize;
    // The entry stays as a hole; once holes outnumber members they are squeezed out.
    if (fUsed - fSize > fSize) Shrink(hooks);
    return value;
}

void JsonMemberTableBase::Shrink(const JsonMemberTableHooks& hooks) noexcept {
    if (fSize == 0) {
        Release(hooks);
        return;
    }
    const bool large = fSize > kSmall;
    const uint32_t capacity = large ? std::max(kMinLarge, std::bit_ceil(fSize)) : fSize;
    const Layout to = Layout::For(capacity, large ? SlotsFor(capacity) : 0, fKeyLive);
    Member* entries;
    try {
        entries = static_cast<Member*>(hooks.fAllocate(to.Bytes()));
    } catch (...) {
        return; // the holes stay until the next growth drops them
    }
    Member* oldEntries = fEntries;
    const Layout from = CurrentLayout();
    MoveInto(to, entries, large ? fBuckets : nullptr, hooks);
    hooks.fFree(oldEntries, from.Bytes());
    if (!large) {
        hooks.fFree(fBuckets, fBucketCount * sizeof(uint32_t));
        fBuckets = nullptr;
    }
}

void JsonMemberTableBase::CopyFrom(const JsonMemberTableBase& other,
                                   const JsonMemberTableHooks& hooks, bool values) {
    if (other.fSize == 0) {
        fBucketCount = other.fBucketCount;
        fNextResize = other.fNextResize;
        return;
    }
    // The arrays as they are (a large table's holes included, at most as many as members), the
    // keys as one run of bytes (erased ones included: fewer than the live ones plus a growth's
    // worth), the index unchanged; then the key pointers are moved to the new block.
    const bool large = other.fBuckets != nullptr;
    const Layout from = other.CurrentLayout();
    const Layout to = Layout::For(other.fUsed, from.fSlots, other.fKeyUsed);
    auto* entries = static_cast<Member*>(hooks.fAllocate(to.Bytes()));
    uint32_t* buckets = nullptr;
    if (large) {
        try {
            buckets =
                static_cast<uint32_t*>(hooks.fAllocate(other.fBucketCount * sizeof(uint32_t)));
        } catch (...) {
            hooks.fFree(entries, to.Bytes());
            throw;
        }
    }
    const uint32_t used = other.fUsed;
    char* keys = reinterpret_cast<char*>(entries) + to.KeysOffset();
    const char* otherKeys = other.Keys();
    std::memcpy(entries, other.fEntries, used * sizeof(Member));
    std::memcpy(keys, otherKeys, other.fKeyUsed);
    for (uint32_t i = 0; i < used; ++i) {
        entries[i].fKey = keys + (other.fEntries[i].fKey - otherKeys);
        if (!values) entries[i].fValue = nullptr;
    }
    if (large) {
        auto* codes = reinterpret_cast<size_t*>(entries + to.fCapacity);
        auto* previous = reinterpret_cast<uint32_t*>(codes + to.fCapacity);
        auto* slots = reinterpret_cast<Slot*>(previous + to.fCapacity);
        std::memcpy(codes, other.Codes(), used * sizeof(size_t));
        std::memcpy(previous, other.Previous(), used * sizeof(uint32_t));
        std::memcpy(slots, other.Slots(), size_t(from.fSlots) * sizeof(Slot));
        std::memcpy(buckets, other.fBuckets, other.fBucketCount * sizeof(uint32_t));
    }
    fEntries = entries;
    fBuckets = buckets;
    fCapacity = to.fCapacity;
    fKeyCapacity = to.fKeyCapacity;
    fKeyUsed = other.fKeyUsed;
    fSlotMask = other.fSlotMask;
    fHead = other.fHead;
    fKeyedIndex = other.fKeyedIndex;
    fSize = other.fSize;
    fUsed = other.fUsed;
    fKeyLive = other.fKeyLive;
    fBucketCount = other.fBucketCount;
    fNextResize = other.fNextResize;
}

void JsonMemberTableBase::PrepareBlock(size_t count, size_t keyBytes,
                                       const JsonMemberTableHooks& hooks) {
    if (fEntries || count == 0) return;
    if (count > kMaxSize) throw std::length_error("JSON object: too many members");
    const bool large = count > kSmall;
    const auto capacity = large ? std::max(kMinLarge, uint32_t(count)) : uint32_t(count);
    const Layout to = Layout::For(capacity, large ? SlotsFor(capacity) : 0, keyBytes);
    auto* entries = static_cast<Member*>(hooks.fAllocate(to.Bytes()));
    uint32_t* buckets = nullptr;
    if (large) {
        try {
            buckets = static_cast<uint32_t*>(hooks.fAllocate(fBucketCount * sizeof(uint32_t)));
        } catch (...) {
            hooks.fFree(entries, to.Bytes());
            throw;
        }
        std::fill_n(buckets, fBucketCount, kNone);
    }
    fEntries = entries;
    fBuckets = buckets;
    fCapacity = to.fCapacity;
    fKeyCapacity = to.fKeyCapacity;
    fKeyUsed = 0;
    fUsed = 0;
    fHead = kNone;
    fSlotMask = large ? to.fSlots - 1 : 0;
    if (large) std::fill_n(Slots(), to.fSlots, Slot{kNone, 0});
}

void JsonMemberTableBase::Release(const JsonMemberTableHooks& hooks) noexcept {
    if (fEntries) hooks.fFree(fEntries, CurrentLayout().Bytes());
    if (fBuckets) hooks.fFree(fBuckets, fBucketCount * sizeof(uint32_t));
    fEntries = nullptr;
    fBuckets = nullptr;
    fKeyUsed = fKeyLive = fKeyCapacity = 0;
    fSize = fUsed = fCapacity = fSlotMask = 0;
    fHead = kNone;
    fKeyedIndex = false;
}

void JsonMemberTableBase::TakeFrom(JsonMemberTableBase& other) noexcept {
    fEntries = std::exchange(other.fEntries, nullptr);
    fBuckets = std::exchange(other.fBuckets, nullptr);
    fSize = std::exchange(other.fSize, 0);
    fUsed = std::exchange(other.fUsed, 0);
    fCapacity = std::exchange(other.fCapacity, 0);
    fKeyUsed = std::exchange(other.fKeyUsed, 0);
    fKeyLive = std::exchange(other.fKeyLive, 0);
    fKeyCapacity = std::exchange(other.fKeyCapacity, 0);
    fSlotMask = std::exchange(other.fSlotMask, 0);
    fHead = std::exchange(other.fHead, kNone);
    // A moved-from map is reset to a new one's single bucket and policy state.
    fBucketCount = std::exchange(other.fBucketCount, 1);
    fNextResize = std::exchange(other.fNextResize, 0);
    fKeyedIndex = std::exchange(other.fKeyedIndex, false);
}

void JsonMemberTableBase::SwapWith(JsonMemberTableBase& other) noexcept {
    // Three takes, so that the fields are listed once, in TakeFrom.
    JsonMemberTableBase held;
    held.TakeFrom(*this);
    TakeFrom(other);
    other.TakeFrom(held);
}
