// JSONObj.
#include "host/JSONObj.h"

#include "host/ijson/JSONWrapper.h"
#include "host/FixedTexts.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>
#include <vector>

namespace Virelo {

namespace {
JsonValue* InitialValue(JsonValue::EJsonValueType type) {
    switch (type) {
    case JsonValue::eJsonString: return new JsonString();
    case JsonValue::eJsonInteger: return new JsonInteger(0LL);
    case JsonValue::eJsonReal: return new JsonReal(0.0);
    case JsonValue::eJsonObject: return new JsonObject();
    case JsonValue::eJsonArray: return new JsonArray();
    case JsonValue::eJsonTrue: return new JsonTrue();
    case JsonValue::eJsonFalse: return new JsonFalse();
    default: return new JsonNull(); // compiled objects need a key table: null instead
    }
}

// The tree behind a document of this module's own IJSON implementation, shared; null for
// documents of other implementations.
JsonAutoRefPtr<JsonValue> DirectValue(const IJSON* json) {
    return JSON::JSONWrapper::ToVJson(json);
}
} // namespace

JSONObj::JSONObj(unsigned int typeId, IContext*)
    : CustomType(typeId, Texts::kTypeName), fValue(new JsonNull()) {}

JSONObj::JSONObj(unsigned int typeId, JsonValue::EJsonValueType type, IContext*)
    : CustomType(typeId, Texts::kTypeName), fValue(InitialValue(type)) {}

JSONObj::JSONObj(const JSONObj& other)
    : CustomType(other), fValue(other.fValue ? JsonValue::Copy(*other.fValue) : nullptr) {}

bool JSONObj::IsJSONObj(const IUserDefinedType* object) {
    return object && typeid(*object) == typeid(JSONObj);
}

bool JSONObj::Interface_LessThan(const IUserDefinedType* other) const {
    if (!IsJSONObj(other)) return false;
    const auto& otherValue = static_cast<const JSONObj*>(other)->fValue;
    const std::string mine = fValue ? fValue->GetAsString() : std::string();
    const std::string theirs = otherValue ? otherValue->GetAsString() : std::string();
    // Byte-wise over the shorter length; a prefix is less than the longer text.
    const size_t common = std::min(mine.size(), theirs.size());
    const int order = std::memcmp(mine.data(), theirs.data(), common);
    return order < 0 || (order == 0 && mine.size() < theirs.size());
}

bool JSONObj::Interface_Deserialize(const IJSON* json, IContext*) {
    if (!json) return false;
    std::string type;
    AutoRefPtr<IJSON> member;
    const IJSON* source = json;
    if (json->GetString(Texts::kWrappedTypeKey, type) && type == Texts::kWrappedTypeName) {
        member = AutoRefPtr<IJSON>(json->Interface_Get(Texts::kWrappedValueKey));
        source = member.Get();
    }
    if (JsonAutoRefPtr<JsonValue> direct = DirectValue(source)) {
        fValue = JsonValue::Copy(*direct);
        return true;
    }
    // The text way, for documents of other implementations: the whole given document's text,
    // asked into 1 KiB first and again with the size it needs.
    std::vector<char> buffer(1024);
    const unsigned long long needed = json->Interface_ToString("", buffer.data(), buffer.size());
    if (needed >= buffer.size()) {
        buffer.assign(static_cast<size_t>(needed), '\0');
        json->Interface_ToString("", buffer.data(), buffer.size());
    }
    const std::string text(buffer.data(), needed ? static_cast<size_t>(needed - 1) : 0);
    ParserContext ctx;
    JsonAutoRefPtr<JsonValue> parsed = JsonValue::ReadFromString(text, &ctx, nullptr);
    if (!parsed) return false; // parse errors are not reported here
    fValue = std::move(parsed);
    return true;
}

IJSON* JSONObj::Interface_Serialize(IContext*) const {
    return JSON::JSONWrapper::FromVJson(fValue).Detach();
}

unsigned long long JSONObj::Interface_ToBinaryData(void** target, unsigned long long format) const {
    if (!target || format != kJsonValueHandshake || !fValue) return 0;
    *target = const_cast<JsonAutoRefPtr<JsonValue>*>(&fValue);
    return sizeof(JsonAutoRefPtr<JsonValue>);
}

unsigned long long JSONObj::Interface_FromBinaryData(const void* data, unsigned long long size,
                                                     unsigned long long format) {
    if (size != sizeof(JsonAutoRefPtr<JsonValue>) || !data || format != kJsonValueHandshake)
        return 0;
    if (data == &fValue) return 1;
    // Deliberate: the two values now share one tree; no copy is made on this path.
    fValue = *static_cast<const JsonAutoRefPtr<JsonValue>*>(data);
    return 1;
}

} // namespace Virelo
