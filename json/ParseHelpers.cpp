// The byte-level reading shared by both readers and the value model: hex digits, UTF-8
// assembly, white space with line counting.
#include "json/ParseHelpers.h"

#include "json/ByteScan.h"
#include "json/ParserContext.h"

bool IsHexDigit(char c, unsigned char& value) {
    if (c >= '0' && c <= '9') {
        value = static_cast<unsigned char>(c - '0');
    } else if (c >= 'A' && c <= 'F') {
        value = static_cast<unsigned char>(c - 'A' + 10);
    } else if (c >= 'a' && c <= 'f') {
        value = static_cast<unsigned char>(c - 'a' + 10);
    } else {
        return false;
    }
    return true;
}

bool Parse4HexDigits(const std::string& text, unsigned long& pos, unsigned short& value) {
    const unsigned long start = pos;
    pos += 4;
    if (start + 4 > text.size()) return false;
    unsigned int result = 0;
    for (unsigned long i = start; i < start + 4; ++i) {
        unsigned char digit;
        if (!IsHexDigit(text[i], digit)) return false;
        result = (result << 4) | digit;
    }
    value = static_cast<unsigned short>(result);
    return true;
}

void AppendUnicodeAsUTF8(std::string& out, unsigned int codePoint) {
    char bytes[4];
    size_t n;
    if (codePoint < 0x80) {
        bytes[0] = static_cast<char>(codePoint);
        n = 1;
    } else if (codePoint < 0x800) {
        bytes[0] = static_cast<char>(0xC0 | (codePoint >> 6));
        bytes[1] = static_cast<char>(0x80 | (codePoint & 0x3F));
        n = 2;
    } else if (codePoint < 0x10000) {
        bytes[0] = static_cast<char>(0xE0 | (codePoint >> 12));
        bytes[1] = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        bytes[2] = static_cast<char>(0x80 | (codePoint & 0x3F));
        n = 3;
    } else if (codePoint <= 0x10FFFF) {
        bytes[0] = static_cast<char>(0xF0 | (codePoint >> 18));
        bytes[1] = static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
        bytes[2] = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        bytes[3] = static_cast<char>(0x80 | (codePoint & 0x3F));
        n = 4;
    } else {
        return;
    }
    out.append(bytes, n);
}

void SkipWhiteSpace(const char* text, size_t size, ParserContext& ctx) {
    size_t pos = ctx.fPos;
    while (pos < size) {
        const char c = text[pos];
        if (c == ' ' || c == '\t') {
            pos = ByteScan::SkipBlanks(reinterpret_cast<const unsigned char*>(text), pos + 1, size);
        } else if (c == '\n' || c == '\r') {
            ++pos;
            if (pos < size && text[pos] == (c == '\n' ? '\r' : '\n')) ++pos;
            ++ctx.fLine;
            ctx.fLineStart = pos;
        } else {
            break;
        }
    }
    ctx.fPos = pos;
}
