// Test doubles for the IJSON tests: a host context that records errors and log lines and serves
// imported functions, another module's script "JSON" type (refuses the 11100 handshake) and
// another module's IJSON implementation (holds only text). Reference counts are real, so leaks
// and double releases show under the sanitizers.
#pragma once

#include "host/InterfaceImpl.h"
#include "host/JSONObj.h"
#include "host/VireloIJSON.h"
#include "host/VireloInterfaces.h"
#include "host/ijson/JSONWrapper.h"
#include "json/JsonObject.h"

#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace IjsonFakes {

using namespace Virelo;

class Variant final : public InterfaceImpl<IVariant> {
public:
    ~Variant() override { SetObject(nullptr); }
    unsigned int Interface_GetType() const override { return fType; }
    unsigned char Interface_GetBoolean() const override { return 0; }
    double Interface_GetNumber() const override { return 0; }
    const char* Interface_GetStringData() const override { return fText.c_str(); }
    unsigned long long Interface_GetStringLength() const override { return fText.size(); }
    IDataRef* Interface_GetDataRef() const override { return nullptr; }
    IUserDefinedType* Interface_GetUserDefined() const override {
        if (fObject) fObject->Interface_AddRef();
        return fObject;
    }
    IObject* Interface_GetVector() const override { return nullptr; }
    void Interface_SetBoolean(unsigned char) override {}
    void Interface_SetNumber(double) override {}
    void Interface_SetString(const char* data, unsigned long long length) override {
        fType = eTypeString;
        fText.assign(data ? data : "", data ? length : 0);
    }
    void Interface_SetDataRef(IDataRef*) override {}
    void Interface_SetUserDefined(IUserDefinedType* object) override {
        SetObject(object);
        fType = object ? object->Interface_GetType() : eTypeUserDefined;
    }
    void Interface_SetVector(IObject*) override {}

private:
    void SetObject(IUserDefinedType* object) {
        if (object) object->Interface_AddRef();
        if (fObject) fObject->Interface_Release();
        fObject = object;
    }
    unsigned int fType = eTypeNone;
    std::string fText;
    IUserDefinedType* fObject = nullptr;
};

/// Another module's script "JSON" value: text only; refuses the binary-data handshake.
class ForeignJson final : public CustomType<ForeignJson> {
public:
    explicit ForeignJson(std::string text) : CustomType(21, "JSON"), fText(std::move(text)) {}
    bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
    std::string fText;
};

/// Another module's IJSON: holds text, answers Interface_ToString, refuses everything else.
class TextJson final : public InterfaceImpl<IJSON> {
public:
    explicit TextJson(std::string text) : fText(std::move(text)) {}
    unsigned long long Interface_ToString(const char*, char* buffer,
                                          unsigned long long size) const override {
        if (buffer && fText.size() < size) std::memcpy(buffer, fText.c_str(), fText.size() + 1);
        return fText.size() + 1;
    }
    unsigned long long Interface_ToCachedString(const char* f, char* b,
                                                unsigned long long s) const override {
        return Interface_ToString(f, b, s);
    }
    unsigned char Interface_Parse(const char*) override { return 0; }
    unsigned char Interface_LessThan(const IJSON*) const override { return 0; }
    unsigned char Interface_Equals(const IJSON*) const override { return 0; }
    IJSON* Interface_FindNodePath(const char*) const override { return nullptr; }
    IJSON* Interface_ElementMatchingString(const char*, const char*) const override {
        return nullptr;
    }
    IJSON* Interface_ElementMatchingDouble(const char*, double) const override { return nullptr; }
    unsigned long long Interface_Size() const override { return 0; }
    unsigned char Interface_Empty() const override { return 0; }
    unsigned long long Interface_GetString(const char*, char*, unsigned long long,
                                           unsigned char*) const override {
        return 0;
    }
    unsigned char Interface_GetDouble(const char*, double*) const override { return 0; }
    unsigned char Interface_GetInt(const char*, int*) const override { return 0; }
    unsigned char Interface_GetUInt(const char*, unsigned int*) const override { return 0; }
    unsigned char Interface_GetInt64(const char*, long long*) const override { return 0; }
    unsigned char Interface_GetUInt64(const char*, unsigned long long*) const override { return 0; }
    unsigned char Interface_GetBoolean(const char*, unsigned char*) const override { return 0; }
    IJSON* Interface_Get(const char*) const override { return nullptr; }
    unsigned char Interface_Has(const char*) const override { return 0; }
    IJSON* Interface_At(unsigned long long) const override { return nullptr; }
    unsigned char Interface_PushBackBool(unsigned char) override { return 0; }
    unsigned char Interface_PushBackString(const char*) override { return 0; }
    unsigned char Interface_PushBackDouble(double) override { return 0; }
    unsigned char Interface_PushBackJSON(const IJSON*) override { return 0; }
    IJSON* Interface_RemoveIndex(unsigned long long) override { return nullptr; }
    IJSON* Interface_RemoveKey(const char*) override { return nullptr; }
    unsigned char Interface_AsBool(unsigned char*) const override { return 0; }
    unsigned char Interface_AsDouble(double*) const override { return 0; }
    unsigned char Interface_AsInt(int*) const override { return 0; }
    unsigned char Interface_AsUInt(unsigned int*) const override { return 0; }
    unsigned char Interface_AsInt64(long long*) const override { return 0; }
    unsigned char Interface_AsUInt64(unsigned long long*) const override { return 0; }
    unsigned long long Interface_AsString(char*, unsigned long long,
                                          unsigned char*) const override {
        return 0;
    }
    unsigned char Interface_IsNull() const override { return 0; }
    unsigned char Interface_IsBool() const override { return 0; }
    unsigned char Interface_IsNumber() const override { return 0; }
    unsigned char Interface_IsDouble() const override { return 0; }
    unsigned char Interface_IsInt() const override { return 0; }
    unsigned char Interface_IsUInt() const override { return 0; }
    unsigned char Interface_IsInt64() const override { return 0; }
    unsigned char Interface_IsUInt64() const override { return 0; }
    unsigned char Interface_IsString() const override { return 0; }
    unsigned char Interface_IsArray() const override { return 0; }
    unsigned char Interface_IsObject() const override { return 1; }
    unsigned char Interface_SetBool(const char*, unsigned char) override { return 0; }
    unsigned char Interface_SetDouble(const char*, double) override { return 0; }
    unsigned char Interface_SetInt(const char*, int) override { return 0; }
    unsigned char Interface_SetUInt(const char*, unsigned int) override { return 0; }
    unsigned char Interface_SetInt64(const char*, long long) override { return 0; }
    unsigned char Interface_SetUInt64(const char*, unsigned long long) override { return 0; }
    unsigned char Interface_SetString(const char*, const char*) override { return 0; }
    unsigned char Interface_SetJSON(const char*, const IJSON*) override { return 0; }
    unsigned char Interface_SetNull(const char*) override { return 0; }
    unsigned char Interface_ReplaceIndex(unsigned long long, const IJSON*) override { return 0; }
    unsigned char Interface_ForEach(ForEachContextCallback, void*, IContext*) const override {
        return 0;
    }
    unsigned char Interface_ForEach(ForEachCallback, void*) const override { return 0; }
    unsigned char Interface_ForEach(ForEachErrorCallback, void*, char*,
                                    unsigned int) const override {
        return 0;
    }
    IJSON* Interface_Clone() const override { return new TextJson(fText); }
    unsigned long long Interface_SerializedSize() const override { return 0; }
    unsigned long long Interface_Deserialize(const char*, unsigned long long) override {
        return ~0ULL;
    }
    unsigned long long Interface_Serialize(char*, unsigned long long) const override {
        return ~0ULL;
    }
    unsigned int Interface_GetErrorStatus() const override { return 0; }
    unsigned long long Interface_GetErrorMessage(char*, unsigned long long,
                                                 unsigned char*) const override {
        return 1;
    }

private:
    std::string fText;
};

struct Report {
    unsigned int fSeverity;
    std::string fSource, fId, fMessage;
};

class Logger final : public InterfaceImpl<ILogger> {
public:
    void Interface_DebugLog(const char* text, unsigned char, const char* detail, unsigned int,
                            IContext*) override {
        fDebug.push_back(std::string(text) + "|" + detail);
    }
    void Interface_ErrorLog(const char* text, const char* detail, unsigned int,
                            IContext*) override {
        fErrors.push_back(std::string(text) + "|" + detail);
    }
    std::vector<std::string> fDebug, fErrors;
};

/// A call context. Errors are recorded and also held as the context's current error until
/// reset. Imported functions are served from `fFunctions`; the script type "JSON" is this
/// module's JSONObj or, with `fForeignJsonType`, ForeignJson. Each context has its own host
/// interface id, so cached function handles never leak from one test into another.
class Context final : public InterfaceImpl<IContext> {
public:
    static constexpr unsigned int kJsonTypeId = 21;

    Context() : fInterfaceId(NextInterfaceId()) {}

    void Interface_TriggerError(unsigned int severity, const char* source, const char* id,
                                const char* message) override {
        fReports.push_back({severity, source, id, message});
        fHasError = true;
        fErrorText = message;
    }
    unsigned int Interface_GetTypeId(const char* name) override {
        return std::string(name) == "JSON" ? kJsonTypeId : 0;
    }
    ITypeObject* Interface_GetTypeObject(unsigned int) override { return nullptr; }
    ILogger* Interface_GetLogger() override {
        fLogger.Interface_AddRef();
        return &fLogger;
    }
    unsigned int Interface_GetLoggerValue() const override { return 0; }
    unsigned long long Interface_GetCallStack(char* buffer, unsigned long long size) override {
        return CopyOut("stack", buffer, size);
    }
    IObject* Interface_CreateVector(unsigned int) override { return nullptr; }
    IVariant* Interface_CreateVariant() override { return new Variant(); }
    bool Interface_HasError() const override { return fHasError; }
    unsigned long long Interface_GetErrorText(char* buffer,
                                              unsigned long long size) const override {
        return CopyOut(fErrorText, buffer, size);
    }
    void Interface_ResetError() override {
        fHasError = false;
        fErrorText.clear();
    }
    bool Interface_IsInterrupted() const override { return false; }
    unsigned int Interface_GetInterfaceId() const override { return fInterfaceId; }
    VireloFunction Interface_GetFunction(const char* name, unsigned int, const char* const*,
                                         IModuleInfo*&) override {
        auto found = fFunctions.find(name);
        return found == fFunctions.end() ? nullptr : found->second;
    }

    /// Serves the three imported functions (this module's JSON type or the foreign one).
    void ServeJsonFunctions();

    std::vector<Report> fReports;
    bool fHasError = false;
    std::string fErrorText;
    bool fForeignJsonType = false;
    std::map<std::string, VireloFunction> fFunctions;
    Logger fLogger; // lives as long as the context; the extra references are the logger's own

private:
    static unsigned int NextInterfaceId() {
        static std::atomic<unsigned int> sNext{100};
        return sNext++;
    }
    static unsigned long long CopyOut(const std::string& text, char* buffer,
                                      unsigned long long size) {
        if (buffer && text.size() < size) std::memcpy(buffer, text.c_str(), text.size() + 1);
        return text.size();
    }
    const unsigned int fInterfaceId;
};

inline Context& ContextOf(IContext* context) {
    return *static_cast<Context*>(context);
}

/// "JSON.CreateEmptyObject": an empty object of the context's JSON type.
inline unsigned int CreateEmptyObject(unsigned int, IVariant**, IVariant* result, IModuleInfo*,
                                      IContext* context) {
    AutoRefPtr<IUserDefinedType> object;
    if (ContextOf(context).fForeignJsonType) {
        object = AutoRefPtr<IUserDefinedType>(new ForeignJson("{}"));
    } else {
        object = AutoRefPtr<IUserDefinedType>(
            new JSONObj(Context::kJsonTypeId, JsonValue::eJsonObject, nullptr));
    }
    result->Interface_SetUserDefined(object.Get());
    return 0;
}

/// "JSON.FromString": the text as a value of the context's JSON type.
inline unsigned int FromString(unsigned int, IVariant** arguments, IVariant* result, IModuleInfo*,
                               IContext* context) {
    const std::string text(arguments[0]->Interface_GetStringData(),
                           arguments[0]->Interface_GetStringLength());
    AutoRefPtr<IUserDefinedType> object;
    if (ContextOf(context).fForeignJsonType) {
        object = AutoRefPtr<IUserDefinedType>(new ForeignJson(text));
    } else {
        auto* json = new JSONObj(Context::kJsonTypeId, nullptr);
        json->SetValue(JsonValue::ReadFromString(text, nullptr, nullptr));
        object = AutoRefPtr<IUserDefinedType>(json);
    }
    result->Interface_SetUserDefined(object.Get());
    return 0;
}

/// "ToString": the text of a foreign value or of this module's value.
inline unsigned int ToString(unsigned int, IVariant** arguments, IVariant* result, IModuleInfo*,
                             IContext*) {
    AutoRefPtr<IUserDefinedType> object(arguments[0]->Interface_GetUserDefined());
    std::string text;
    if (auto* foreign = dynamic_cast<ForeignJson*>(object.Get())) text = foreign->fText;
    if (JSONObj::IsJSONObj(object.Get()))
        text = static_cast<JSONObj*>(object.Get())->Value()->GetAsString();
    result->Interface_SetString(text.data(), text.size());
    return 0;
}

inline void Context::ServeJsonFunctions() {
    fFunctions["JSON.CreateEmptyObject"] = &CreateEmptyObject;
    fFunctions["JSON.FromString"] = &FromString;
    fFunctions["ToString"] = &ToString;
}

/// A new document of this module, handled through the interface only.
inline AutoRefPtr<IJSON> Parse(const char* text) {
    AutoRefPtr<IJSON> json(new JSON::JSONWrapper());
    json->Interface_Parse(text);
    return json;
}

/// The compact text of a document through the interface.
inline std::string Text(const IJSON& json) {
    const unsigned long long needed = json.Interface_ToString("", nullptr, 0);
    if (needed == 0) return "<none>";
    std::string text(static_cast<size_t>(needed), '\0');
    json.Interface_ToString("", text.data(), text.size());
    text.resize(text.size() - 1);
    return text;
}

/// The document's status and message as "status:message".
inline std::string Outcome(const IJSON& json) {
    char message[512] = {};
    unsigned char copied = 0;
    json.Interface_GetErrorMessage(message, sizeof message, &copied);
    return std::to_string(json.Interface_GetErrorStatus()) + ":" + message;
}

} // namespace IjsonFakes
