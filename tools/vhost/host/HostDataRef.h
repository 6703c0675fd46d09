// HostDataRef: the host's own byte buffers for DATAREF values. A buffer either offers a
// direct pointer to its bytes or, deliberately, none at all (only Interface_Read), so that
// scripts can drive both of a module's read paths.
#pragma once

#include "host/VireloInterfaces.h"
#include "tools/vhost/host/RefCounted.h"

#include <string>

namespace vhost {

class HostDataRef final : public RefCounted<Virelo::IDataRef> {
public:
    enum class EAccess { eDirect, eReadOnly };

    /// A new buffer holding `bytes`; one reference for the caller.
    static Virelo::AutoRefPtr<Virelo::IDataRef> Create(std::string bytes, EAccess access);

    unsigned long long Interface_GetSize() const override { return fBytes.size(); }
    void Interface_Assign(const char* data, unsigned long long size) override;
    unsigned long long Interface_Read(char* target, unsigned long long size,
                                      unsigned long long offset) const override;
    bool Interface_IsEqual(Virelo::IDataRef* other) const override;
    /// A copy with the same access kind.
    Virelo::IDataRef* Interface_Clone() const override;
    /// Null for an eReadOnly buffer.
    const char* Interface_GetData() const override;

private:
    HostDataRef(std::string bytes, EAccess access) : fBytes(std::move(bytes)), fAccess(access) {}

    std::string fBytes;
    EAccess fAccess;
};

/// All bytes of any data block, ours or a module's: through the direct pointer when there is
/// one, else through Interface_Read. Empty for null.
std::string ReadAllBytes(const Virelo::IDataRef* data);

} // namespace vhost
