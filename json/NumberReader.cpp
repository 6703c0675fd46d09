// The JSON number reader: JsonValue::ParseNumber. It lives with the value model because the
// value model's own conversions read strings by the same rule (GetAsInteger of "12abc" is 12),
// and the text parser reads every number with it.
//
// Deliberate behaviours kept here:
// - A negative magnitude of 2^63 or more, -9223372036854775808 included, is read as a real.
// - Reals keep their text (converted on first use) unless the exponent has more than one digit
//   or the fraction 18 or more digits.
#include "json/JsonScalar.h"
#include "json/ParseHelpers.h"
#include "json/ParseMessages.h"
#include "json/ParserContext.h"

#include <algorithm>
#include <cstring>

using namespace ParseMessages;

namespace {

// The end of the run of decimal digits starting at `pos`, eight bytes at a time.
size_t SkipDigits(const char* s, size_t pos, size_t size) {
    while (pos + 8 <= size) {
        uint64_t block;
        std::memcpy(&block, s + pos, 8);
        // A byte is a digit when its high nibble is 3 and adding 6 keeps it below 0x40.
        const uint64_t notDigit = ((block & 0xF0F0F0F0F0F0F0F0ULL) ^ 0x3030303030303030ULL) |
                                  (((block + 0x0606060606060606ULL) & 0xF0F0F0F0F0F0F0F0ULL) ^
                                   0x3030303030303030ULL);
        if (notDigit) return pos + static_cast<size_t>(__builtin_ctzll(notDigit) / 8);
        pos += 8;
    }
    while (pos < size && IsDecimalDigit(s[pos])) ++pos;
    return pos;
}

} // namespace

// number: [ "-" ] ( "0" / digit1-9 *DIGIT ) [ "." 1*DIGIT ] [ ( "e" / "E" ) [ "+" / "-" ] 1*DIGIT ]
JsonValue* JsonValue::ParseNumber(const std::string& text, ParserContext& ctx) {
    return ReadNumber(text.data(), text.size(), ctx);
}

JsonValue* ReadNumber(const char* s, size_t size, ParserContext& ctx) {
    const size_t start = ctx.fPos;
    size_t pos = start;
    if (pos >= size) {
        ctx.fError = kUnexpectedEnd;
        return nullptr;
    }
    bool negative = false;
    if (!IsDecimalDigit(s[pos])) {
        if (s[pos] != '-' || pos + 1 >= size || !IsDecimalDigit(s[pos + 1])) {
            ctx.fError = kNotANumber;
            return nullptr;
        }
        negative = true;
        ++pos;
    }

    unsigned long long magnitude = 0;
    uint32_t digitCount = 0;
    bool tooLarge = false;
    if (s[pos] == '0') {
        ++pos; // a leading 0 is the whole integer part; a following digit is left to the caller
        digitCount = 1;
    } else {
        // Up to 19 digits always fit in 64 bits; only longer numbers need the overflow test.
        const size_t fastEnd = std::min(size, pos + 19);
        for (; pos < fastEnd && IsDecimalDigit(s[pos]); ++pos) magnitude = magnitude * 10 + static_cast<unsigned>(s[pos] - '0');
        digitCount = static_cast<uint32_t>(pos - (negative ? start + 1 : start));
        for (; pos < size && IsDecimalDigit(s[pos]); ++pos) {
            const unsigned digit = static_cast<unsigned>(s[pos] - '0');
            if (magnitude < JsonInteger::sMaxUInt64Div10 ||
                (magnitude == JsonInteger::sMaxUInt64Div10 && digit <= 5)) {
                magnitude = magnitude * 10 + digit;
                ++digitCount;
            } else {
                tooLarge = true; // the rest is read but not accumulated
                // Above the bound no later digit can be accumulated either: skip in blocks.
                if (magnitude > JsonInteger::sMaxUInt64Div10) {
                    pos = SkipDigits(s, pos, size);
                    break;
                }
            }
        }
    }

    bool isReal = false;
    // Lengths are size_t: only the digit count stored in the real is 32 bits wide.
    size_t fractionDigits = 0;
    size_t exponentDigits = 0;
    if (pos < size && s[pos] == '.') {
        ++pos;
        if (pos >= size || !IsDecimalDigit(s[pos])) {
            ctx.fPos = pos;
            ctx.fError = kFractionDigit;
            return nullptr;
        }
        const size_t digits = SkipDigits(s, pos, size);
        fractionDigits = digits - pos;
        pos = digits;
        digitCount += static_cast<uint32_t>(fractionDigits);
        isReal = true;
    }
    if (pos < size && (s[pos] == 'e' || s[pos] == 'E')) {
        ++pos;
        if (pos < size && (s[pos] == '+' || s[pos] == '-')) ++pos;
        if (pos >= size || !IsDecimalDigit(s[pos])) {
            ctx.fPos = pos;
            ctx.fError = kExponentDigit;
            return nullptr;
        }
        const size_t digits = SkipDigits(s, pos, size);
        exponentDigits = digits - pos;
        pos = digits;
        isReal = true;
    }

    if (!isReal && !tooLarge) {
        if (!negative) {
            ctx.fPos = pos;
            return new JsonInteger(magnitude, true); // unsigned exactly above the signed range
        }
        if (magnitude <= static_cast<unsigned long long>(JsonInteger::sMaxInt64)) {
            ctx.fPos = pos;
            return new JsonInteger(-static_cast<long long>(magnitude));
        }
        // Deliberate: a negative magnitude of 2^63 or more is a real, -2^63 included.
    }

    const std::string_view number(s + start, pos - start);
    JsonValue* real;
    if ((exponentDigits > 1 || fractionDigits >= 18) && !ctx.fStandard) {
        // The byte after the number cannot continue it, so the text converts in place.
        const double value = JsonReal::StrToDouble(number.data(), number.size());
        if (value >= JsonReal::sInfinity) {
            ctx.fPos = pos;
            ctx.fError = kRealOutOfRange;
            return nullptr;
        }
        real = new JsonReal(value, digitCount);
    } else {
        real = new JsonReal(number, digitCount);
    }
    ctx.fPos = pos;
    return real;
}
