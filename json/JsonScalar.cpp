// Scalar nodes: construction, the lazy real conversion and their compact text.
#include "json/JsonScalar.h"

#include "json/text/TextWriter.h"

#include <charconv>
#include <cstring>
#include <cmath>
#include <stdexcept>

JsonString::JsonString(const std::string& text, bool* trusted, bool* ok)
    : JsonValue(eJsonString), fText(text) {
    const bool valid = (trusted && *trusted) || IsUTF8(fText);
    if (!valid) fText.clear();
    if (ok) *ok = valid;
}

JsonString::JsonString(std::string&& text, bool* trusted, bool* ok)
    : JsonValue(eJsonString), fText(std::move(text)) {
    const bool valid = (trusted && *trusted) || IsUTF8(fText);
    if (!valid) fText.clear();
    if (ok) *ok = valid;
}

void JsonString::AppendToString(std::string& out) const {
    out += '"';
    AppendQuotedString(fText, out);
    out += '"';
}

void JsonInteger::AppendToString(std::string& out) const {
    if (fUnsigned) {
        TextWriter::AppendInteger(fBits, false, out);
    } else {
        const auto value = static_cast<long long>(fBits);
        // 0 minus the value as unsigned 64 bits: exact for the smallest value too.
        TextWriter::AppendInteger(value < 0 ? 0 - fBits : fBits, value < 0, out);
    }
}

JsonReal::JsonReal(std::string_view pendingText, uint32_t digitCount)
    : JsonValue(eJsonReal), fValue(0.0), fDigitCount(digitCount) {
    SetText(pendingText);
    fPending.store(!pendingText.empty(), std::memory_order_relaxed);
}

JsonReal::JsonReal(const JsonReal& other)
    : JsonValue(eJsonReal), fValue(other.fValue.load(std::memory_order_relaxed)),
      fDigitCount(other.fDigitCount) {
    // A copy of a real that was never converted keeps the text and converts it itself later.
    if (other.HasPendingText()) {
        SetText(other.PendingText());
        fPending.store(true, std::memory_order_relaxed);
    } else {
        fValue.store(other.Get(), std::memory_order_relaxed);
    }
}

JsonReal::~JsonReal() {
    if (fTextLength > kInlineText) delete[] fHeap;
}

void JsonReal::SetText(std::string_view text) {
    char* target = fInline;
    if (text.size() > kInlineText) target = fHeap = new char[text.size()];
    if (!text.empty()) std::memcpy(target, text.data(), text.size());
    fTextLength = static_cast<uint32_t>(text.size());
}

double JsonReal::ConvertPending() const noexcept {
    // Concurrent first readers may both convert; they store the same value, and the text
    // itself is never changed, so no reader sees a half-made state.
    const double value = StrToDouble(PendingText());
    fValue.store(value, std::memory_order_relaxed);
    fPending.store(false, std::memory_order_release);
    return value;
}

double JsonReal::StrToDouble(std::string_view text) noexcept {
    // Fast path: a complete number whose result is a normal double is exactly what std::stod
    // gives (both round correctly). Everything else takes the reference route below.
    double fast = 0.0;
    const char* first = text.data();
    const char* last = first + text.size();
    auto [end, ec] = std::from_chars(first, last, fast);
    if (ec == std::errc() && end == last && std::isnormal(fast)) return fast;

    try {
        const std::string copy(text);
        try {
            return std::stod(copy);
        } catch (const std::invalid_argument&) {
            return 0.0;
        } catch (const std::out_of_range&) {
            // Retried in extended precision: beyond the double range (either sign) the result
            // is +infinity, deliberately; an underflow rounds to the denormal or zero.
            try {
                const long double extended = std::stold(copy);
                if (extended > static_cast<long double>(sMax) ||
                    extended < static_cast<long double>(sLowest))
                    return sInfinity;
                return static_cast<double>(extended);
            } catch (...) {
                return sInfinity;
            }
        }
    } catch (...) {
        return 0.0; // no memory for the copy
    }
}

void JsonReal::AppendToString(std::string& out) const {
    TextWriter::AppendReal(*this, out);
}

void JsonTrue::AppendToString(std::string& out) const {
    out += "true";
}

void JsonFalse::AppendToString(std::string& out) const {
    out += "false";
}

void JsonNull::AppendToString(std::string& out) const {
    out += "null";
}
