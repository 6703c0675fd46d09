// A minimal in-process host for the glue tests and the script-call fuzz target: variants, a
// context that records reported errors, and vectors. Reference counts are real, so leaks and
// double releases show under the sanitizers.
#pragma once

#include "host/InterfaceImpl.h"
#include "host/VireloInterfaces.h"

#include <string>
#include <vector>

namespace FakeHost {

using namespace Virelo;

class Variant final : public InterfaceImpl<IVariant> {
public:
    Variant() = default;
    explicit Variant(double number) : fType(eTypeNumber), fNumber(number) {}
    explicit Variant(const std::string& text) : fType(eTypeString), fText(text) {}
    explicit Variant(bool value) : fType(eTypeBoolean), fBool(value) {}
    /// A user-defined variant of `typeId` holding `object` (null: no object).
    Variant(unsigned int typeId, IUserDefinedType* object) : fType(typeId) { Interface_SetUserDefined(object); }
    ~Variant() override { Clear(); }

    unsigned int Interface_GetType() const override { return fType; }
    unsigned char Interface_GetBoolean() const override { return fBool; }
    double Interface_GetNumber() const override { return fNumber; }
    const char* Interface_GetStringData() const override { return fText.c_str(); }
    unsigned long long Interface_GetStringLength() const override { return fText.size(); }
    IDataRef* Interface_GetDataRef() const override { return Shared(fData); }
    IUserDefinedType* Interface_GetUserDefined() const override { return Shared(fObject); }
    IObject* Interface_GetVector() const override { return Shared(fVector); }
    void Interface_SetBoolean(unsigned char value) override { fType = eTypeBoolean, fBool = value; }
    void Interface_SetNumber(double value) override { fType = eTypeNumber, fNumber = value; }
    void Interface_SetString(const char* data, unsigned long long length) override {
        fType = eTypeString;
        fText.assign(data ? data : "", data ? static_cast<size_t>(length) : 0);
    }
    void Interface_SetDataRef(IDataRef* data) override { Replace(fData, data), fType = eTypeDataRef; }
    void Interface_SetUserDefined(IUserDefinedType* object) override {
        Replace(fObject, object);
        if (object) fType = object->Interface_GetType();
    }
    void Interface_SetVector(IObject* vector) override { Replace(fVector, vector), fType = eTypeVector; }

    IUserDefinedType* Object() const { return fObject; }
    IDataRef* Data() const { return fData; }
    IObject* Vector() const { return fVector; }
    const std::string& Text() const { return fText; }
    unsigned char Boolean() const { return fBool; }
    double Number() const { return fNumber; }

private:
    template <class T> static T* Shared(T* p) {
        if (p) p->Interface_AddRef();
        return p;
    }
    template <class T> static void Replace(T*& slot, T* p) {
        if (p) p->Interface_AddRef();
        if (slot) slot->Interface_Release();
        slot = p;
    }
    void Clear() {
        Replace(fData, static_cast<IDataRef*>(nullptr));
        Replace(fObject, static_cast<IUserDefinedType*>(nullptr));
        Replace(fVector, static_cast<IObject*>(nullptr));
    }

    unsigned int fType = eTypeNone;
    unsigned char fBool = 0;
    double fNumber = 0;
    std::string fText;
    IDataRef* fData = nullptr;
    IUserDefinedType* fObject = nullptr;
    IObject* fVector = nullptr;
};

template <class T> class Vector final : public InterfaceImpl<IVector<T>> {
public:
    unsigned long long Interface_Size() const override { return fItems.size(); }
    IVariant* Interface_At(unsigned long long index) const override {
        return index < fItems.size() ? new Variant(fItems[static_cast<size_t>(index)]) : nullptr;
    }
    void Interface_PushBack(const T& value) override { fItems.push_back(value); }
    std::vector<T> fItems;
};

struct Report {
    unsigned int fSeverity;
    std::string fSource, fId, fMessage;
};

class Context final : public InterfaceImpl<IContext> {
public:
    static constexpr unsigned int kJsonTypeId = 21;

    void Interface_TriggerError(unsigned int severity, const char* source, const char* id,
                                const char* message) override {
        fReports.push_back({severity, source ? source : "<null>", id ? id : "<null>",
                            message ? message : "<null>"});
    }
    unsigned int Interface_GetTypeId(const char* name) override {
        return name && std::string(name) == "JSON" ? kJsonTypeId : 0;
    }
    ITypeObject* Interface_GetTypeObject(unsigned int) override { return nullptr; }
    ILogger* Interface_GetLogger() override { return nullptr; }
    unsigned int Interface_GetLoggerValue() const override { return 0; }
    unsigned long long Interface_GetCallStack(char*, unsigned long long) override { return 0; }
    IObject* Interface_CreateVector(unsigned int type) override {
        if (type == eTypeString) return new Vector<std::string>();
        if (type == eTypeNumber) return new Vector<double>();
        if (type == eTypeBoolean) return new Vector<bool>();
        return nullptr;
    }
    IVariant* Interface_CreateVariant() override { return new Variant(); }
    bool Interface_HasError() const override { return !fReports.empty(); }
    unsigned long long Interface_GetErrorText(char*, unsigned long long) const override { return 0; }
    void Interface_ResetError() override { fReports.clear(); }
    bool Interface_IsInterrupted() const override { return false; }
    unsigned int Interface_GetInterfaceId() const override { return 1; }
    VireloFunction Interface_GetFunction(const char*, unsigned int, const char* const*, IModuleInfo*&) override {
        return nullptr;
    }

    std::vector<Report> fReports;
};

} // namespace FakeHost
