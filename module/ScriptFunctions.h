// The script functions' workers: plain typed functions that the exported wrappers call through
// the forwarding glue. A worker receives only converted arguments (every JSON argument holds a
// JSONObj, whose value may still be absent) and reports its own failures to the call context;
// it returns its defined result in every case. Changing functions never touch the JSON they are
// given: they work on a deep copy and return it.
#pragma once

#include "json/JsonObject.h"
#include "module/ModuleSupport.h"

namespace JsonModule {

// ---- Parse, print and convert ----
std::string JsonToString(const JSONObjPtr& json);
std::string JsonToFormattedString(const JSONObjPtr& json, const std::string& indent);
JSONObjPtr StringToJson(const std::string& text, IContext* context);
JSONObjPtr StringToJsonIgnoreErrors(const std::string& text, IContext* context);
JSONObjPtr StringToJsonImpl(const std::string& text, bool ignoreErrors, IContext* context);
bool IsValid(const std::string& text, IContext* context);
JSONObjPtr MsgPackToJson(const DataRefPtr& data, IContext* context);
DataRefPtr JsonToMsgPack(const JSONObjPtr& json);

// ---- Node paths ----
JSONObjPtr FindNodePath(const JSONObjPtr& json, const std::string& path, IContext* context);
JSONObjPtr GetFromNodePath(const JSONObjPtr& json, const std::string& path, IContext* context);
JSONObjPtr GetFromNodeVector(const JSONObjPtr& json, const StringVectorPtr& path, IContext* context);
JSONObjPtr SetNodePathBoolean(const JSONObjPtr& json, const std::string& path, bool value, IContext* context);
JSONObjPtr SetNodePathNumber(const JSONObjPtr& json, const std::string& path, double value, IContext* context);
JSONObjPtr SetNodePathNumberToFormat(const JSONObjPtr& json, const std::string& path, double value,
                                     const std::string& format, IContext* context);
JSONObjPtr SetNodePathString(const JSONObjPtr& json, const std::string& path, const std::string& value,
                             IContext* context);
JSONObjPtr SetNodePathJson(const JSONObjPtr& json, const std::string& path, const JSONObjPtr& value,
                           IContext* context);
JSONObjPtr SetNodePathBooleanArray(const JSONObjPtr& json, const std::string& path,
                                   const BoolVectorPtr& value, IContext* context);
JSONObjPtr SetNodePathNumberArray(const JSONObjPtr& json, const std::string& path,
                                  const NumberVectorPtr& value, IContext* context);
JSONObjPtr SetNodePathStringArray(const JSONObjPtr& json, const std::string& path,
                                  const StringVectorPtr& value, IContext* context);
JSONObjPtr SetNodeVectorBoolean(const JSONObjPtr& json, const StringVectorPtr& path, bool value,
                                IContext* context);
JSONObjPtr SetNodeVectorNumber(const JSONObjPtr& json, const StringVectorPtr& path, double value,
                               IContext* context);
JSONObjPtr SetNodeVectorNumberToFormat(const JSONObjPtr& json, const StringVectorPtr& path, double value,
                                       const std::string& format, IContext* context);
JSONObjPtr SetNodeVectorString(const JSONObjPtr& json, const StringVectorPtr& path,
                               const std::string& value, IContext* context);
JSONObjPtr SetNodeVectorJson(const JSONObjPtr& json, const StringVectorPtr& path, const JSONObjPtr& value,
                             IContext* context);
JSONObjPtr SetNodeVectorBooleanArray(const JSONObjPtr& json, const StringVectorPtr& path,
                                     const BoolVectorPtr& value, IContext* context);
JSONObjPtr SetNodeVectorNumberArray(const JSONObjPtr& json, const StringVectorPtr& path,
                                    const NumberVectorPtr& value, IContext* context);
JSONObjPtr SetNodeVectorStringArray(const JSONObjPtr& json, const StringVectorPtr& path,
                                    const StringVectorPtr& value, IContext* context);
JSONObjPtr RemoveNodePath(const JSONObjPtr& json, const std::string& path, IContext* context);
JSONObjPtr RemoveNodeVector(const JSONObjPtr& json, const StringVectorPtr& path, IContext* context);

// ---- Members ----
JSONObjPtr ElementMatchingString(const JSONObjPtr& json, const std::string& key, const std::string& value,
                                 IContext* context);
JSONObjPtr ElementMatchingNumber(const JSONObjPtr& json, const std::string& key, double value,
                                 IContext* context);
JSONObjPtr SetBoolean(const JSONObjPtr& json, const std::string& key, bool value, IContext* context);
JSONObjPtr SetNumber(const JSONObjPtr& json, const std::string& key, double value, IContext* context);
JSONObjPtr SetNumberToFormat(const JSONObjPtr& json, const std::string& key, double value,
                             const std::string& format, IContext* context);
JSONObjPtr SetString(const JSONObjPtr& json, const std::string& key, const std::string& value,
                     IContext* context);
JSONObjPtr SetJson(const JSONObjPtr& json, const std::string& key, const JSONObjPtr& value, IContext* context);
JSONObjPtr SetBooleanArray(const JSONObjPtr& json, const std::string& key, const BoolVectorPtr& value,
                           IContext* context);
JSONObjPtr SetNumberArray(const JSONObjPtr& json, const std::string& key, const NumberVectorPtr& value,
                          IContext* context);
JSONObjPtr SetStringArray(const JSONObjPtr& json, const std::string& key, const StringVectorPtr& value,
                          IContext* context);
JSONObjPtr SetNull(const JSONObjPtr& json, const std::string& key, IContext* context);
JSONObjPtr RemoveMember(const JSONObjPtr& json, const std::string& key);
JSONObjPtr JsonObjectGet(const JSONObjPtr& json, const std::string& key, IContext* context);
bool GetAsBool(const JSONObjPtr& json, const std::string& key, IContext* context);
double GetAsNumber(const JSONObjPtr& json, const std::string& key, IContext* context);
std::string GetAsString(const JSONObjPtr& json, const std::string& key, IContext* context);
BoolVectorPtr GetAsBoolVector(const JSONObjPtr& json, const std::string& key, IContext* context);
NumberVectorPtr GetAsNumberVector(const JSONObjPtr& json, const std::string& key, IContext* context);
StringVectorPtr GetAsStringVector(const JSONObjPtr& json, const std::string& key, IContext* context);
bool HasMember(const JSONObjPtr& json, const std::string& key);
StringVectorPtr GetKeys(const JSONObjPtr& json, IContext* context);

// ---- Arrays ----
unsigned long JsonSize(const JSONObjPtr& json, IContext* context);
bool IsEmpty(const JSONObjPtr& json);
bool Empty(const JSONObjPtr& json);
JSONObjPtr JsonArrayAt(const JSONObjPtr& json, unsigned long index, IContext* context);
JSONObjPtr JsonArrayAppendBoolean(const JSONObjPtr& json, bool value, IContext* context);
JSONObjPtr JsonArrayAppendNumber(const JSONObjPtr& json, double value, IContext* context);
JSONObjPtr JsonArrayAppendString(const JSONObjPtr& json, const std::string& value, IContext* context);
JSONObjPtr JsonArrayAppendJSON(const JSONObjPtr& json, const JSONObjPtr& value, IContext* context);
JSONObjPtr JsonArrayRemove(const JSONObjPtr& json, unsigned long index, IContext* context);
JSONObjPtr JsonArrayInsertAtJSON(const JSONObjPtr& json, unsigned long long index, const JSONObjPtr& element,
                                 IContext* context);
JSONObjPtr JsonArrayReplaceAtJSON(const JSONObjPtr& json, unsigned long long index, const JSONObjPtr& element,
                                  IContext* context);
JSONObjPtr UnionArrays(const JSONObjPtr& first, const JSONObjPtr& second, IContext* context);
JSONObjPtr JSONArrayFromBooleanVector(const BoolVectorPtr& vector, IContext* context);
JSONObjPtr JSONArrayFromNumberVector(const NumberVectorPtr& vector, IContext* context);
JSONObjPtr JSONArrayFromStringVector(const StringVectorPtr& vector, IContext* context);

// ---- Type tests, conversions, creation ----
JSONObjPtr CreateEmptyArray(IContext* context);
JSONObjPtr CreateEmptyObject(IContext* context);
JSONObjPtr CreateNull(IContext* context);
bool AsBool(const JSONObjPtr& json);
double AsDouble(const JSONObjPtr& json);
long long AsInt64(const JSONObjPtr& json);
std::string AsString(const JSONObjPtr& json);
bool IsNull(const JSONObjPtr& json);
bool IsBool(const JSONObjPtr& json);
bool IsNumber(const JSONObjPtr& json);
bool IsDouble(const JSONObjPtr& json);
bool IsInt64(const JSONObjPtr& json);
bool IsString(const JSONObjPtr& json);
bool IsArray(const JSONObjPtr& json);
bool IsObject(const JSONObjPtr& json);
bool Equals(const JSONObjPtr& first, const JSONObjPtr& second);

// ---- Script arguments as JSON values (used by the member, array and node-path functions) ----
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(bool value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(double value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(unsigned long long value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(int value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(long long value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const std::string& value);
/// The argument's own value, shared; empty when it holds none.
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const JSONObjPtr& value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const BoolVectorPtr& value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const NumberVectorPtr& value);
JsonAutoRefPtr<JsonValue> CreateJSONObject_internal(const StringVectorPtr& value);

/// Inserts one member with the object's insert for the value's type (final flag false);
/// returns the insert's status.
int InsertValue_internal(JsonObject* object, const std::string& key, const std::string& value);
int InsertValue_internal(JsonObject* object, const std::string& key, double value);
int InsertValue_internal(JsonObject* object, const std::string& key, unsigned long long value);
int InsertValue_internal(JsonObject* object, const std::string& key, int value);
int InsertValue_internal(JsonObject* object, const std::string& key, long long value);
int InsertValue_internal(JsonObject* object, const std::string& key, bool value);
int InsertValue_internal(JsonObject* object, const std::string& key, const JSONObjPtr& value);
int InsertValue_internal(JsonObject* object, const std::string& key, const BoolVectorPtr& value);
int InsertValue_internal(JsonObject* object, const std::string& key, const NumberVectorPtr& value);
int InsertValue_internal(JsonObject* object, const std::string& key, const StringVectorPtr& value);

} // namespace JsonModule
