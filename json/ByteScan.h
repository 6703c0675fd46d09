// Scans over runs of ordinary bytes, 16 at a time where SSE2 is available (every x86-64) and
// 8 at a time elsewhere. Used by the UTF-8 check and the string readers; results never depend
// on the block size, only the speed does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ByteScan {

/// The index of the first byte at or after `pos` that is 0x80 or above (or `size`).
inline size_t SkipAscii(const unsigned char* bytes, size_t pos, size_t size) {
#if defined(__SSE2__)
    while (pos + 16 <= size) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + pos));
        const int mask = _mm_movemask_epi8(block);
        if (mask) return pos + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
        pos += 16;
    }
#endif
    while (pos + 8 <= size) {
        uint64_t block;
        std::memcpy(&block, bytes + pos, 8);
        if (block & 0x8080808080808080ULL) break;
        pos += 8;
    }
    while (pos < size && bytes[pos] < 0x80) ++pos;
    return pos;
}

/// The index of the first byte at or after `pos` that is neither a blank nor a tab (or `size`):
/// where a run of indentation ends.
inline size_t SkipBlanks(const unsigned char* bytes, size_t pos, size_t size) {
#if defined(__SSE2__)
    const __m128i blank = _mm_set1_epi8(' ');
    const __m128i tab = _mm_set1_epi8('\t');
    while (pos + 16 <= size) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + pos));
        const __m128i spaces = _mm_or_si128(_mm_cmpeq_epi8(block, blank), _mm_cmpeq_epi8(block, tab));
        const auto others = static_cast<unsigned>(_mm_movemask_epi8(spaces)) ^ 0xFFFFu;
        if (others) return pos + static_cast<size_t>(__builtin_ctz(others));
        pos += 16;
    }
#endif
    while (pos < size && (bytes[pos] == ' ' || bytes[pos] == '\t')) ++pos;
    return pos;
}

/// The index of the first quote mark, backslash or byte below 0x20 at or after `pos` (or
/// `size`): where a string's plain run ends.
inline size_t FindStringStop(const unsigned char* bytes, size_t pos, size_t size) {
#if defined(__SSE2__)
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i control = _mm_set1_epi8(0x1F);
    while (pos + 16 <= size) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + pos));
        const __m128i stops = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(block, quote), _mm_cmpeq_epi8(block, backslash)),
            _mm_cmpeq_epi8(_mm_max_epu8(block, control), control)); // byte <= 0x1F
        const int mask = _mm_movemask_epi8(stops);
        if (mask) return pos + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
        pos += 16;
    }
#endif
    while (pos < size) {
        const unsigned char c = bytes[pos];
        if (c == '"' || c == '\\' || c < 0x20) break;
        ++pos;
    }
    return pos;
}

} // namespace ByteScan
