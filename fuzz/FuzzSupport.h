// Helpers shared by the fuzz targets: the property check that aborts with a message (libFuzzer
// then keeps the input as a crash), the check that a read holds no more memory than promised
// (so that an amplification is a finding, not only a crash), a byte reader over the input, and
// the facts about a value tree that decide which round-trip properties apply to it.
//
// The facts name the places where the engine deliberately does not round-trip; a target skips
// only the property a fact breaks, never the whole input.
#pragma once

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/MemoryBounds.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace FuzzSupport {

/// Reports a broken property and aborts.
[[noreturn]] inline void Fail(const char* file, int line, const char* what) {
    std::fprintf(stderr, "%s:%d: property does not hold: %s\n", file, line, what);
    std::fflush(stderr);
    std::abort();
}

#define FUZZ_CHECK(condition) \
    ((condition) ? static_cast<void>(0) : ::FuzzSupport::Fail(__FILE__, __LINE__, #condition))

/// Runs `read` (which reads an untrusted input of n bytes) and checks that the heap held at its
/// peak, the result included, stays within the promised MemoryBounds for such an input.
template <class Read> auto HeldWithin(size_t perByte, size_t n, Read&& read) {
    const size_t before = AllocationProbe::LiveBytes();
    AllocationProbe::ResetPeak();
    auto result = read();
    FUZZ_CHECK(AllocationProbe::PeakBytes() - before <= MemoryBounds::Limit(perByte, n));
    return result;
}

/// Consumes the fuzz input from the front; reads past the end give zeros and empty texts.
class InputReader {
public:
    InputReader(const uint8_t* data, size_t size) : fData(data), fSize(size) {}

    bool Empty() const { return fPos >= fSize; }
    size_t Remaining() const { return fPos < fSize ? fSize - fPos : 0; }

    uint8_t Byte() { return fPos < fSize ? fData[fPos++] : 0; }
    bool Bool() { return (Byte() & 1) != 0; }
    /// A value in [0, bound) (0 for bound 0).
    unsigned Below(unsigned bound) { return bound ? Byte() % bound : 0; }
    uint64_t Bits64() {
        uint64_t value = 0;
        for (int i = 0; i < 8; ++i) value = (value << 8) | Byte();
        return value;
    }
    double RawDouble() {
        const uint64_t bits = Bits64();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    /// A piece of the input: a length byte, then that many bytes (fewer at the end).
    std::string Piece() {
        const size_t want = Byte();
        const size_t take = want < Remaining() ? want : Remaining();
        std::string piece(reinterpret_cast<const char*>(fData + fPos), take);
        fPos += take;
        return piece;
    }
    /// Everything not read yet.
    std::string Rest() {
        std::string rest(reinterpret_cast<const char*>(fData + fPos), Remaining());
        fPos = fSize;
        return rest;
    }

private:
    const uint8_t* fData;
    size_t fSize;
    size_t fPos = 0;
};

/// What a tree holds that one of the round trips deliberately does not keep.
struct TreeFacts {
    size_t fNodes = 0;
    bool fNaN = false;              ///< NaN is unequal to itself
    bool fNonFinite = false;        ///< the writer prints nan, inf, -inf: no JSON
    bool fLeadingZeroInteger = false; ///< an integer printed with one digit too many ("09...")
    bool fRealPrintsAsInteger = false; ///< a real made from a double, whole, printed without ".0"
    bool fRealPrintsRounded = false; ///< a real made from a double that prints to another value
    bool fFractionWithoutText = false; ///< a real below 1 in magnitude that holds no text
    bool fNonUTF8Key = false;       ///< MessagePack reading drops such members
    bool fNonUTF8String = false;
};

/// The nesting depth of a tree (a scalar is 0 deep).
inline size_t Depth(const JsonValue& root) {
    size_t deepest = 0;
    std::vector<std::pair<const JsonValue*, size_t>> pending{{&root, 0}};
    while (!pending.empty()) {
        const auto [node, depth] = pending.back();
        pending.pop_back();
        if (!node) continue;
        if (depth > deepest) deepest = depth;
        if (node->GetType() == JsonValue::eJsonObject) {
            for (const JsonObject::Member& member : static_cast<const JsonObject&>(*node).Members())
                pending.emplace_back(member.fValue, depth + 1);
        } else if (node->GetType() == JsonValue::eJsonArray) {
            for (const JsonValue* element : static_cast<const JsonArray&>(*node).Elements())
                pending.emplace_back(element, depth + 1);
        } else if (node->GetType() == JsonValue::eJsonCompiledObject) {
            for (const JsonValue* slot : static_cast<const JsonCompiledObject&>(*node).Slots())
                pending.emplace_back(slot, depth + 1);
        }
    }
    return deepest;
}

/// Pretty text indents every line by its depth, so a document d levels deep prints about d^2
/// indentation units whatever its size: deeper trees skip the pretty properties, which would
/// only measure that (and trip the fuzzer's allocation limit).
constexpr size_t kPrettyDepth = 1024;

/// The exact decimal digit count of a magnitude.
inline int ExactDigits(unsigned long long magnitude) {
    int digits = 1;
    while (magnitude >= 10) magnitude /= 10, ++digits;
    return digits;
}

/// The digit count the writer uses: exact below 10^14, else taken from the rounded double.
inline int WriterDigits(unsigned long long magnitude) {
    if (magnitude < 100000000000000ULL) return ExactDigits(magnitude);
    return static_cast<int>(std::log10(static_cast<double>(magnitude))) + 1;
}

/// A real's value without converting a pending text (inspecting must not change how it prints).
inline double PeekReal(const JsonReal& real) {
    return real.HasPendingText() ? JsonReal::StrToDouble(std::string(real.PendingText())) : real.Get();
}

/// Walks the whole tree without recursion and without writing to it.
inline TreeFacts Inspect(const JsonValue& root) {
    TreeFacts facts;
    std::vector<const JsonValue*> pending{&root};
    while (!pending.empty()) {
        const JsonValue* node = pending.back();
        pending.pop_back();
        if (!node) continue;
        ++facts.fNodes;
        switch (node->GetType()) {
        case JsonValue::eJsonString:
            if (!JsonValue::IsUTF8(static_cast<const JsonString&>(*node).Get()))
                facts.fNonUTF8String = true;
            break;
        case JsonValue::eJsonInteger: {
            const auto& integer = static_cast<const JsonInteger&>(*node);
            const unsigned long long bits = integer.Bits();
            const bool negative = !integer.IsUnsigned() && static_cast<long long>(bits) < 0;
            const unsigned long long magnitude = negative ? 0 - bits : bits;
            if (magnitude && WriterDigits(magnitude) != ExactDigits(magnitude))
                facts.fLeadingZeroInteger = true;
            break;
        }
        case JsonValue::eJsonReal: {
            const auto& real = static_cast<const JsonReal&>(*node);
            const double value = PeekReal(real);
            if (std::isnan(value)) facts.fNaN = true;
            if (!std::isfinite(value)) facts.fNonFinite = true;
            // A real from a double (no text, no digit count) prints in fixed notation and gets
            // ".0" only within the signed 64-bit range: 1e19 prints as an integer.
            // Read back, such a real is converted at once, and its leading 0 counts as one of
            // the digits it prints with: each write and read adds a digit until the double's
            // expansion ends (0.1000000000000000000 -> 0.10000000000000000555 -> ...5551).
            if (!real.HasPendingText() && value != 0 && std::fabs(value) < 1)
                facts.fFractionWithoutText = true;
            if (!real.HasPendingText() && real.GetDigitCount() == 0 && std::isfinite(value)) {
                if (value == std::trunc(value) && std::fabs(value) >= 9223372036854775808.0)
                    facts.fRealPrintsAsInteger = true;
                // Its fixed text is written into 255 bytes; a longer one (below about 1e-233)
                // falls back to std::to_string, which keeps six decimals: 1e-300 prints 0.0.
                char fixed[255];
                if (std::to_chars(fixed, fixed + sizeof fixed, value, std::chars_format::fixed).ec !=
                        std::errc() &&
                    std::strtod(std::to_string(value).c_str(), nullptr) != value)
                    facts.fRealPrintsRounded = true;
            }
            break;
        }
        case JsonValue::eJsonObject:
            for (const JsonObject::Member& member : static_cast<const JsonObject&>(*node).Members()) {
                if (!JsonValue::IsUTF8(member.Key())) facts.fNonUTF8Key = true;
                pending.push_back(member.fValue);
            }
            break;
        case JsonValue::eJsonArray:
            for (const JsonValue* element : static_cast<const JsonArray&>(*node).Elements())
                pending.push_back(element);
            break;
        case JsonValue::eJsonCompiledObject:
            for (const JsonValue* slot : static_cast<const JsonCompiledObject&>(*node).Slots())
                pending.push_back(slot);
            break;
        default:
            break;
        }
    }
    return facts;
}

/// A read either produces a value and completes without a message, or produces nothing and
/// leaves one.
inline void CheckReadOutcome(bool produced, const ParserContext& ctx) {
    FUZZ_CHECK(ctx.fComplete == produced);
    FUZZ_CHECK(ctx.fError.empty() == produced);
}

/// The compact text of a tree.
inline std::string Compact(const JsonValue& value) {
    std::string text;
    value.AppendToString(text);
    return text;
}

} // namespace FuzzSupport
