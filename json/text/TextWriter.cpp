// The JSON text writer. Output goes through a TextSink: a raw cursor into the caller's string,
// which is grown ahead by doubling and cut to the written length at the end, so that every
// small piece is a store, not a std::string append.
#include "json/text/TextWriter.h"

#include "json/ByteScan.h"
#include "json/JsonScalar.h"
#include "json/TreeWalk.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

class TextSink {
public:
    explicit TextSink(std::string& out) : fOut(out), fUsed(out.size()) {}
    TextSink(const TextSink&) = delete;
    TextSink& operator=(const TextSink&) = delete;
    ~TextSink() { fOut.resize(fUsed); }

    /// Room for `n` more bytes at the returned cursor; Commit says how many were written.
    char* Reserve(size_t n) {
        if (fOut.size() - fUsed < n) fOut.resize(std::max(fOut.size() * 2, fUsed + n + 256));
        return fOut.data() + fUsed;
    }
    void Commit(size_t n) { fUsed += n; }
    void Put(char c) {
        *Reserve(1) = c;
        ++fUsed;
    }
    void Put(const char* text, size_t n) {
        if (!n) return;
        std::memcpy(Reserve(n), text, n);
        fUsed += n;
    }
    void Put(std::string_view text) { Put(text.data(), text.size()); }

private:
    std::string& fOut;
    size_t fUsed;
};

// MARK: - Strings

constexpr char kHex[] = "0123456789ABCDEF";

// The letter after the backslash for the bytes that need one ('u' for \u00XX), else 0.
constexpr auto kEscapes = [] {
    struct Table {
        char fLetter[256] = {};
    } table;
    for (int c = 0; c < 0x20; ++c) table.fLetter[c] = 'u';
    table.fLetter[static_cast<unsigned char>('"')] = '"';
    table.fLetter[static_cast<unsigned char>('\\')] = '\\';
    table.fLetter[static_cast<unsigned char>('\b')] = 'b';
    table.fLetter[static_cast<unsigned char>('\t')] = 't';
    table.fLetter[static_cast<unsigned char>('\n')] = 'n';
    table.fLetter[static_cast<unsigned char>('\f')] = 'f';
    table.fLetter[static_cast<unsigned char>('\r')] = 'r';
    return table;
}();

// Clean runs (everything but the quote mark, the backslash and control bytes) are copied in
// one piece; the bytes between them are escaped.
void PutQuoted(TextSink& sink, std::string_view text) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const size_t n = text.size();
    for (size_t clean = 0;;) {
        const size_t stop = ByteScan::FindStringStop(bytes, clean, n);
        sink.Put(text.data() + clean, stop - clean);
        if (stop == n) return;
        const unsigned char c = bytes[stop];
        const char letter = kEscapes.fLetter[c];
        if (letter == 'u') {
            const char escape[6] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 0xF]};
            sink.Put(escape, 6);
        } else {
            const char escape[2] = {'\\', letter};
            sink.Put(escape, 2);
        }
        clean = stop + 1;
    }
}

void PutRepeated(TextSink& sink, const std::string& unit, int times) {
    if (unit.empty()) return;
    for (int i = 0; i < times; ++i) sink.Put(unit);
}

// MARK: - Numbers

constexpr unsigned long long kPowersOf10[20] = {1ULL,
                                                10ULL,
                                                100ULL,
                                                1000ULL,
                                                10000ULL,
                                                100000ULL,
                                                1000000ULL,
                                                10000000ULL,
                                                100000000ULL,
                                                1000000000ULL,
                                                10000000000ULL,
                                                100000000000ULL,
                                                1000000000000ULL,
                                                10000000000000ULL,
                                                100000000000000ULL,
                                                1000000000000000ULL,
                                                10000000000000000ULL,
                                                100000000000000000ULL,
                                                1000000000000000000ULL,
                                                10000000000000000000ULL};

// Deliberate: the digit count is floor(log10(double(magnitude))) + 1, taken from the rounded
// double. Close below a power of ten (from 10^15 - 2 up, where the double or its logarithm
// rounds up) that is one too many and the number gets a leading 0: 9999999999999999 prints as
// 09999999999999999. Below 10^14 no rounding can reach the next power, so the exact count is
// taken and the logarithm skipped.
int ExactDigitCount(unsigned long long magnitude) {
    int count = 1;
    while (count < 20 && magnitude >= kPowersOf10[count]) ++count;
    return count;
}

int DigitCount(unsigned long long magnitude) {
    if (magnitude < kPowersOf10[14]) {
        // The bit length gives the count or one more; one comparison settles it.
        const int estimate = ((64 - __builtin_clzll(magnitude | 1)) * 1233) >> 12;
        return estimate + (magnitude >= kPowersOf10[estimate] ? 1 : 0);
    }
    return static_cast<int>(std::log10(static_cast<double>(magnitude))) + 1;
}

// "00" "01" ... "99": two digits per division.
constexpr auto kDigitPairs = [] {
    struct Table {
        char fPairs[200] = {};
    } table;
    for (int i = 0; i < 100; ++i) {
        table.fPairs[2 * i] = static_cast<char>('0' + i / 10);
        table.fPairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return table;
}();

void PutInteger(TextSink& sink, unsigned long long magnitude, bool negative, bool standard) {
    if (magnitude == 0) {
        sink.Put('0');
        return;
    }
    // The standard profile writes exactly the digits the number has.
    const int count = standard ? ExactDigitCount(magnitude) : DigitCount(magnitude);
    char* at = sink.Reserve(static_cast<size_t>(count) + 1);
    size_t length = 0;
    if (negative) at[length++] = '-';
    // Exactly `count` digits, filled from the right; a count one too high leaves a leading 0.
    char* digit = at + length + count;
    for (int left = count; left > 0;) {
        if (left >= 2 && magnitude >= 10) {
            const unsigned pair = static_cast<unsigned>(magnitude % 100);
            magnitude /= 100;
            digit -= 2;
            std::memcpy(digit, kDigitPairs.fPairs + 2 * pair, 2);
            left -= 2;
        } else {
            *--digit = static_cast<char>('0' + magnitude % 10);
            magnitude /= 10;
            --left;
        }
    }
    sink.Commit(length + static_cast<size_t>(count));
}

bool HasAny(std::string_view text, const char* set) {
    return text.find_first_of(set) != std::string_view::npos;
}

// Printed like a standard stream's default float notation with precision `digits` (printf's
// "%.*g"; std::to_chars with the general format and a precision is specified to match it).
void PutWithDigitCount(TextSink& sink, double value, uint32_t digits) {
    char small[128];
    std::string large;
    std::string_view text;
    auto [end, ec] = std::to_chars(small, small + sizeof small, value, std::chars_format::general,
                                   static_cast<int>(digits));
    if (ec == std::errc()) {
        text = std::string_view(small, static_cast<size_t>(end - small));
    } else {
        const int length = std::snprintf(nullptr, 0, "%.*g", static_cast<int>(digits), value);
        if (length < 0) return;
        large.resize(static_cast<size_t>(length) + 1);
        std::snprintf(large.data(), large.size(), "%.*g", static_cast<int>(digits), value);
        large.resize(static_cast<size_t>(length));
        text = large;
    }
    sink.Put(text);
    if (!HasAny(text, ".eE")) sink.Put(".0", 2);
}

void PutShortestFixed(TextSink& sink, double value) {
    char buffer[255];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    std::string fallback;
    std::string_view text(buffer, static_cast<size_t>(end - buffer));
    if (ec != std::errc()) {
        fallback = std::to_string(value);
        text = fallback;
    }
    // Trailing zeros after the dot go, but one digit after it stays ("0.000000" -> "0.0").
    // Deliberately no ".0" is added to a text without a dot (1e19 prints as an integer).
    const size_t dot = text.find('.');
    if (dot != std::string_view::npos) {
        size_t last = text.find_last_not_of('0');
        if (last == dot) ++last;
        text = text.substr(0, last + 1);
    }
    sink.Put(text);
}

void PutReal(TextSink& sink, const JsonReal& real) {
    // A real still holding its text echoes it exactly as it was read (1.50 stays 1.50).
    if (real.HasPendingText()) {
        sink.Put(real.PendingText());
        return;
    }
    const double value = real.Get();
    if (real.GetDigitCount() >= 1) {
        PutWithDigitCount(sink, value, real.GetDigitCount());
        return;
    }
    if (std::isnan(value)) {
        sink.Put("nan", 3);
        return;
    }
    if (std::isinf(value)) {
        sink.Put(value > 0 ? std::string_view("inf") : std::string_view("-inf"));
        return;
    }
    // A whole number within the signed 64-bit range prints as that integer plus ".0".
    constexpr double kTwo63 = 9223372036854775808.0;
    if (value >= -kTwo63 && value < kTwo63 && value == std::trunc(value)) {
        char* at = sink.Reserve(24);
        const auto result = std::to_chars(at, at + 22, static_cast<long long>(value));
        sink.Commit(static_cast<size_t>(result.ptr - at));
        sink.Put(".0", 2);
        return;
    }
    PutShortestFixed(sink, value);
}

void PutScalar(TextSink& sink, const JsonValue& node, bool standard) {
    switch (node.GetType()) {
    case JsonValue::eJsonString:
        sink.Put('"');
        PutQuoted(sink, static_cast<const JsonString&>(node).Get());
        sink.Put('"');
        break;
    case JsonValue::eJsonInteger: {
        const auto& integer = static_cast<const JsonInteger&>(node);
        const unsigned long long bits = integer.Bits();
        // A negative magnitude is 0 minus the value as unsigned 64 bits: exact for the smallest.
        const bool negative = !integer.IsUnsigned() && static_cast<long long>(bits) < 0;
        PutInteger(sink, negative ? 0 - bits : bits, negative, standard);
        break;
    }
    case JsonValue::eJsonReal:
        PutReal(sink, static_cast<const JsonReal&>(node));
        break;
    case JsonValue::eJsonTrue:
        sink.Put("true", 4);
        break;
    case JsonValue::eJsonFalse:
        sink.Put("false", 5);
        break;
    default:
        sink.Put("null", 4);
        break;
    }
}

// MARK: - Layouts

void PutKey(TextSink& sink, std::string_view key) {
    sink.Put('"');
    PutQuoted(sink, key);
}

struct CompactVisitor {
    static constexpr bool kVisitMissing = false;
    TextSink& fSink;
    bool fStandard;

    void Scalar(const JsonValue& node) { PutScalar(fSink, node, fStandard); }
    void BeginObject(const JsonObject&) { fSink.Put('{'); }
    void EndObject(const JsonObject&, size_t) { fSink.Put('}'); }
    void BeginArray(const JsonArray&) { fSink.Put('['); }
    void EndArray(const JsonArray&, size_t) { fSink.Put(']'); }
    void BeginCompiled(const JsonCompiledObject&) { fSink.Put('{'); }
    void EndCompiled(const JsonCompiledObject&, size_t) { fSink.Put('}'); }
    void Key(const JsonValue&, std::string_view key, bool first) {
        if (!first) fSink.Put(',');
        PutKey(fSink, key);
        fSink.Put("\":", 2);
    }
    void Element(bool first) {
        if (!first) fSink.Put(',');
    }
    void Missing() {}
    size_t CompiledLimit(const JsonCompiledObject&) { return SIZE_MAX; }
};

// Children of a container at level L start on a new line indented L + 1 times; the closing
// bracket is indented L times. Negative levels indent nothing.
struct PrettyVisitor {
    static constexpr bool kVisitMissing = false;
    TextSink& fSink;
    const std::string& fIndent;
    const std::string& fNewLine;
    int fLevel; // level of the innermost open container, once one is open
    bool fStandard;
    // The line break followed by the indentation of the deepest level so far: a new line of
    // any level is one piece of it.
    std::string fLineStart = fNewLine;

    void Scalar(const JsonValue& node) { PutScalar(fSink, node, fStandard); }
    void NewLine(int level) {
        const size_t length = fNewLine.size() + fIndent.size() * static_cast<size_t>(std::max(level, 0));
        while (fLineStart.size() < length) fLineStart += fIndent;
        fSink.Put(fLineStart.data(), length);
    }
    void Open(char bracket) {
        fSink.Put(bracket);
        ++fLevel;
    }
    void Close(char bracket, size_t written) {
        --fLevel;
        if (written) NewLine(fLevel);
        fSink.Put(bracket);
    }
    void BeginObject(const JsonObject&) { Open('{'); }
    void EndObject(const JsonObject&, size_t written) { Close('}', written); }
    void BeginArray(const JsonArray&) { Open('['); }
    void EndArray(const JsonArray&, size_t written) { Close(']', written); }
    void BeginCompiled(const JsonCompiledObject&) { Open('{'); }
    void EndCompiled(const JsonCompiledObject&, size_t written) { Close('}', written); }
    void StartChild(bool first) {
        if (!first) fSink.Put(',');
        NewLine(fLevel); // fLevel is the container's level + 1 here
    }
    void Key(const JsonValue& container, std::string_view key, bool first) {
        StartChild(first);
        PutKey(fSink, key);
        // Deliberate: compiled objects write no blank after the colon, plain objects do; the
        // two print differently in pretty form.
        if (container.GetType() == JsonValue::eJsonCompiledObject) {
            fSink.Put("\":", 2);
        } else {
            fSink.Put("\": ", 3);
        }
    }
    void Element(bool first) { StartChild(first); }
    void Missing() {}
    size_t CompiledLimit(const JsonCompiledObject&) { return SIZE_MAX; }
};

} // namespace

void AppendQuotedString(const std::string& text, std::string& out) {
    TextSink sink(out);
    PutQuoted(sink, text);
}

void PrettyPrintStartNewLine(std::string& out, const std::string& indent, const std::string& newLine,
                             int level) {
    TextSink sink(out);
    sink.Put(newLine);
    PutRepeated(sink, indent, level);
}

namespace TextWriter {

void WriteCompact(const JsonValue& root, std::string& out, const TextWriterOptions& options) {
    TextSink sink(out);
    CompactVisitor visitor{sink, options.fStandard};
    WalkTree<EMemberOrder::kMemberOrder>(root, visitor);
}

void WritePretty(const JsonValue& root, std::string& out, const std::string& indent,
                 const std::string& newLine, int level, const TextWriterOptions& options) {
    TextSink sink(out);
    PrettyVisitor visitor{sink, indent, newLine, level, options.fStandard};
    WalkTree<EMemberOrder::kMemberOrder>(root, visitor);
}

} // namespace TextWriter
