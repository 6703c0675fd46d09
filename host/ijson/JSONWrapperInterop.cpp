// JSONWrapper, construction and interop: constructors, factories, text and MessagePack, and
// the conversions between the value tree, the script type "JSON" and IJSON.
//
// Deliberate behaviours kept here:
// - Conversions share the tree, never copy it, wherever both sides are this module's: a
//   JSONWrapper is recognised by its dynamic type, a script "JSON" value by the 11100
//   binary-data handshake. Anything else travels as compact text through the imported host functions,
//   after a warning that is logged at most once per process.
// - ToJSONObj always creates its result through the imported "JSON.CreateEmptyObject", and
//   gives that empty object back for a document of another IJSON implementation.
// - FromMsgPack leaves the root empty after a failed decode (see the header).
// None of the static members lets an exception out; they give their empty result instead.
#include "host/ijson/ImportedFunctions.h"
#include "host/ijson/JSONWrapper.h"
#include "host/ijson/WrapperSupport.h"

#include "host/Data.h"
#include "host/JSONObj.h"

#include <atomic>

namespace Virelo::JSON {

using namespace Support;

namespace {

/// The size of the handshake's data: the address of a root reference.
constexpr unsigned long long kHandshakeSize = 8;
static_assert(sizeof(JsonAutoRefPtr<JsonValue>) == kHandshakeSize);

/// Runs a static operation; `failure` on any exception.
template <class R, class Body> R NoThrow(R failure, Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return failure;
    }
}

/// The tree of a script "JSON" value of this module (the 11100 handshake), shared; null when
/// the value belongs to another implementation.
JsonAutoRefPtr<JsonValue> HandshakeRoot(IUserDefinedType& object) {
    void* address = nullptr;
    if (object.Interface_ToBinaryData(&address, kJsonValueHandshake) != kHandshakeSize || !address)
        return nullptr;
    return *static_cast<const JsonAutoRefPtr<JsonValue>*>(address);
}

} // namespace

// MARK: - Construction

JSONWrapper::JSONWrapper(EJsonStartType start) : fData(std::make_shared<JSONData>(start)) {}

JSONWrapper::JSONWrapper(const std::string& text) : fData(std::make_shared<JSONData>()) {
    Interface_Parse(text.c_str());
}

JSONWrapper::JSONWrapper(const JsonAutoRefPtr<JsonValue>& value)
    : fData(std::make_shared<JSONData>(value)) {}

JSONWrapper::JSONWrapper(JsonAutoRefPtr<JsonValue>&& value)
    : fData(std::make_shared<JSONData>(std::move(value))) {}

JSONWrapper::JSONWrapper(const JSONWrapper& other)
    : InterfaceImpl<IJSON>(other), fData(std::make_shared<JSONData>(other.fData.get())) {}

JSONWrapper& JSONWrapper::operator=(const JSONWrapper& other) {
    if (this != &other) fData = other.fData;
    return *this;
}

// MARK: - Factories

AutoRefPtr<JSONWrapper> JSONWrapper::Create() {
    return NoThrow(AutoRefPtr<JSONWrapper>(),
                   [] { return AutoRefPtr<JSONWrapper>(new JSONWrapper(EJsonStartType::Object)); });
}

AutoRefPtr<JSONWrapper> JSONWrapper::CreateEmptyArray() {
    return NoThrow(AutoRefPtr<JSONWrapper>(),
                   [] { return AutoRefPtr<JSONWrapper>(new JSONWrapper(EJsonStartType::Array)); });
}

AutoRefPtr<JSONWrapper> JSONWrapper::CreateNull() {
    return NoThrow(AutoRefPtr<JSONWrapper>(),
                   [] { return AutoRefPtr<JSONWrapper>(new JSONWrapper(EJsonStartType::Null)); });
}

AutoRefPtr<JSONWrapper> JSONWrapper::Create(const std::string& text, bool keepOrder) {
    return NoThrow(AutoRefPtr<JSONWrapper>(), [&] {
        if (text.empty()) return AutoRefPtr<JSONWrapper>();
        AutoRefPtr<JSONWrapper> json(new JSONWrapper(EJsonStartType::Null));
        return json->ParseDirect(text, keepOrder) ? json : AutoRefPtr<JSONWrapper>();
    });
}

AutoRefPtr<JSONWrapper> JSONWrapper::Create(const char* text) {
    return NoThrow(AutoRefPtr<JSONWrapper>(), [&] {
        return text ? Create(std::string(text), true) : AutoRefPtr<JSONWrapper>();
    });
}

AutoRefPtr<JSONWrapper> JSONWrapper::CloneJSON(const AutoRefPtr<IJSON>& json) {
    return CloneJSON(json.Get());
}

AutoRefPtr<JSONWrapper> JSONWrapper::CloneJSON(const IJSON* json) {
    return NoThrow(AutoRefPtr<JSONWrapper>(), [&] {
        const JSONWrapper* own = Own(json);
        return own ? AutoRefPtr<JSONWrapper>(new JSONWrapper(*own)) : AutoRefPtr<JSONWrapper>();
    });
}

AutoRefPtr<JSONWrapper> JSONWrapper::FromVJson(const JsonAutoRefPtr<JsonValue>& value) {
    return NoThrow(AutoRefPtr<JSONWrapper>(),
                   [&] { return AutoRefPtr<JSONWrapper>(new JSONWrapper(value)); });
}

// MARK: - Text and MessagePack

std::string JSONWrapper::ToJSONString(const AutoRefPtr<JSONWrapper>& json, const char* format) {
    std::string text;
    ToJSONString(json, text, format);
    return text;
}

std::string JSONWrapper::ToJSONString(const JSONWrapper& json, const char* format) {
    std::string text;
    ToJSONString(json, text, format);
    return text;
}

void JSONWrapper::ToJSONString(const AutoRefPtr<JSONWrapper>& json, std::string& out,
                               const char* format) {
    if (json) ToJSONString(*json, out, format);
}

void JSONWrapper::ToJSONString(const JSONWrapper& json, std::string& out, const char* format) {
    Guarded(json.fData.get(), false, [&](JSONData& data) {
        data.ToString(out, format);
        return true;
    });
}

AutoRefPtr<IDataRef> JSONWrapper::ToMsgPack(const JSONWrapper& json) {
    return NoThrow(AutoRefPtr<IDataRef>(), [&] {
        const JsonAutoRefPtr<JsonValue> root = json.Root();
        std::string bytes;
        if (!root || !root->WriteToMsgPack(bytes)) return AutoRefPtr<IDataRef>();
        return AutoRefPtr<IDataRef>(new Virelo::Data(std::move(bytes)));
    });
}

bool JSONWrapper::FromMsgPack(const AutoRefPtr<IDataRef>& data) {
    return Guarded(fData.get(), false, [&](JSONData& document) {
        const auto failed = [&document] {
            document.SetError("reading from MsgPack failed");
            return false;
        };
        if (!data) return failed();
        const unsigned long long size = data->Interface_GetSize();
        std::string bytes;
        if (const char* direct = data->Interface_GetData()) {
            bytes.assign(direct, static_cast<size_t>(size));
        } else {
            bytes.assign(static_cast<size_t>(size), '\0');
            if (data->Interface_Read(bytes.data(), size, 0) < size) return failed();
        }
        // Deliberate: the result replaces the root even when it is empty.
        document.fValue = JsonValue::ReadFromMsgPack(bytes, nullptr, nullptr);
        return document.fValue ? true : failed();
    });
}

// MARK: - Conversions

JsonAutoRefPtr<JsonValue> JSONWrapper::ToVJson(const IJSON* json) {
    const JSONWrapper* own = Own(json);
    return own ? own->Root() : nullptr;
}

JsonAutoRefPtr<JsonValue> JSONWrapper::ToVJson(const AutoRefPtr<IJSON>& json) {
    return ToVJson(json.Get());
}

JsonAutoRefPtr<JsonValue> JSONWrapper::JSONObjToVJson(const AutoRefPtr<IUserDefinedType>& object,
                                                      IContext* context) {
    return NoThrow(JsonAutoRefPtr<JsonValue>(), [&]() -> JsonAutoRefPtr<JsonValue> {
        if (!object) return nullptr;
        if (JsonAutoRefPtr<JsonValue> root = HandshakeRoot(*object)) return root;
        ShowEffectivityWarning(context);
        return JsonValue::ReadFromString(JSON_ToString(object, context), nullptr, nullptr);
    });
}

AutoRefPtr<JSONWrapper> JSONWrapper::FromJSONObj(const AutoRefPtr<IUserDefinedType>& object,
                                                 IContext* context) {
    return NoThrow(AutoRefPtr<JSONWrapper>(), [&] {
        if (!object) return AutoRefPtr<JSONWrapper>();
        if (JsonAutoRefPtr<JsonValue> root = HandshakeRoot(*object))
            return AutoRefPtr<JSONWrapper>(new JSONWrapper(std::move(root)));
        ShowEffectivityWarning(context);
        return Create(JSON_ToString(object, context), true);
    });
}

AutoRefPtr<IUserDefinedType> JSONWrapper::ToJSONObj(const AutoRefPtr<const IJSON>& json,
                                                    IContext* context) {
    return NoThrow(AutoRefPtr<IUserDefinedType>(), [&] {
        AutoRefPtr<IUserDefinedType> result = JSON_CreateEmptyObject(context);
        if (!result) return result;
        const JSONWrapper* own = Own(json.Get());
        JsonAutoRefPtr<JsonValue> root = own ? own->Root() : nullptr;
        if (!root) return result; // deliberately the empty object for other implementations
        if (result->Interface_FromBinaryData(&root, kHandshakeSize, kJsonValueHandshake))
            return result;
        ShowEffectivityWarning(context);
        std::string text;
        if (!own->CompactTextThroughInterface(text)) return result;
        return JSON_FromString(text, context);
    });
}

AutoRefPtr<IUserDefinedType> JSONWrapper::ToJSONObj(const IJSON* json, IContext* context) {
    return ToJSONObj(AutoRefPtr<const IJSON>::Share(json), context);
}

AutoRefPtr<IUserDefinedType> JSONWrapper::ToJSONObj(const JSONWrapper* json, IContext* context) {
    return ToJSONObj(static_cast<const IJSON*>(json), context);
}

AutoRefPtr<IUserDefinedType> JSONWrapper::ToJSONObj(const JsonAutoRefPtr<JsonValue>& value,
                                                    IContext* context) {
    const AutoRefPtr<JSONWrapper> json = FromVJson(value);
    return ToJSONObj(json.Get(), context);
}

void JSONWrapper::ShowEffectivityWarning(IContext* context) {
    static std::atomic<bool> sShowError{false};
    if (!context || sShowError.exchange(true)) return;
    context->ErrorLog("JSONWrapper",
                      "JSON module implementation is not compatible with JSONWrapper "
                      "implementation, leading to performance inefficiencies.");
}

} // namespace Virelo::JSON
