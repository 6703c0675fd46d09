// AppendToErrorStr and ReplaceAllStringsInPlace.
#include "host/StringHelpers.h"

#include <cstring>

namespace Virelo {

void AppendToErrorStr(char* buffer, unsigned int bufferSize, const char* error,
                      unsigned long itemIndex) {
    if (!buffer || !error) return;
    const size_t length = std::strlen(buffer);
    std::string piece = length ? ", " : "";
    piece += "Item '" + std::to_string(itemIndex + 1) + "' has error '" + error + "'";
    if (length + 1 + piece.size() < bufferSize) std::strncat(buffer, piece.c_str(), piece.size());
}

void ReplaceAllStringsInPlace(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) return;
    for (size_t pos = text.find(from); pos != std::string::npos; pos = text.find(from, pos)) {
        text.replace(pos, from.size(), to);
        pos += to.size();
    }
}

} // namespace Virelo
