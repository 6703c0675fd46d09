// HostVariant: typed storage behind the IVariant operations.
#include "tools/vhost/host/HostVariant.h"

namespace vhost {

using Virelo::AutoRefPtr;

AutoRefPtr<HostVariant> HostVariant::Create() {
    return AutoRefPtr<HostVariant>(new HostVariant());
}

AutoRefPtr<HostVariant> HostVariant::FromBoolean(bool value) {
    AutoRefPtr<HostVariant> variant = Create();
    variant->Interface_SetBoolean(value ? 1 : 0);
    return variant;
}

AutoRefPtr<HostVariant> HostVariant::FromNumber(double value) {
    AutoRefPtr<HostVariant> variant = Create();
    variant->Interface_SetNumber(value);
    return variant;
}

AutoRefPtr<HostVariant> HostVariant::FromString(std::string value) {
    AutoRefPtr<HostVariant> variant = Create();
    variant->fString = std::move(value);
    variant->fType = Virelo::eTypeString;
    return variant;
}

void HostVariant::SetNone(unsigned int typeId) {
    fObject.Reset();
    fType = typeId;
}

unsigned char HostVariant::Interface_GetBoolean() const {
    return fType == Virelo::eTypeBoolean ? fBoolean : 0;
}

double HostVariant::Interface_GetNumber() const {
    return fType == Virelo::eTypeNumber ? fNumber : 0.0;
}

const char* HostVariant::Interface_GetStringData() const {
    return fType == Virelo::eTypeString ? fString.c_str() : "";
}

unsigned long long HostVariant::Interface_GetStringLength() const {
    return fType == Virelo::eTypeString ? fString.size() : 0;
}

Virelo::IDataRef* HostVariant::Interface_GetDataRef() const {
    if (fType != Virelo::eTypeDataRef) return nullptr;
    return AutoRefPtr<Virelo::IDataRef>(fData).Detach();
}

Virelo::IUserDefinedType* HostVariant::Interface_GetUserDefined() const {
    if (fType < Virelo::eTypeUserDefined) return nullptr;
    return AutoRefPtr<Virelo::IUserDefinedType>(fObject).Detach();
}

Virelo::IObject* HostVariant::Interface_GetVector() const {
    if (fType != Virelo::eTypeVector) return nullptr;
    return AutoRefPtr<Virelo::IObject>(fVector).Detach();
}

void HostVariant::Interface_SetBoolean(unsigned char value) {
    fBoolean = value != 0 ? 1 : 0;
    fType = Virelo::eTypeBoolean;
}

void HostVariant::Interface_SetNumber(double value) {
    fNumber = value;
    fType = Virelo::eTypeNumber;
}

void HostVariant::Interface_SetString(const char* data, unsigned long long length) {
    if (data)
        fString.assign(data, static_cast<size_t>(length));
    else
        fString.clear();
    fType = Virelo::eTypeString;
}

void HostVariant::Interface_SetDataRef(Virelo::IDataRef* data) {
    fData = AutoRefPtr<Virelo::IDataRef>::Share(data);
    fType = Virelo::eTypeDataRef;
}

void HostVariant::Interface_SetUserDefined(Virelo::IUserDefinedType* object) {
    fObject = AutoRefPtr<Virelo::IUserDefinedType>::Share(object);
    const unsigned int objectType = object ? object->Interface_GetType() : 0;
    if (objectType >= Virelo::eTypeUserDefined)
        fType = objectType;
    else if (fType < Virelo::eTypeUserDefined)
        fType = Virelo::eTypeUserDefined;
}

void HostVariant::Interface_SetVector(Virelo::IObject* vector) {
    fVector = AutoRefPtr<Virelo::IObject>::Share(vector);
    fType = Virelo::eTypeVector;
}

} // namespace vhost
