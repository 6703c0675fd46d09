// The JSON text writer.
#include "json/text/TextWriter.h"

#include "json/JsonScalar.h"
#include "json/TreeWalk.h"

#include <charconv>
#include <cstdint>
#include <cmath>
#include <cstdio>
#include <cstring>

// MARK: - Strings

namespace {

// 0: copied as is; otherwise the letter after the backslash ('u' for \u00XX).
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

} // namespace

void AppendQuotedString(const std::string& text, std::string& out) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const size_t n = text.size();
    size_t clean = 0; // start of the run not yet appended
    for (size_t i = 0; i < n; ++i) {
        const char letter = kEscapes.fLetter[bytes[i]];
        if (!letter) continue;
        out.append(text, clean, i - clean);
        clean = i + 1;
        if (letter == 'u') {
            static constexpr char kHex[] = "0123456789ABCDEF";
            const char escape[6] = {'\\', 'u', '0', '0', kHex[bytes[i] >> 4], kHex[bytes[i] & 0xF]};
            out.append(escape, 6);
        } else {
            const char escape[2] = {'\\', letter};
            out.append(escape, 2);
        }
    }
    out.append(text, clean, n - clean);
}

namespace {
void AppendRepeated(std::string& out, const std::string& unit, int times) {
    if (unit.empty()) return;
    for (int i = 0; i < times; ++i) out += unit;
}
} // namespace

void PrettyPrintStartNewLine(std::string& out, const std::string& indent, const std::string& newLine,
                             int level) {
    out += newLine;
    AppendRepeated(out, indent, level);
}

// MARK: - Numbers

namespace TextWriter {

namespace {

// Deliberate: the digit count is floor(log10(double(magnitude))) + 1, taken from the rounded
// double. Close below a power of ten (from 10^15 - 2 up, where the double or its logarithm
// rounds up) that is one too many and the number gets a leading 0: 9999999999999999 prints as
// 09999999999999999. Below 10^14 no rounding can reach the next power, so the count is exact
// and the logarithm is skipped.
int DigitCount(unsigned long long magnitude) {
    constexpr unsigned long long kExactBelow = 100000000000000ULL; // 10^14
    if (magnitude < kExactBelow) {
        int count = 1;
        for (unsigned long long limit = 10; count < 14 && magnitude >= limit; limit *= 10) ++count;
        return count;
    }
    return static_cast<int>(std::log10(static_cast<double>(magnitude))) + 1;
}

void AppendDecimal(long long value, std::string& out) {
    char buffer[24];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, result.ptr);
}

bool HasAny(const char* text, size_t length, const char* set) {
    for (size_t i = 0; i < length; ++i)
        if (std::strchr(set, text[i])) return true;
    return false;
}

// Printed like a standard stream's default float notation with precision `digits`.
void AppendWithDigitCount(double value, uint32_t digits, std::string& out) {
    char small[64];
    int length = std::snprintf(small, sizeof small, "%.*g", static_cast<int>(digits), value);
    if (length < 0) return;
    const size_t start = out.size();
    if (static_cast<size_t>(length) < sizeof small) {
        out.append(small, static_cast<size_t>(length));
    } else {
        out.resize(start + static_cast<size_t>(length) + 1);
        std::snprintf(out.data() + start, static_cast<size_t>(length) + 1, "%.*g",
                      static_cast<int>(digits), value);
        out.resize(start + static_cast<size_t>(length));
    }
    if (!HasAny(out.data() + start, out.size() - start, ".eE")) out += ".0";
}

void AppendShortestFixed(double value, std::string& out) {
    char buffer[255];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    std::string text = ec == std::errc() ? std::string(buffer, end) : std::to_string(value);
    // Trailing zeros after the dot go, but one digit after it stays ("0.000000" -> "0.0").
    // Deliberately no ".0" is added to a text without a dot (1e19 prints as an integer).
    const size_t dot = text.find('.');
    if (dot != std::string::npos) {
        size_t last = text.find_last_not_of('0');
        if (last == dot) ++last;
        text.resize(last + 1);
    }
    out += text;
}

} // namespace

void AppendInteger(unsigned long long magnitude, bool negative, std::string& out) {
    if (magnitude == 0) {
        out += '0';
        return;
    }
    if (negative) out += '-';
    const int count = DigitCount(magnitude);
    const size_t start = out.size();
    out.resize(start + static_cast<size_t>(count));
    for (int i = count - 1; i >= 0; --i) {
        out[start + static_cast<size_t>(i)] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    }
}

void AppendReal(const JsonReal& real, std::string& out) {
    // A real still holding its text echoes it exactly as it was read (1.50 stays 1.50).
    if (real.HasPendingText()) {
        out += real.PendingText();
        return;
    }
    const double value = real.Get();
    if (real.GetDigitCount() >= 1) {
        AppendWithDigitCount(value, real.GetDigitCount(), out);
        return;
    }
    if (std::isnan(value)) {
        out += "nan";
        return;
    }
    if (std::isinf(value)) {
        out += value > 0 ? "inf" : "-inf";
        return;
    }
    // A whole number within the signed 64-bit range prints as that integer plus ".0".
    constexpr double kTwo63 = 9223372036854775808.0;
    if (value >= -kTwo63 && value < kTwo63 && value == std::trunc(value)) {
        AppendDecimal(static_cast<long long>(value), out);
        out += ".0";
        return;
    }
    AppendShortestFixed(value, out);
}

// MARK: - Layouts

namespace {

void AppendScalar(const JsonValue& node, std::string& out) {
    switch (node.GetType()) {
    case JsonValue::eJsonString:
        out += '"';
        AppendQuotedString(static_cast<const JsonString&>(node).Get(), out);
        out += '"';
        break;
    case JsonValue::eJsonInteger:
    case JsonValue::eJsonReal:
        node.AppendToString(out);
        break;
    case JsonValue::eJsonTrue:
        out += "true";
        break;
    case JsonValue::eJsonFalse:
        out += "false";
        break;
    default:
        out += "null";
        break;
    }
}

void AppendKey(const std::string& key, std::string& out) {
    out += '"';
    AppendQuotedString(key, out);
}

struct CompactVisitor {
    static constexpr bool kVisitMissing = false;
    std::string& fOut;

    void Scalar(const JsonValue& node) { AppendScalar(node, fOut); }
    void BeginObject(const JsonObject&) { fOut += '{'; }
    void EndObject(const JsonObject&, size_t) { fOut += '}'; }
    void BeginArray(const JsonArray&) { fOut += '['; }
    void EndArray(const JsonArray&, size_t) { fOut += ']'; }
    void BeginCompiled(const JsonCompiledObject&) { fOut += '{'; }
    void EndCompiled(const JsonCompiledObject&, size_t) { fOut += '}'; }
    void Key(const JsonValue&, const std::string& key, bool first) {
        if (!first) fOut += ',';
        AppendKey(key, fOut);
        fOut += "\":";
    }
    void Element(bool first) {
        if (!first) fOut += ',';
    }
    void Missing() {}
    size_t CompiledLimit(const JsonCompiledObject&) { return SIZE_MAX; }
};

// Children of a container at level L start on a new line indented L + 1 times; the closing
// bracket is indented L times. Negative levels indent nothing.
struct PrettyVisitor {
    static constexpr bool kVisitMissing = false;
    std::string& fOut;
    const std::string& fIndent;
    const std::string& fNewLine;
    int fLevel; // level of the innermost open container, once one is open

    void Scalar(const JsonValue& node) { AppendScalar(node, fOut); }
    void Open(char bracket) {
        fOut += bracket;
        ++fLevel;
    }
    void Close(char bracket, size_t written) {
        --fLevel;
        if (written) PrettyPrintStartNewLine(fOut, fIndent, fNewLine, fLevel);
        fOut += bracket;
    }
    void BeginObject(const JsonObject&) { Open('{'); }
    void EndObject(const JsonObject&, size_t written) { Close('}', written); }
    void BeginArray(const JsonArray&) { Open('['); }
    void EndArray(const JsonArray&, size_t written) { Close(']', written); }
    void BeginCompiled(const JsonCompiledObject&) { Open('{'); }
    void EndCompiled(const JsonCompiledObject&, size_t written) { Close('}', written); }
    void StartChild(bool first) {
        if (!first) fOut += ',';
        // fLevel is the container's level + 1 here.
        PrettyPrintStartNewLine(fOut, fIndent, fNewLine, fLevel);
    }
    void Key(const JsonValue& container, const std::string& key, bool first) {
        StartChild(first);
        AppendKey(key, fOut);
        // Deliberate: compiled objects write no blank after the colon, plain objects do; the
        // two print differently in pretty form.
        fOut += container.GetType() == JsonValue::eJsonCompiledObject ? "\":" : "\": ";
    }
    void Element(bool first) { StartChild(first); }
    void Missing() {}
    size_t CompiledLimit(const JsonCompiledObject&) { return SIZE_MAX; }
};

} // namespace

void WriteCompact(const JsonValue& root, std::string& out) {
    CompactVisitor visitor{out};
    WalkTree<EMemberOrder::kMemberOrder>(root, visitor);
}

void WritePretty(const JsonValue& root, std::string& out, const std::string& indent,
                 const std::string& newLine, int level) {
    PrettyVisitor visitor{out, indent, newLine, level};
    WalkTree<EMemberOrder::kMemberOrder>(root, visitor);
}

} // namespace TextWriter
