// The in-process host of fuzz_script_calls: the tests' fake host (variants, host vectors, a
// context that records every reported error) plus byte buffers with and without a direct
// pointer and another module's user-defined type. Reference counts are real, so a leaked or
// doubly released object shows under the sanitizers.
#pragma once

#include "host/InterfaceImpl.h"
#include "host/JSONObj.h"
#include "host/VireloInterfaces.h"
#include "tests/host/FakeHost.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace FuzzHost {

using namespace Virelo;
using FakeHost::Context;
using FakeHost::Report;
using FakeHost::Variant;
template <class T> using Vector = FakeHost::Vector<T>;

/// A byte buffer; without `direct` it offers no pointer and must be read piecewise.
class Data final : public InterfaceImpl<IDataRef> {
public:
    Data(std::string bytes, bool direct) : fBytes(std::move(bytes)), fDirect(direct) {}

    unsigned long long Interface_GetSize() const override { return fBytes.size(); }
    void Interface_Assign(const char* data, unsigned long long size) override {
        fBytes.assign(data ? data : "", data ? static_cast<size_t>(size) : 0);
    }
    unsigned long long Interface_Read(char* target, unsigned long long size,
                                      unsigned long long offset) const override {
        if (!target || offset >= fBytes.size()) return 0;
        const unsigned long long count = std::min<unsigned long long>(size, fBytes.size() - offset);
        std::memcpy(target, fBytes.data() + offset, static_cast<size_t>(count));
        return count;
    }
    bool Interface_IsEqual(IDataRef* other) const override {
        if (!other || other->Interface_GetSize() != fBytes.size()) return false;
        std::string theirs(fBytes.size(), '\0');
        return other->Interface_Read(theirs.data(), theirs.size(), 0) == theirs.size() && theirs == fBytes;
    }
    IDataRef* Interface_Clone() const override { return new Data(fBytes, fDirect); }
    const char* Interface_GetData() const override { return fDirect ? fBytes.data() : nullptr; }

private:
    std::string fBytes;
    bool fDirect;
};

/// Another module's user-defined type: never taken as a JSON argument.
class ForeignType final : public CustomType<ForeignType> {
public:
    static constexpr unsigned int kTypeId = 22;
    ForeignType() : CustomType(kTypeId, "Other") {}
    bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
};

} // namespace FuzzHost
