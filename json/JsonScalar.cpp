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
    : JsonValue(eJsonReal), fValue(0.0) {
    SetText(pendingText, digitCount);
    fPending.store(!pendingText.empty(), std::memory_order_relaxed);
}

JsonReal::JsonReal(const JsonReal& other)
    : JsonValue(eJsonReal), fValue(other.fValue.load(std::memory_order_relaxed)) {
    // A copy of a real that was never converted keeps the text and converts it itself later.
    if (other.HasPendingText()) {
        if (other.fForm != kLongForm) {
            // The text never changes once made, so the short form is copied as it stands.
            fForm = other.fForm;
            std::memcpy(fShort, other.fShort, sizeof fShort);
        } else {
            SetText(other.PendingText(), other.GetDigitCount());
        }
        fPending.store(true, std::memory_order_relaxed);
    } else {
        fValue.store(other.Get(), std::memory_order_relaxed);
        SetDigitCount(other.GetDigitCount());
    }
}

JsonReal::~JsonReal() {
    if (fForm != kLongForm) return;
    const LongForm form = Long();
    if (form.fText) JsonMemory::Free(form.fText, form.fLength + 1);
}

void JsonReal::SetLong(const LongForm& form) noexcept {
    fForm = kLongForm;
    std::memcpy(fShort + kLongCount, &form.fDigitCount, sizeof form.fDigitCount);
    std::memcpy(fShort + kLongText, &form.fText, sizeof form.fText);
    std::memcpy(fShort + kLongLength, &form.fLength, sizeof form.fLength);
}

void JsonReal::SetDigitCount(uint32_t digitCount) noexcept {
    if (digitCount <= UINT8_MAX) {
        fForm = 0;
        fShort[0] = static_cast<unsigned char>(digitCount);
    } else {
        SetLong({digitCount, nullptr, 0});
    }
}

void JsonReal::SetText(std::string_view text, uint32_t digitCount) {
    if (text.size() <= kShortText && digitCount <= UINT8_MAX) {
        fForm = static_cast<uint8_t>(text.size());
        fShort[0] = static_cast<unsigned char>(digitCount);
        if (!text.empty()) std::memcpy(fShort + 1, text.data(), text.size());
        return;
    }
    auto* copy = static_cast<char*>(JsonMemory::Allocate(text.size() + 1));
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    SetLong({digitCount, copy, text.size()});
}

double JsonReal::ConvertPending() const noexcept {
    // Concurrent first readers may both convert; they store the same value, and the text
    // itself is never changed, so no reader sees a half-made state. A short text has no zero
    // byte after it, so it is converted from a terminated copy.
    double value;
    if (fForm != kLongForm) {
        char text[kShortText + 1];
        std::memcpy(text, fShort + 1, fForm);
        text[fForm] = '\0';
        value = StrToDouble(text, fForm);
    } else {
        const LongForm form = Long();
        value = StrToDouble(form.fText, form.fLength);
    }
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
