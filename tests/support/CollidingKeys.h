// Keys that all share one std::hash<std::string> value, for flooding tests and benchmarks.
//
// libstdc++ hashes a string with std::_Hash_bytes (MurmurHash64A-style, seed 0xc70f6907). For a
// 16-byte key the state is: s0 = seed ^ (16 * m); s1 = (s0 ^ Mix(b1)) * m; s2 = (s1 ^ Mix(b2)) * m,
// then a fixed finish, where Mix(b) = ShiftMix(b * m) * m. Every step can be undone, so for any
// first block b1 the second block that brings s2 to a chosen target can be solved for. Keys are
// kept to printable ASCII without '"' or '\\' so that they can go into JSON text as they are.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace json_test {

namespace colliding_keys {

constexpr uint64_t kMul = 0xc6a4a7935bd1e995ULL;
constexpr uint64_t kSeed = 0xc70f6907ULL;
constexpr size_t kLength = 16;

constexpr uint64_t Inverse(uint64_t odd) {
    uint64_t x = odd; // right in the low 3 bits; each Newton step doubles that
    for (int i = 0; i < 5; ++i)
        x *= 2 - odd * x;
    return x;
}
constexpr uint64_t kMulInverse = Inverse(kMul);
static_assert(kMul * kMulInverse == 1);

/// x ^ (x >> 47) is its own inverse: the top 47 bits pass through unchanged.
constexpr uint64_t ShiftMix(uint64_t x) {
    return x ^ (x >> 47);
}

constexpr uint64_t kOnes = 0x0101010101010101ULL;
constexpr uint64_t kHighs = 0x8080808080808080ULL;

/// The high bit of each byte of `x` below `n` (n <= 128) is set in the result (a byte above a
/// matching one may be flagged too, but never when none matches): word-at-a-time, no branches.
constexpr uint64_t BytesBelow(uint64_t x, uint64_t n) {
    return (x - kOnes * n) & ~x & kHighs;
}
constexpr uint64_t BytesAbove(uint64_t x, uint64_t n) {
    return ((x + kOnes * (127 - n)) | x) & kHighs;
}
constexpr uint64_t BytesEqual(uint64_t x, uint64_t c) {
    return BytesBelow(x ^ (kOnes * c), 1);
}

/// All eight bytes printable ASCII, none of them '"' or '\\'.
constexpr bool Usable(uint64_t block) {
    return (BytesBelow(block, 0x20) | BytesAbove(block, 0x7e) | BytesEqual(block, '"') |
            BytesEqual(block, '\\')) == 0;
}
static_assert(Usable(0x2121212121212121ULL) && !Usable(0x2121212121212221ULL) &&
              !Usable(0x7f21212121212121ULL) && !Usable(0x211f212121212121ULL) &&
              !Usable(0x2121215c21212121ULL) && Usable(0x7e7e7e7e7e7e7e20ULL));

inline void Append(std::string& key, uint64_t block) {
    for (int i = 0; i < 8; ++i, block >>= 8)
        key += static_cast<char>(block & 0xff);
}

struct Alphabet {
    unsigned char fChars[95] = {};
    size_t fSize = 0;
    constexpr Alphabet() {
        for (int c = 0x20; c <= 0x7e; ++c)
            if (c != '"' && c != '\\') fChars[fSize++] = static_cast<unsigned char>(c);
    }
};
constexpr Alphabet kAlphabet;

} // namespace colliding_keys

/// `count` distinct 16-byte printable keys with one std::hash<std::string> value, on a 64-bit
/// little-endian libstdc++. The same `seed` gives the same keys everywhere (only mt19937_64's
/// raw output is used).
inline std::vector<std::string> MakeCollidingKeys(size_t count, uint64_t seed) {
    using namespace colliding_keys;
    static_assert(sizeof(size_t) == 8, "the solved state is 64 bits wide");
    std::mt19937_64 random(seed);
    const uint64_t target = random();
    // The state after the last block must be `target`, which fixes that block's mix.
    const uint64_t wantedMix = target * kMulInverse;
    const uint64_t start = kSeed ^ (kLength * kMul);
    // First blocks are taken in turn, like an odometer over the alphabet from a random start:
    // each is new, and about one in 3,000 has a printable solution.
    size_t digits[8] = {};
    for (uint64_t bits = random(), i = 1; i < 8; ++i)
        digits[i] = (bits >> (8 * i) & 0xff) % kAlphabet.fSize;
    std::vector<std::string> keys;
    keys.reserve(count);
    while (keys.size() < count) {
        uint64_t high = 0;
        for (size_t i = 1; i < 8; ++i)
            high |= uint64_t(kAlphabet.fChars[digits[i]]) << (8 * i);
        for (size_t d = 0; d < kAlphabet.fSize && keys.size() < count; ++d) {
            const uint64_t first = high | kAlphabet.fChars[d];
            const uint64_t afterFirst = (start ^ (ShiftMix(first * kMul) * kMul)) * kMul;
            const uint64_t second = ShiftMix((wantedMix ^ afterFirst) * kMulInverse) * kMulInverse;
            if (!Usable(second)) continue;
            std::string key;
            Append(key, first);
            Append(key, second);
            keys.push_back(std::move(key));
        }
        for (size_t i = 1; i < 8 && ++digits[i] == kAlphabet.fSize; ++i)
            digits[i] = 0;
    }
    return keys;
}

} // namespace json_test
