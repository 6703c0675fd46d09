// Virelo::Data: the module's byte buffer, handed to the host as an IDataRef (MessagePack
// output). It may hold zero bytes anywhere.
#pragma once

#include "host/InterfaceImpl.h"
#include "host/VireloInterfaces.h"

#include <string>

namespace Virelo {

class Data final : public InterfaceImpl<IDataRef> {
public:
    Data() = default;
    explicit Data(std::string bytes) : fBytes(std::move(bytes)) {}

    unsigned long long Interface_GetSize() const override { return fBytes.size(); }
    void Interface_Assign(const char* data, unsigned long long size) override;
    unsigned long long Interface_Read(char* target, unsigned long long size,
                                      unsigned long long offset) const override;
    /// Same size and bytes; a buffer without a direct pointer is read in 8 KiB pieces.
    bool Interface_IsEqual(IDataRef* other) const override;
    IDataRef* Interface_Clone() const override { return new Data(fBytes); }
    const char* Interface_GetData() const override { return fBytes.data(); }

    const std::string& Bytes() const noexcept { return fBytes; }

private:
    std::string fBytes;
};

} // namespace Virelo
