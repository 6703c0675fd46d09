// The parser's context counts lines as jsonfmt reports them (CR LF and LF CR are one break
// each) and gives the error's byte offset. Two messages leave the offset elsewhere than the
// error, and are moved to it here (the engine's reporting is designed behaviour).
#include "tools/jsonfmt/ErrorLocation.h"

#include "json/JsonValue.h"
#include "json/ParseMessages.h"
#include "json/ParserContext.h"

#include <algorithm>

namespace jsonfmt {

namespace {

bool StartsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

} // namespace

TextLocation LocateTextError(const std::string& text, const ParserContext& ctx) {
    uint64_t pos = std::min<uint64_t>(ctx.fPos, text.size());
    if (StartsWith(ctx.fError, ParseMessages::kIllegalUtf8)) {
        // Reported past the end of the string that holds the bad bytes. Everything read
        // before that string was valid, so the input's first bad sequence is the one.
        unsigned long bad = 0;
        if (!JsonValue::IsUTF8(text, &bad)) pos = bad;
    } else if (StartsWith(ctx.fError, ParseMessages::kQuoteExpected) && pos > 0 && pos < text.size()) {
        // A key without its opening quote mark: the parser has stepped past the byte that
        // should have been one. (An unterminated string is reported at the end of the input.)
        --pos;
    }
    const uint64_t lineStart = std::min(ctx.fLineStart, pos);
    return {ctx.fLine + 1, pos - lineStart + 1};
}

std::string OneLine(std::string_view message) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string line;
    line.reserve(message.size());
    for (const char c : message) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            line += c;
        } else if (c == '\n') {
            line += "\\n";
        } else if (c == '\r') {
            line += "\\r";
        } else if (c == '\t') {
            line += "\\t";
        } else {
            line += "\\u00";
            line += kHex[byte >> 4];
            line += kHex[byte & 0xF];
        }
    }
    return line;
}

} // namespace jsonfmt
