// Scalar nodes: construction, the lazy real conversion and their compact text.
#include "json/JsonScalar.h"

#include "json/text/TextWriter.h"

#include <charconv>
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

JsonReal::JsonReal(const JsonReal& other)
    : JsonValue(eJsonReal), fValue(other.fValue.load(std::memory_order_relaxed)),
      fDigitCount(other.fDigitCount) {
    // A copy of a real that was never converted keeps the text and converts it itself later.
    if (other.HasPendingText()) {
        fPendingText = other.fPendingText;
        fPending.store(true, std::memory_order_relaxed);
    } else {
        fValue.store(other.Get(), std::memory_order_relaxed);
    }
}

double JsonReal::Get() const noexcept {
    if (fPending.load(std::memory_order_acquire)) {
        // Concurrent first readers may both convert; they store the same value, and the text
        // itself is never changed, so no reader sees a half-made state.
        const double value = StrToDouble(fPendingText);
        fValue.store(value, std::memory_order_relaxed);
        fPending.store(false, std::memory_order_release);
        return value;
    }
    return fValue.load(std::memory_order_relaxed);
}

double JsonReal::StrToDouble(const std::string& text) noexcept {
    // Fast path: a complete number whose result is a normal double is exactly what std::stod
    // gives (both round correctly). Everything else takes the reference route below.
    double fast = 0.0;
    const char* first = text.data();
    const char* last = first + text.size();
    auto [end, ec] = std::from_chars(first, last, fast);
    if (ec == std::errc() && end == last && std::isnormal(fast)) return fast;

    try {
        return std::stod(text);
    } catch (const std::invalid_argument&) {
        return 0.0;
    } catch (const std::out_of_range&) {
        // Retried in extended precision: beyond the double range (either sign) the result is
        // +infinity, deliberately; an underflow rounds to the denormal or zero.
        try {
            const long double extended = std::stold(text);
            if (extended > static_cast<long double>(sMax) || extended < static_cast<long double>(sLowest))
                return sInfinity;
            return static_cast<double>(extended);
        } catch (...) {
            return sInfinity;
        }
    } catch (...) {
        return 0.0;
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
