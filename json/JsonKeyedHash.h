// JsonKeyedHash: SipHash of a byte string under a secret drawn at random once per process.
// Hash indexes use it where the keys come from outside: without the secret, nobody can pick
// keys that land on one slot, so lookups stay constant time whatever the input.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace JsonKeyedHash {

inline uint64_t RotateLeft(uint64_t x, int bits) noexcept {
    return (x << bits) | (x >> (64 - bits));
}

inline void SipRound(uint64_t& v0, uint64_t& v1, uint64_t& v2, uint64_t& v3) noexcept {
    v0 += v1;
    v1 = RotateLeft(v1, 13);
    v1 ^= v0;
    v0 = RotateLeft(v0, 32);
    v2 += v3;
    v3 = RotateLeft(v3, 16);
    v3 ^= v2;
    v0 += v3;
    v3 = RotateLeft(v3, 21);
    v3 ^= v0;
    v2 += v1;
    v1 = RotateLeft(v1, 17);
    v1 ^= v2;
    v2 = RotateLeft(v2, 32);
}

/// SipHash-c-d of `size` bytes at `data` under the 128-bit key (k0, k1), reading the message
/// little-endian as the reference does. Never throws.
template <int kCompression, int kFinal>
uint64_t SipHash(const void* data, size_t size, uint64_t k0, uint64_t k1) noexcept {
    uint64_t v0 = 0x736f6d6570736575ULL ^ k0;
    uint64_t v1 = 0x646f72616e646f6dULL ^ k1;
    uint64_t v2 = 0x6c7967656e657261ULL ^ k0;
    uint64_t v3 = 0x7465646279746573ULL ^ k1;
    const auto* p = static_cast<const unsigned char*>(data);
    const unsigned char* end = p + (size & ~size_t(7));
    for (; p != end; p += 8) {
        uint64_t m;
        std::memcpy(&m, p, 8);
        if constexpr (std::endian::native == std::endian::big) m = __builtin_bswap64(m);
        v3 ^= m;
        for (int i = 0; i < kCompression; ++i)
            SipRound(v0, v1, v2, v3);
        v0 ^= m;
    }
    uint64_t last = uint64_t(size) << 56;
    switch (size & 7) {
    case 7:
        last |= uint64_t(p[6]) << 48;
        [[fallthrough]];
    case 6:
        last |= uint64_t(p[5]) << 40;
        [[fallthrough]];
    case 5:
        last |= uint64_t(p[4]) << 32;
        [[fallthrough]];
    case 4:
        last |= uint64_t(p[3]) << 24;
        [[fallthrough]];
    case 3:
        last |= uint64_t(p[2]) << 16;
        [[fallthrough]];
    case 2:
        last |= uint64_t(p[1]) << 8;
        [[fallthrough]];
    case 1:
        last |= uint64_t(p[0]);
        break;
    default:
        break;
    }
    v3 ^= last;
    for (int i = 0; i < kCompression; ++i)
        SipRound(v0, v1, v2, v3);
    v0 ^= last;
    v2 ^= 0xff;
    for (int i = 0; i < kFinal; ++i)
        SipRound(v0, v1, v2, v3);
    return v0 ^ v1 ^ v2 ^ v3;
}

struct Secret {
    uint64_t fK0;
    uint64_t fK1;
};

/// A fresh 128-bit secret from std::random_device (or, without one, from the clock and the
/// stack's address). Never throws.
Secret DrawSecret() noexcept;

/// The process's secret: drawn once, thread-safely, on first use (even from another file's
/// static initialiser).
inline const Secret& TheSecret() noexcept {
    static const Secret secret = DrawSecret();
    return secret;
}

/// SipHash-1-3 of `key` under the process's secret: equal bytes give equal values in every
/// thread for the life of the process. Never throws.
inline uint64_t Hash(std::string_view key) noexcept {
    const Secret& secret = TheSecret();
    return SipHash<1, 3>(key.data(), key.size(), secret.fK0, secret.fK1);
}

} // namespace JsonKeyedHash
