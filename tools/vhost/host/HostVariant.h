// HostVariant: the host's script value cell, used for call arguments, results, vector
// elements and Interface_CreateVariant. A getter asked for another kind than the variant
// holds returns the empty value of its kind (0, "", null), never a converted one.
#pragma once

#include "host/VireloInterfaces.h"
#include "tools/vhost/host/RefCounted.h"

#include <string>

namespace vhost {

class HostVariant final : public RefCounted<Virelo::IVariant> {
public:
    /// A new variant of type eTypeNone; one reference for the caller.
    static Virelo::AutoRefPtr<HostVariant> Create();
    static Virelo::AutoRefPtr<HostVariant> FromBoolean(bool value);
    static Virelo::AutoRefPtr<HostVariant> FromNumber(double value);
    static Virelo::AutoRefPtr<HostVariant> FromString(std::string value);

    /// A user-defined-type variant of `typeId` without an object (a script's NONE).
    void SetNone(unsigned int typeId);
    /// Sets only the type code, keeping every stored value (for results that a module
    /// fills through the getters, e.g. a vector it pushes into).
    void SetType(unsigned int type) { fType = type; }

    unsigned int Interface_GetType() const override { return fType; }
    unsigned char Interface_GetBoolean() const override;
    double Interface_GetNumber() const override;
    const char* Interface_GetStringData() const override;
    unsigned long long Interface_GetStringLength() const override;
    Virelo::IDataRef* Interface_GetDataRef() const override;
    Virelo::IUserDefinedType* Interface_GetUserDefined() const override;
    Virelo::IObject* Interface_GetVector() const override;
    void Interface_SetBoolean(unsigned char value) override;
    void Interface_SetNumber(double value) override;
    void Interface_SetString(const char* data, unsigned long long length) override;
    void Interface_SetDataRef(Virelo::IDataRef* data) override;
    /// The type becomes the object's type; with null it stays the user-defined type it was
    /// (eTypeUserDefined when it was none).
    void Interface_SetUserDefined(Virelo::IUserDefinedType* object) override;
    void Interface_SetVector(Virelo::IObject* vector) override;

private:
    HostVariant() = default;

    unsigned int fType = Virelo::eTypeNone;
    unsigned char fBoolean = 0;
    double fNumber = 0;
    std::string fString;
    Virelo::AutoRefPtr<Virelo::IDataRef> fData;
    Virelo::AutoRefPtr<Virelo::IUserDefinedType> fObject;
    Virelo::AutoRefPtr<Virelo::IObject> fVector;
};

} // namespace vhost
