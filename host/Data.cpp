// Virelo::Data.
#include "host/Data.h"

#include <algorithm>
#include <cstring>

namespace Virelo {

void Data::Interface_Assign(const char* data, unsigned long long size) {
    if (!data || !size) {
        fBytes.clear();
        return;
    }
    fBytes.assign(data, static_cast<size_t>(size));
}

unsigned long long Data::Interface_Read(char* target, unsigned long long size,
                                        unsigned long long offset) const {
    if (offset >= fBytes.size() || !target) return 0;
    const unsigned long long count = std::min<unsigned long long>(size, fBytes.size() - offset);
    std::memcpy(target, fBytes.data() + offset, static_cast<size_t>(count));
    return count;
}

bool Data::Interface_IsEqual(IDataRef* other) const {
    if (!other || other->Interface_GetSize() != fBytes.size()) return false;
    if (fBytes.empty()) return true;
    if (const char* bytes = other->Interface_GetData())
        return std::memcmp(bytes, fBytes.data(), fBytes.size()) == 0;
    constexpr unsigned long long kPiece = 8192;
    char buffer[kPiece];
    for (unsigned long long offset = 0; offset < fBytes.size();) {
        const unsigned long long piece = std::min<unsigned long long>(kPiece, fBytes.size() - offset);
        if (other->Interface_Read(buffer, piece, offset) != piece ||
            std::memcmp(buffer, fBytes.data() + offset, static_cast<size_t>(piece)) != 0)
            return false;
        offset += piece;
    }
    return true;
}

} // namespace Virelo
