// Scalar nodes: construction and the lazy conversion of a real's text.
#include "json/JsonScalar.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

JsonString::JsonString(std::string_view text, bool* trusted, bool* ok) : JsonValue(eJsonString) {
    const bool valid = (trusted && *trusted) || IsUTF8(text);
    if (ok) *ok = valid;
    if (!valid) text = std::string_view();
    char* target = fInline;
    if (text.size() >= kInlineText) target = fHeap = static_cast<char*>(JsonMemory::Allocate(text.size() + 1));
    if (!text.empty()) std::memcpy(target, text.data(), text.size());
    target[text.size()] = '\0';
    fLength = text.size();
}

JsonString* JsonString::Clone() const {
    // Deep copies make one of these per string: the text is known to be valid already, and a
    // short one moves as the whole fixed-size buffer.
    char* heap = nullptr;
    if (fLength >= kInlineText) {
        heap = static_cast<char*>(JsonMemory::Allocate(fLength + 1));
        std::memcpy(heap, fHeap, fLength + 1);
    }
    JsonString* copy;
    try {
        copy = new JsonString();
    } catch (...) {
        JsonMemory::Free(heap, fLength + 1);
        throw;
    }
    if (heap)
        copy->fHeap = heap;
    else
        std::memcpy(copy->fInline, fInline, kInlineText);
    copy->fLength = fLength;
    return copy;
}

JsonString::~JsonString() {
    if (fLength >= kInlineText) JsonMemory::Free(fHeap, fLength + 1);
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
    if (fTextLength >= kInlineText) delete[] fHeap;
}

void JsonReal::SetText(std::string_view text) {
    char* target = fInline;
    if (text.size() >= kInlineText) target = fHeap = new char[text.size() + 1];
    if (!text.empty()) std::memcpy(target, text.data(), text.size());
    target[text.size()] = '\0';
    fTextLength = text.size();
}

double JsonReal::ConvertPending() const noexcept {
    // Concurrent first readers may both convert; they store the same value, and the text
    // itself is never changed, so no reader sees a half-made state.
    const double value = StrToDouble(Text(), fTextLength);
    fValue.store(value, std::memory_order_relaxed);
    fPending.store(false, std::memory_order_release);
    return value;
}

double JsonReal::StrToDouble(const std::string& text) noexcept {
    return StrToDouble(text.c_str(), text.size());
}

double JsonReal::StrToDouble(const char* text, size_t length) noexcept {
    // Fast path: a complete number whose result is a normal double is exactly what std::stod
    // gives (both round correctly). Everything else takes the reference route below.
    double fast = 0.0;
    auto [end, ec] = std::from_chars(text, text + length, fast);
    if (ec == std::errc() && end == text + length && std::isnormal(fast)) return fast;

    // std::stod and std::stold without their exceptions: strtod reads the text in place (it
    // stops where the number stops), so no copy is made and nothing can fail for lack of
    // memory.
    const int savedErrno = errno;
    errno = 0;
    char* stop = nullptr;
    double result = std::strtod(text, &stop);
    if (stop == text) {
        result = 0.0; // no number at all
    } else if (errno == ERANGE) {
        // Retried in extended precision: beyond the double range (either sign) the result is
        // +infinity, deliberately; an underflow rounds to the denormal or zero.
        errno = 0;
        const long double extended = std::strtold(text, &stop);
        if (errno == ERANGE || extended > static_cast<long double>(sMax) ||
            extended < static_cast<long double>(sLowest)) {
            result = sInfinity;
        } else {
            result = static_cast<double>(extended);
        }
    }
    errno = savedErrno;
    return result;
}
