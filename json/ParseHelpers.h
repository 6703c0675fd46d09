// Small reading helpers shared by both readers (text and MessagePack) and the value model.
#pragma once

#include <cstddef>
#include <string>

class JsonValue;
struct ParserContext;

/// True for 0-9, A-F, a-f, with the digit's value.
bool IsHexDigit(char c, unsigned char& value);
/// Reads four hex digits at `pos` (advanced by 4 in any case); true when all four were digits.
bool Parse4HexDigits(const std::string& text, unsigned long& pos, unsigned short& value);
/// Appends the UTF-8 form of any code point up to 0x10FFFF (0 and surrogates included);
/// larger values append nothing.
void AppendUnicodeAsUTF8(std::string& out, unsigned int codePoint);
/// Skips blanks, tabs, CR and LF; CR LF and LF CR count as one line break.
void SkipWhiteSpace(const char* text, size_t size, ParserContext& ctx);

/// JsonValue::ParseNumber over `size` bytes at `s`, which a byte that cannot continue a number
/// follows (a zero byte at the end of the text will do): a new node, or null with the message.
JsonValue* ReadNumber(const char* s, size_t size, ParserContext& ctx);

/// True for the ASCII digits 0-9.
inline bool IsDecimalDigit(char c) {
    return c >= '0' && c <= '9';
}
