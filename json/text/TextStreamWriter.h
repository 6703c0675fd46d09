// TextStreamWriter: JSON text through a ChunkedOutput, so that a large document leaves in
// bounded pieces instead of as one string. The bytes are TextWriter's, compact or pretty, with
// members in member order or sorted by key. The standard profile adds two things, so that
// output reads back to the same document: a string holding an encoded UTF-16 surrogate (what a
// lone "\uD800" escape reads as) writes it back as that escape, keeping the output UTF-8; and
// a real made from a double (not read from text) is written in the fewest digits that read
// back to the same double (-0.0 keeps its sign, 5e-324 its digits).
#pragma once

#include "json/ChunkedOutput.h"
#include "json/text/TextWriter.h"

#include <string>

class JsonValue;

struct TextStreamOptions {
    TextWriterOptions fWriter;   ///< the profile: the module's designed output or the standard one
    bool fPretty = false;        ///< TextWriter::WritePretty's layout, else WriteCompact's
    std::string fIndent;         ///< pretty: one level's indentation
    std::string fNewLine = "\n"; ///< pretty: the line break
    bool fSortKeys = false;      ///< members sorted by key (EMemberOrder::kKeyOrder)
};

namespace TextStreamWriter {
/// Writes `root` as a document (nesting level 0) and flushes `out`.
void Write(const JsonValue& root, ChunkedOutput& out, const TextStreamOptions& options);
} // namespace TextStreamWriter
