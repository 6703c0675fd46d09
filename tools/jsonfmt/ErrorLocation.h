// Where in a JSON text the parser stopped, as people count it: 1-based line and column, the
// column in bytes from the line's start. And parser messages made safe for one line of output.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct ParserContext;

namespace jsonfmt {

struct TextLocation {
    uint64_t fLine = 1;
    uint64_t fColumn = 1; ///< bytes: a character of several UTF-8 bytes counts several
};

/// The place of the error of a failed parse of `text` with `ctx` (fPos, fLine, fLineStart).
TextLocation LocateTextError(const std::string& text, const ParserContext& ctx);

/// `message` with its control bytes escaped as JSON escapes them (a message may quote the
/// start of a string that holds line breaks).
std::string OneLine(std::string_view message);

} // namespace jsonfmt
