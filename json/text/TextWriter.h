// The JSON text writer: escaping, number formatting and the compact and pretty layouts.
// Nodes reach it through AppendToString / AppendToStringPretty; containers are written by one
// iterative walk, so any nesting depth prints on a small stack.
//
// Deliberate behaviours kept here:
// - Integers get floor(log10(double(magnitude))) + 1 digits, so 9999999999999999 prints as
//   09999999999999999: the count is taken from the rounded double.
// - A real that still holds its text prints it verbatim; once converted it prints with its
//   digit count as precision; a real made from a double prints the shortest fixed text.
// - "nan", "inf" and "-inf" are written for non-finite reals (not JSON; they do not re-parse).
#pragma once

#include <string>

class JsonValue;

/// Appends `text` with JSON escaping, without the surrounding quote marks.
void AppendQuotedString(const std::string& text, std::string& out);
/// Appends `newLine`, then `indent` `level` times (nothing for level < 1).
void PrettyPrintStartNewLine(std::string& out, const std::string& indent,
                             const std::string& newLine, int level);

/// How the writer writes. The default is the module's designed output; the standard profile
/// (never used by the module) is for tools that must not change what a document means.
struct TextWriterOptions {
    /// Integers get exactly their digits (no leading 0 from the logarithm formula).
    bool fStandard = false;
};

namespace TextWriter {
/// The compact text of any node, containers included.
void WriteCompact(const JsonValue& root, std::string& out, const TextWriterOptions& options = {});
/// The pretty text of any node standing at nesting depth `level`.
void WritePretty(const JsonValue& root, std::string& out, const std::string& indent,
                 const std::string& newLine, int level, const TextWriterOptions& options = {});
} // namespace TextWriter
