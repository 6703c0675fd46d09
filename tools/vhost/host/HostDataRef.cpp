// HostDataRef: direct and read-only byte buffers, and reading any module's data block.
#include "tools/vhost/host/HostDataRef.h"

#include <algorithm>
#include <cstring>

namespace vhost {

Virelo::AutoRefPtr<Virelo::IDataRef> HostDataRef::Create(std::string bytes, EAccess access) {
    return Virelo::AutoRefPtr<Virelo::IDataRef>(new HostDataRef(std::move(bytes), access));
}

void HostDataRef::Interface_Assign(const char* data, unsigned long long size) {
    if (!data) size = 0;
    fBytes.assign(data ? data : "", static_cast<size_t>(size));
}

unsigned long long HostDataRef::Interface_Read(char* target, unsigned long long size,
                                               unsigned long long offset) const {
    if (!target || offset >= fBytes.size()) return 0;
    const unsigned long long count = std::min<unsigned long long>(size, fBytes.size() - offset);
    std::memcpy(target, fBytes.data() + offset, static_cast<size_t>(count));
    return count;
}

bool HostDataRef::Interface_IsEqual(Virelo::IDataRef* other) const {
    return other && ReadAllBytes(other) == fBytes;
}

Virelo::IDataRef* HostDataRef::Interface_Clone() const {
    return new HostDataRef(fBytes, fAccess);
}

const char* HostDataRef::Interface_GetData() const {
    return fAccess == EAccess::eDirect ? fBytes.data() : nullptr;
}

std::string ReadAllBytes(const Virelo::IDataRef* data) {
    if (!data) return {};
    const size_t size = static_cast<size_t>(data->Interface_GetSize());
    if (const char* direct = data->Interface_GetData()) return std::string(direct, size);
    std::string bytes(size, '\0');
    size_t done = 0;
    // A module's buffer may hand its bytes out in pieces; stop when it gives nothing more.
    while (done < size) {
        const unsigned long long got = data->Interface_Read(bytes.data() + done, size - done, done);
        if (got == 0) break;
        done += static_cast<size_t>(std::min<unsigned long long>(got, size - done));
    }
    bytes.resize(done);
    return bytes;
}

} // namespace vhost
