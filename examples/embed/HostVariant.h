// Variant: the host's script value cell, handed to module functions as arguments and as the
// result to fill. It holds one value of one kind; a getter asked for another kind gives that
// kind's empty value. Interface pointers it hands out carry one reference for the caller.
#pragma once

#include <host/InterfaceImpl.h>
#include <host/VireloInterfaces.h>

#include <string>
#include <utility>

namespace embed {

using Virelo::AutoRefPtr;

class Variant final : public Virelo::InterfaceImpl<Virelo::IVariant> {
public:
    static AutoRefPtr<Variant> Create() { return AutoRefPtr<Variant>(new Variant()); }
    static AutoRefPtr<Variant> FromString(const std::string& text) {
        AutoRefPtr<Variant> variant = Create();
        variant->Interface_SetString(text.data(), text.size());
        return variant;
    }
    /// A variant of the module type `typeId` holding no object yet: the result slot of a
    /// function that returns that type (a failed call leaves it so).
    static AutoRefPtr<Variant> EmptyOf(unsigned int typeId) {
        AutoRefPtr<Variant> variant = Create();
        variant->fType = typeId;
        return variant;
    }

    unsigned int Interface_GetType() const override { return fType; }
    unsigned char Interface_GetBoolean() const override {
        return fType == Virelo::eTypeBoolean ? fBoolean : 0;
    }
    double Interface_GetNumber() const override {
        return fType == Virelo::eTypeNumber ? fNumber : 0.0;
    }
    const char* Interface_GetStringData() const override {
        return fType == Virelo::eTypeString ? fString.c_str() : "";
    }
    unsigned long long Interface_GetStringLength() const override {
        return fType == Virelo::eTypeString ? fString.size() : 0;
    }
    Virelo::IDataRef* Interface_GetDataRef() const override {
        return fType == Virelo::eTypeDataRef ? NewReference(fData) : nullptr;
    }
    Virelo::IUserDefinedType* Interface_GetUserDefined() const override {
        return fType >= Virelo::eTypeUserDefined ? NewReference(fObject) : nullptr;
    }
    Virelo::IObject* Interface_GetVector() const override {
        return fType == Virelo::eTypeVector ? NewReference(fVector) : nullptr;
    }

    void Interface_SetBoolean(unsigned char value) override {
        fType = Virelo::eTypeBoolean;
        fBoolean = value ? 1 : 0;
    }
    void Interface_SetNumber(double value) override {
        fType = Virelo::eTypeNumber;
        fNumber = value;
    }
    void Interface_SetString(const char* data, unsigned long long length) override {
        fType = Virelo::eTypeString;
        fString.assign(data ? data : "", data ? static_cast<size_t>(length) : 0);
    }
    // A variant keeps its own reference to an interface value it is given.
    void Interface_SetDataRef(Virelo::IDataRef* data) override {
        fType = Virelo::eTypeDataRef;
        fData = AutoRefPtr<Virelo::IDataRef>::Share(data);
    }
    void Interface_SetUserDefined(Virelo::IUserDefinedType* object) override {
        fObject = AutoRefPtr<Virelo::IUserDefinedType>::Share(object);
        if (object) fType = object->Interface_GetType(); // without one it keeps its type
    }
    void Interface_SetVector(Virelo::IObject* vector) override {
        fType = Virelo::eTypeVector;
        fVector = AutoRefPtr<Virelo::IObject>::Share(vector);
    }

private:
    Variant() = default;

    template <class T> static T* NewReference(const AutoRefPtr<T>& held) {
        return AutoRefPtr<T>(held).Detach();
    }

    unsigned int fType = Virelo::eTypeNone;
    unsigned char fBoolean = 0;
    double fNumber = 0;
    std::string fString;
    AutoRefPtr<Virelo::IDataRef> fData;
    AutoRefPtr<Virelo::IUserDefinedType> fObject;
    AutoRefPtr<Virelo::IObject> fVector;
};

} // namespace embed
