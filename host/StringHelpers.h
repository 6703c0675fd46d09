// Small string helpers shared by the host glue.
#pragma once

#include <string>

namespace Virelo {

/// Appends "Item 'N' has error 'TEXT'" (N = itemIndex + 1), preceded by ", " when the buffer
/// already holds text, to a fixed C buffer, but only when the whole piece fits with its NUL;
/// a piece that does not fit is dropped, never cut. Null buffer or error: nothing.
void AppendToErrorStr(char* buffer, unsigned int bufferSize, const char* error,
                      unsigned long itemIndex);

/// Replaces every occurrence of `from` by `to`, resuming behind each inserted `to`, so that
/// replaced text is never searched again.
void ReplaceAllStringsInPlace(std::string& text, const std::string& from, const std::string& to);

} // namespace Virelo
