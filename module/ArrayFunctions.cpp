// Array functions: JSON.Size, JSON.IsEmpty/Empty, JSON.At, JSON.ArrayAppend, JSON.ArrayRemove,
// JSON.ArrayInsertAt, JSON.ArrayReplaceAt, JSON.UnionArrays and JSON.ArrayFrom*Vector.
//
// Deliberate behaviours kept here:
// - JSON.Size of anything but an object or array is an error ("No JSON object given!").
// - JSON.ArrayAppend does not turn null into an array (unlike JSON.Set, which makes objects).
// - JSON.UnionArrays concatenates: no duplicates are removed.
// - JSON.ArrayInsertAt never appends, and JSON.ArrayReplaceAt with a JSON holding no value
//   removes the last element or puts a null elsewhere: the array's own index rules.
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonScalar.h"
#include "module/ScriptFunctions.h"

namespace JsonModule {

namespace {

JsonArray* AsArray(const JsonAutoRefPtr<JsonValue>& value) {
    return value && value->GetType() == JsonValue::eJsonArray ? static_cast<JsonArray*>(value.Get()) : nullptr;
}

void Append(JsonArray& array, bool value) {
    array.AddBool(value);
}
void Append(JsonArray& array, double value) {
    array.AddReal(value);
}
void Append(JsonArray& array, const std::string& value) {
    array.AddString(value, nullptr, false); // text that is not UTF-8 is not appended
}
void Append(JsonArray& array, const JSONObjPtr& value) {
    array.AddValue(value->Value()); // the argument's own value, shared
}

template <class T>
JSONObjPtr JsonArrayAppend(const JSONObjPtr& json, const T& value, IContext* context) {
    JSONObjPtr copy = CopyOf(json);
    if (JsonArray* array = AsArray(copy->Value())) {
        Append(*array, value);
    } else {
        Report(context, Virelo::eSeverityRecoverable, kErrorException,
               Texts::kPushBackNotAnArray);
    }
    return copy;
}

/// Insert or replace `element`'s value at `index` of a copy; `change` is the array operation.
template <class Change>
JSONObjPtr ChangeAt(const JSONObjPtr& json, unsigned long long index, const JSONObjPtr& element,
                    IContext* context, const char* what, Change change) {
    JSONObjPtr copy = CopyOf(json);
    if (JsonArray* array = AsArray(copy->Value())) {
        change(*array, static_cast<unsigned long>(index), element->Value());
    } else {
        Report(context, Virelo::eSeverityRecoverable, kErrorException,
               std::string("Couldn't ") + what + " element at position " + std::to_string(index) + ", " +
                   Texts::kNotAnArray);
    }
    return copy;
}

} // namespace

unsigned long JsonSize(const JSONObjPtr& json, IContext* context) {
    const JsonAutoRefPtr<JsonValue>& value = json->Value();
    if (value) {
        switch (value->GetType()) {
        case JsonValue::eJsonObject: return static_cast<const JsonObject&>(*value).Size();
        case JsonValue::eJsonCompiledObject: return static_cast<const JsonCompiledObject&>(*value).GetSetCount();
        case JsonValue::eJsonArray: return static_cast<const JsonArray&>(*value).Size();
        default: break;
        }
    }
    Report(context, Virelo::eSeverityRecoverable, kErrorNoObject, kReason_NoJSONObjectGiven);
    return 0;
}

bool IsEmpty(const JSONObjPtr& json) {
    const JsonAutoRefPtr<JsonValue>& value = json->Value();
    if (!value) return true;
    switch (value->GetType()) {
    case JsonValue::eJsonString: return static_cast<const JsonString&>(*value).Get().empty();
    case JsonValue::eJsonObject: return static_cast<const JsonObject&>(*value).Empty();
    case JsonValue::eJsonCompiledObject: return static_cast<const JsonCompiledObject&>(*value).GetSetCount() == 0;
    case JsonValue::eJsonArray: return static_cast<const JsonArray&>(*value).Empty();
    case JsonValue::eJsonNull: return true;
    default: return false; // numbers and booleans
    }
}

bool Empty(const JSONObjPtr& json) {
    return IsEmpty(json);
}

JSONObjPtr JsonArrayAt(const JSONObjPtr& json, unsigned long index, IContext* context) {
    JSONObjPtr result = NewJSON(context, JsonValue::eJsonNull);
    const JsonArray* array = AsArray(json->Value());
    if (!array) return result;
    if (index >= array->Size()) {
        Report(context, Virelo::eSeveritySevere, kErrorException, Texts::kIndexOutOfBounds);
    } else if (JsonAutoRefPtr<JsonValue> element = array->AtIndex(index)) {
        result->SetValue(std::move(element)); // shared with the array
    } else {
        Report(context, Virelo::eSeveritySevere, kErrorException, kAccessingElement);
    }
    return result;
}

JSONObjPtr JsonArrayAppendBoolean(const JSONObjPtr& json, bool value, IContext* context) {
    return JsonArrayAppend(json, value, context);
}

JSONObjPtr JsonArrayAppendNumber(const JSONObjPtr& json, double value, IContext* context) {
    return JsonArrayAppend(json, value, context);
}

JSONObjPtr JsonArrayAppendString(const JSONObjPtr& json, const std::string& value, IContext* context) {
    return JsonArrayAppend(json, value, context);
}

JSONObjPtr JsonArrayAppendJSON(const JSONObjPtr& json, const JSONObjPtr& value, IContext* context) {
    return JsonArrayAppend(json, value, context);
}

JSONObjPtr JsonArrayRemove(const JSONObjPtr& json, unsigned long index, IContext* context) {
    JSONObjPtr copy = CopyOf(json);
    std::string message = Texts::kRemoveElementAt + std::to_string(index);
    if (JsonArray* array = AsArray(copy->Value())) {
        if (array->Erase(index, 1) == 1) return copy;
    } else {
        message += std::string(", ") + Texts::kNotAnArray;
    }
    Report(context, Virelo::eSeverityRecoverable, kErrorException, message);
    return copy;
}

JSONObjPtr JsonArrayInsertAtJSON(const JSONObjPtr& json, unsigned long long index, const JSONObjPtr& element,
                                 IContext* context) {
    return ChangeAt(json, index, element, context, "insert",
                    [](JsonArray& array, unsigned long at, const JsonAutoRefPtr<JsonValue>& value) {
                        array.InsertValueAtIndex(at, value);
                    });
}

JSONObjPtr JsonArrayReplaceAtJSON(const JSONObjPtr& json, unsigned long long index, const JSONObjPtr& element,
                                  IContext* context) {
    return ChangeAt(json, index, element, context, "replace",
                    [](JsonArray& array, unsigned long at, const JsonAutoRefPtr<JsonValue>& value) {
                        array.SetValueAtIndex(at, value);
                    });
}

JSONObjPtr UnionArrays(const JSONObjPtr& first, const JSONObjPtr& second, IContext* context) {
    const JsonArray* other = AsArray(second->Value());
    if (!AsArray(first->Value()) || !other) {
        Report(context, Virelo::eSeveritySevere, kErrorException, kNotAJsonArray);
        return nullptr; // no copy was made yet
    }
    JSONObjPtr copy = CopyOf(first);
    JsonArray* array = AsArray(copy->Value());
    for (JsonValue* element : other->Elements()) array->AddValue(JsonAutoRefPtr<JsonValue>::Share(element));
    return copy;
}

JSONObjPtr JSONArrayFromBooleanVector(const BoolVectorPtr& vector, IContext* context) {
    return NewJSON(context, CreateJSONObject_internal(vector));
}

JSONObjPtr JSONArrayFromNumberVector(const NumberVectorPtr& vector, IContext* context) {
    return NewJSON(context, CreateJSONObject_internal(vector));
}

JSONObjPtr JSONArrayFromStringVector(const StringVectorPtr& vector, IContext* context) {
    return NewJSON(context, CreateJSONObject_internal(vector));
}

} // namespace JsonModule
