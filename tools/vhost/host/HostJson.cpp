// HostJson: the serialized form and the text, the only operations it supports.
#include "tools/vhost/host/HostJson.h"

#include <cstdint>
#include <cstring>

namespace vhost {

namespace {
constexpr unsigned long long sRefused = ~0ULL;
constexpr unsigned long long sLengthSize = sizeof(std::uint64_t);
} // namespace

Virelo::AutoRefPtr<HostJson> HostJson::Create(std::string text) {
    return Virelo::AutoRefPtr<HostJson>(new HostJson(std::move(text)));
}

unsigned long long HostJson::Interface_ToString(const char*, char* buffer,
                                                unsigned long long size) const {
    if (buffer && fText.size() < size) std::memcpy(buffer, fText.c_str(), fText.size() + 1);
    return fText.size() + 1;
}

unsigned long long HostJson::Interface_SerializedSize() const {
    return sLengthSize + fText.size();
}

unsigned long long HostJson::Interface_Deserialize(const char* data, unsigned long long size) {
    if (!data || size < sLengthSize) return sRefused;
    std::uint64_t length = 0;
    std::memcpy(&length, data, sLengthSize);
    if (length > size - sLengthSize) return sRefused;
    fText.assign(data + sLengthSize, static_cast<size_t>(length));
    return sLengthSize + length;
}

unsigned long long HostJson::Interface_Serialize(char* buffer, unsigned long long size) const {
    const unsigned long long needed = Interface_SerializedSize();
    if (!buffer || size < needed) return sRefused;
    const std::uint64_t length = fText.size();
    std::memcpy(buffer, &length, sLengthSize);
    std::memcpy(buffer + sLengthSize, fText.data(), fText.size());
    return needed;
}

unsigned long long HostJson::Interface_GetString(const char*, char*, unsigned long long,
                                                 unsigned char* found) const {
    if (found) *found = 0;
    return 0;
}

unsigned long long HostJson::Interface_AsString(char*, unsigned long long,
                                                unsigned char* copied) const {
    if (copied) *copied = 0;
    return 0;
}

unsigned long long HostJson::Interface_GetErrorMessage(char*, unsigned long long,
                                                       unsigned char* copied) const {
    if (copied) *copied = 0;
    return 0;
}

} // namespace vhost
