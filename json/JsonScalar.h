// The six scalar node classes: string, integer, real, true, false, null.
//
// Deliberate behaviours kept here:
// - JsonInteger holds 0..sMaxInt64 signed whatever constructor made it; the bool of the
//   unsigned constructor is ignored.
// - JsonReal keeps the text of a parsed number and converts it on first use; once converted it
//   prints by its digit count instead of verbatim.
#pragma once

#include "json/JsonValue.h"

#include <climits>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

/// A string. Its text lives in the node when short (up to 23 bytes) and in one block of the
/// node pool otherwise, always followed by a zero byte; texts of any length fit.
class JsonString final : public JsonValue {
public:
    /// Stores `text`. Unless *trusted is true the text is checked for UTF-8; invalid text is
    /// stored as the empty string and *ok (when given) set to false, else *ok is set to true.
    /// Throws std::bad_alloc when a long text cannot be stored.
    JsonString(const std::string& text, bool* trusted, bool* ok)
        : JsonString(std::string_view(text), trusted, ok) {}
    JsonString(std::string&& text, bool* trusted, bool* ok)
        : JsonString(std::string_view(text), trusted, ok) {}
    JsonString(std::string_view text, bool* trusted, bool* ok);
    JsonString(const char* text, bool* trusted, bool* ok)
        : JsonString(std::string_view(text), trusted, ok) {}
    JsonString() noexcept : JsonValue(eJsonString) { fInline[0] = '\0'; }
    JsonString(const JsonString&) = delete;
    ~JsonString() override;

    /// The text (valid while the node lives); a zero byte follows it.
    std::string_view Get() const noexcept { return {Text(), fLength}; }
    /// A new node with the same text (count 1). Throws std::bad_alloc.
    JsonString* Clone() const;

    void AppendToString(std::string& out) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;

private:
    static constexpr size_t kInlineText = 24; // with the terminating zero

    const char* Text() const noexcept { return fLength < kInlineText ? fInline : fHeap; }

    size_t fLength = 0;
    union {
        char fInline[kInlineText];
        char* fHeap;
    };
};
static_assert(sizeof(JsonString) <= 48, "a string stays within one 48-byte pool block");

class JsonInteger final : public JsonValue {
public:
    static constexpr long long sMinInt64 = LLONG_MIN;
    static constexpr long long sMaxInt64 = LLONG_MAX;
    static constexpr unsigned long long sMaxUInt64 = ULLONG_MAX;
    static constexpr unsigned long long sMaxUInt64Div10 = ULLONG_MAX / 10;

    explicit JsonInteger(long long v) noexcept
        : JsonValue(eJsonInteger), fBits(static_cast<unsigned long long>(v)), fUnsigned(false) {}
    /// Unsigned exactly when v > sMaxInt64. The bool is accepted and deliberately ignored.
    JsonInteger(unsigned long long v, bool) noexcept
        : JsonValue(eJsonInteger), fBits(v), fUnsigned(v > static_cast<unsigned long long>(sMaxInt64)) {}

    /// The signed value; 0 for an unsigned integer.
    void Get(long long& out) const noexcept {
        out = fUnsigned ? 0 : static_cast<long long>(fBits);
    }
    /// The unsigned value; a negative signed integer reads as 0.
    void Get(unsigned long long& out) const noexcept {
        out = (fUnsigned || static_cast<long long>(fBits) > 0) ? fBits : 0;
    }
    bool IsUnsigned() const noexcept { return fUnsigned; }
    /// The raw 64 bits, signed or unsigned as IsUnsigned() says.
    unsigned long long Bits() const noexcept { return fBits; }

    void AppendToString(std::string& out) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;

private:
    unsigned long long fBits;
    bool fUnsigned;
};

/// A real number. A parsed real may hold its source text ("pending text") and convert it on
/// first use. The conversion is safe for concurrent readers: the text is kept until the node
/// dies and an atomic flag publishes the converted value; observably the text is "emptied".
/// Texts of any length are kept whole: the length is a size_t, as everywhere in the engine.
class JsonReal final : public JsonValue {
public:
    static constexpr double sMax = std::numeric_limits<double>::max();
    static constexpr double sLowest = std::numeric_limits<double>::lowest();
    static constexpr double sInfinity = std::numeric_limits<double>::infinity();

    explicit JsonReal(double v) noexcept : JsonValue(eJsonReal), fValue(v) { fShort[0] = 0; }
    /// A parsed real converted at once, remembering how many significant digits it had.
    JsonReal(double v, uint32_t digitCount) noexcept : JsonValue(eJsonReal), fValue(v) {
        SetDigitCount(digitCount);
    }
    /// A parsed real whose conversion is deferred to its first use. Throws std::bad_alloc
    /// when a long text cannot be stored.
    JsonReal(std::string_view pendingText, uint32_t digitCount);
    JsonReal(const JsonReal& other);
    ~JsonReal() override;

    /// The value; a pending text is converted (and counts as emptied) first. Never allocates.
    double Get() const noexcept {
        if (fPending.load(std::memory_order_acquire)) return ConvertPending();
        return fValue.load(std::memory_order_relaxed);
    }
    void Get(double& out) const noexcept { out = Get(); }
    bool HasPendingText() const noexcept { return fPending.load(std::memory_order_acquire); }
    /// The text as read; meaningful only while HasPendingText().
    std::string_view PendingText() const noexcept {
        if (fForm != kLongForm) return {reinterpret_cast<const char*>(fShort + 1), fForm};
        const LongForm form = Long();
        return {form.fText, form.fLength};
    }
    uint32_t GetDigitCount() const noexcept {
        return fForm != kLongForm ? fShort[0] : Long().fDigitCount;
    }

    /// std::stod semantics; invalid text gives 0.0; out of range retries in long double and
    /// gives +infinity beyond the double range. Deliberately, negative overflow and extended
    /// underflow also give +infinity. Never throws and never allocates.
    static double StrToDouble(const std::string& text) noexcept;
    /// The same for `length` bytes at `text`, which the byte at text[length] must end as a
    /// number (a zero byte, or any byte that cannot continue a number such as a JSON
    /// separator): the slow path reads the text in place, as std::stod reads a C string.
    static double StrToDouble(const char* text, size_t length) noexcept;

    void AppendToString(std::string& out) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;

private:
    // A real takes one 48-byte block. After the value and the two bytes below, 22 bytes are
    // left: the short form keeps the digit count in the first and up to 21 bytes of text in
    // the rest (every number of a typical document: coordinates carry 17 to 19 characters).
    // Anything else, the long form, keeps the digit count, the address of a pool block with
    // the text and a terminating zero byte (null when there is no text), and the length.
    static constexpr size_t kShortText = 21;
    static constexpr uint8_t kLongForm = 0xFF;
    struct LongForm {
        uint32_t fDigitCount;
        char* fText;
        size_t fLength;
    };
    // Where the long form's fields sit in fShort: at offsets 28, 32 and 40 of the node.
    static constexpr size_t kLongCount = 2, kLongText = 6, kLongLength = 14;

    LongForm Long() const noexcept {
        LongForm form;
        std::memcpy(&form.fDigitCount, fShort + kLongCount, sizeof form.fDigitCount);
        std::memcpy(&form.fText, fShort + kLongText, sizeof form.fText);
        std::memcpy(&form.fLength, fShort + kLongLength, sizeof form.fLength);
        return form;
    }
    void SetLong(const LongForm& form) noexcept;
    void SetDigitCount(uint32_t digitCount) noexcept;
    void SetText(std::string_view text, uint32_t digitCount);
    double ConvertPending() const noexcept;

    mutable std::atomic<double> fValue;
    mutable std::atomic<bool> fPending{false};
    uint8_t fForm = 0; ///< the short text's length, or kLongForm
    unsigned char fShort[1 + kShortText]; ///< see above; only what the form uses is set
};
static_assert(sizeof(JsonReal) == 48, "a real takes one 48-byte pool block");

class JsonTrue final : public JsonValue {
public:
    JsonTrue() noexcept : JsonValue(eJsonTrue) {}
    void AppendToString(std::string& out) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;
};

class JsonFalse final : public JsonValue {
public:
    JsonFalse() noexcept : JsonValue(eJsonFalse) {}
    void AppendToString(std::string& out) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;
};

class JsonNull final : public JsonValue {
public:
    JsonNull() noexcept : JsonValue(eJsonNull) {}
    void AppendToString(std::string& out) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;
};
