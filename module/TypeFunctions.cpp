// Type tests, scalar conversions, comparison and creation of JSON values; and the conversion of
// script arguments into JSON values used by the changing functions.
//
// Deliberate behaviours kept here:
// - JSON.IsObject is false for a compiled object.
// - JSON.Equals is false when either side holds no value, even when neither does.
// - JSON.AsInt64 hands the integer to the host as a number (beyond 2^53 it loses precision).
#include "json/JsonArray.h"
#include "json/JsonEquality.h"
#include "json/JsonScalar.h"
#include "module/ScriptFunctions.h"

#include <cstring>

namespace JsonModule {

namespace {
bool HoldsType(const JSONObjPtr& json, JsonValue::EJsonValueType type) {
    return json->Value() && json->Value()->GetType() == type;
}
} // namespace

// MARK: - Creation

JSONObjPtr CreateEmptyArray(IContext* context) {
    return NewJSON(context, JsonValue::eJsonArray);
}

JSONObjPtr CreateEmptyObject(IContext* context) {
    return NewJSON(context, JsonValue::eJsonObject);
}

JSONObjPtr CreateNull(IContext* context) {
    return NewJSON(context, JsonValue::eJsonNull);
}

// MARK: - Conversions (a JSON without value gives false, 0 or "")

bool AsBool(const JSONObjPtr& json) {
    return json->Value() ? json->Value()->GetAsBool() : false;
}

double AsDouble(const JSONObjPtr& json) {
    return json->Value() ? json->Value()->GetAsReal() : 0.0;
}

long long AsInt64(const JSONObjPtr& json) {
    long long value = 0;
    if (json->Value()) json->Value()->GetAsInteger(value);
    return value;
}

std::string AsString(const JSONObjPtr& json) {
    std::string text;
    if (json->Value()) json->Value()->GetAsString(text);
    return text;
}

// MARK: - Type tests (a JSON without value is of no type)

bool IsNull(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonNull);
}

bool IsBool(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonTrue) || HoldsType(json, JsonValue::eJsonFalse);
}

bool IsNumber(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonInteger) || HoldsType(json, JsonValue::eJsonReal);
}

bool IsDouble(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonReal);
}

bool IsInt64(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonInteger);
}

bool IsString(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonString);
}

bool IsArray(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonArray);
}

bool IsObject(const JSONObjPtr& json) {
    return HoldsType(json, JsonValue::eJsonObject);
}

bool Equals(const JSONObjPtr& first, const JSONObjPtr& second) {
    return first->Value() && second->Value() && *first->Value() == *second->Value();
}

// MARK: - Script arguments as JSON values

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(bool value) {
    return JsonAutoRefPtr<JsonValue>(value ? static_cast<JsonValue*>(new JsonTrue()) : new JsonFalse());
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(double value) {
    return JsonAutoRefPtr<JsonValue>(new JsonReal(value));
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(unsigned long long value) {
    return JsonAutoRefPtr<JsonValue>(new JsonInteger(value, true));
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(int value) {
    return JsonAutoRefPtr<JsonValue>(new JsonInteger(static_cast<long long>(value)));
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(long long value) {
    return JsonAutoRefPtr<JsonValue>(new JsonInteger(value));
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const std::string& value) {
    bool trusted = true; // no UTF-8 check here
    return JsonAutoRefPtr<JsonValue>(new JsonString(value, &trusted, nullptr));
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const JSONObjPtr& value) {
    return value ? value->Value() : nullptr;
}

namespace {
// A new array with one element per vector element, in order; each element variant is released
// after use. Strings are read as C strings.
template <class T, class Add>
JsonAutoRefPtr<JsonValue> ArrayFromVector(const Virelo::AutoRefPtr<const Virelo::IVector<T>>& vector, Add add) {
    JsonAutoRefPtr<JsonArray> array(new JsonArray());
    if (!vector) return array;
    const unsigned long long size = vector->Interface_Size();
    for (unsigned long long i = 0; i < size; ++i) {
        Virelo::AutoRefPtr<Virelo::IVariant> element(vector->Interface_At(i));
        if (element) add(*array, *element);
    }
    return array;
}
} // namespace

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const BoolVectorPtr& value) {
    return ArrayFromVector(value, [](JsonArray& array, Virelo::IVariant& element) {
        array.AddBool(element.Interface_GetBoolean() != 0);
    });
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const NumberVectorPtr& value) {
    return ArrayFromVector(value, [](JsonArray& array, Virelo::IVariant& element) {
        array.AddReal(element.Interface_GetNumber());
    });
}

JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const StringVectorPtr& value) {
    return ArrayFromVector(value, [](JsonArray& array, Virelo::IVariant& element) {
        // One string per element: text that is not UTF-8 becomes "" (indexes do not shift).
        const char* text = element.Interface_GetStringData();
        array.AddValueInternal(new JsonString(std::string(text ? text : ""), nullptr, nullptr));
    });
}

int InsertValue_internal(JsonObject* object, const std::string& key, const std::string& value) {
    return object->InsertString(key, value, false, false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, double value) {
    return object->InsertReal(key, value, false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, unsigned long long value) {
    return object->InsertInteger(key, value, false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, int value) {
    return object->InsertInteger(key, static_cast<long long>(value), false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, long long value) {
    return object->InsertInteger(key, value, false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, bool value) {
    return object->InsertBool(key, value, false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, const JSONObjPtr& value) {
    return object->InsertValue(key, CreateJSONObject_internal(value), false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, const BoolVectorPtr& value) {
    return object->InsertValue(key, CreateJSONObject_internal(value), false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, const NumberVectorPtr& value) {
    return object->InsertValue(key, CreateJSONObject_internal(value), false);
}
int InsertValue_internal(JsonObject* object, const std::string& key, const StringVectorPtr& value) {
    return object->InsertValue(key, CreateJSONObject_internal(value), false);
}

} // namespace JsonModule
