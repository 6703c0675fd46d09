// Member functions: JSON.Set, JSON.SetNull, JSON.Remove, JSON.HasMember, JSON.Get, the
// JSON.GetAs* readers, JSON.Keys and JSON.ElementMatching.
//
// Deliberate behaviours kept here:
// - Setting a member on null turns the document into an object.
// - The scalar setters report with severity 2 and return the unchanged copy; the vector setters
//   report with severity 1 and return no JSON; JSON.SetNull reports with severity 2 and returns
//   no JSON. Unknown number formats report "Error.JSON.NoObject".
// - "int32" and "uint32" are not narrowed to 32 bits.
// - JSON.Get of a missing member gives a JSON holding "", not null.
// - JSON.HasMember on an array asks whether an element's text equals the key.
// - JSON.ElementMatching with a number reads a member that is no number with std::stoi (an
//   integer conversion: " 3.7" reads as 3); members it cannot read are skipped.
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonScalar.h"
#include "module/NumberFormat.h"
#include "module/ScriptFunctions.h"

#include <stdexcept>

namespace JsonModule {

namespace {

/// The member `key` of an object or compiled object, without a reference; null otherwise.
JsonValue* FindMember(const JsonValue* value, const std::string& key) {
    if (!value) return nullptr;
    if (value->GetType() == JsonValue::eJsonObject) return static_cast<const JsonObject*>(value)->Find(key);
    if (value->GetType() == JsonValue::eJsonCompiledObject)
        return static_cast<const JsonCompiledObject*>(value)->Find(key);
    return nullptr;
}

/// The copy's object for setting a member: null becomes a new object; anything else but an
/// object gives null.
JsonObject* ObjectForSetting(const JSONObjPtr& copy) {
    const JsonAutoRefPtr<JsonValue>& value = copy->Value();
    if (value && value->GetType() == JsonValue::eJsonNull)
        copy->SetValue(JsonAutoRefPtr<JsonValue>(new JsonObject()));
    if (!copy->Value() || copy->Value()->GetType() != JsonValue::eJsonObject) return nullptr;
    return static_cast<JsonObject*>(copy->Value().Get());
}

template <class T>
JSONObjPtr SetValue(const JSONObjPtr& json, const std::string& key, const T& value, IContext* context) {
    JSONObjPtr copy = CopyOf(json);
    std::string message;
    if (!copy->Value()) {
        message = Texts::kCantSet;
    } else if (JsonObject* object = ObjectForSetting(copy)) {
        if (!InsertValue_internal(object, key, value)) {
            message = JsonValue::IsUTF8(key) ? Texts::CantSetInvalidValue(key) : Texts::kCantSetInvalidKey;
        }
    } else {
        message = Texts::kCantSetNotAnObject;
    }
    if (!message.empty()) Report(context, Virelo::eSeveritySevere, kErrorException, message);
    return copy;
}

template <class Vector>
JSONObjPtr SetArray(const JSONObjPtr& json, const std::string& key, const Vector& vector, IContext* context) {
    if (!vector) {
        Report(context, Virelo::eSeverityRecoverable, kErrorNoObject, kNoValueGiven);
        return nullptr;
    }
    JSONObjPtr copy = CopyOf(json);
    JsonObject* object = ObjectForSetting(copy);
    if (!object) {
        Report(context, Virelo::eSeverityRecoverable, kErrorException, Texts::kCantSetNotAnObject);
        return nullptr;
    }
    if (!object->InsertValue(key, CreateJSONObject_internal(vector), false)) {
        Report(context, Virelo::eSeverityRecoverable, kErrorException, Texts::kCantSetInvalidKey);
        return nullptr;
    }
    return copy;
}

template <class Vector, class Convert>
Virelo::AutoRefPtr<const Virelo::IVector<Vector>> MemberAsVector(const JSONObjPtr& json, const std::string& key,
                                                                 IContext* context, unsigned int elementType,
                                                                 Convert convert) {
    if (!context) return nullptr;
    Virelo::AutoRefPtr<Virelo::IVector<Vector>> vector(
        static_cast<Virelo::IVector<Vector>*>(context->Interface_CreateVector(elementType)));
    const JsonValue* member = FindMember(json->Value().Get(), key);
    if (vector && member && member->GetType() == JsonValue::eJsonArray) {
        const auto& array = static_cast<const JsonArray&>(*member);
        for (unsigned long i = 0; i < array.Size(); ++i) vector->Interface_PushBack(convert(array, i));
    }
    return Virelo::AutoRefPtr<const Virelo::IVector<Vector>>(vector.Detach());
}

/// The first array element that is an object with a member `key` accepted by `matches`.
template <class Matches>
JSONObjPtr ElementMatching(const JSONObjPtr& json, const std::string& key, IContext* context, Matches matches) {
    JSONObjPtr result = NewJSON(context, JsonValue::eJsonNull);
    const JsonAutoRefPtr<JsonValue>& value = json->Value();
    if (!value || value->GetType() != JsonValue::eJsonArray) return result;
    for (JsonValue* element : static_cast<const JsonArray&>(*value).Elements()) {
        if (!element) continue;
        const JsonValue* member = FindMember(element, key);
        if (member && matches(*member)) {
            result->SetValue(JsonAutoRefPtr<JsonValue>::Share(element));
            break;
        }
    }
    return result;
}

} // namespace

// MARK: - Setters

JSONObjPtr SetBoolean(const JSONObjPtr& json, const std::string& key, bool value, IContext* context) {
    return SetValue(json, key, value, context);
}

JSONObjPtr SetNumber(const JSONObjPtr& json, const std::string& key, double value, IContext* context) {
    return SetValue(json, key, value, context);
}

JSONObjPtr SetNumberToFormat(const JSONObjPtr& json, const std::string& key, double value,
                             const std::string& format, IContext* context) {
    return WithNumberFormat(value, format, context,
                            [&](const auto& number) { return SetValue(json, key, number, context); });
}

JSONObjPtr SetString(const JSONObjPtr& json, const std::string& key, const std::string& value, IContext* context) {
    return SetValue(json, key, value, context);
}

JSONObjPtr SetJson(const JSONObjPtr& json, const std::string& key, const JSONObjPtr& value, IContext* context) {
    return SetValue(json, key, value, context);
}

JSONObjPtr SetBooleanArray(const JSONObjPtr& json, const std::string& key, const BoolVectorPtr& value,
                           IContext* context) {
    return SetArray(json, key, value, context);
}

JSONObjPtr SetNumberArray(const JSONObjPtr& json, const std::string& key, const NumberVectorPtr& value,
                          IContext* context) {
    return SetArray(json, key, value, context);
}

JSONObjPtr SetStringArray(const JSONObjPtr& json, const std::string& key, const StringVectorPtr& value,
                          IContext* context) {
    return SetArray(json, key, value, context);
}

JSONObjPtr SetNull(const JSONObjPtr& json, const std::string& key, IContext* context) {
    JSONObjPtr copy = CopyOf(json);
    JsonObject* object = ObjectForSetting(copy); // no value counts as "not an object"
    if (!object) {
        Report(context, Virelo::eSeveritySevere, kErrorException, Texts::kCantSetNotAnObject);
        return nullptr;
    }
    if (!object->InsertNull(key, false)) {
        Report(context, Virelo::eSeveritySevere, kErrorException, Texts::kCantSetInvalidKey);
        return nullptr;
    }
    return copy;
}

JSONObjPtr RemoveMember(const JSONObjPtr& json, const std::string& key) {
    JSONObjPtr copy = CopyOf(json);
    const JsonAutoRefPtr<JsonValue>& value = copy->Value();
    if (value && value->GetType() == JsonValue::eJsonObject) {
        static_cast<JsonObject&>(*value).Erase(key);
    } else if (value && value->GetType() == JsonValue::eJsonCompiledObject) {
        auto& object = static_cast<JsonCompiledObject&>(*value);
        if (object.GetContext()) object.Erase(object.GetContext()->IndexOf(key));
    }
    return copy;
}

// MARK: - Readers

bool HasMember(const JSONObjPtr& json, const std::string& key) {
    const JsonAutoRefPtr<JsonValue>& value = json->Value();
    if (!value || key.empty()) return false;
    switch (value->GetType()) {
    case JsonValue::eJsonObject:
    case JsonValue::eJsonCompiledObject:
        return FindMember(value.Get(), key) != nullptr;
    case JsonValue::eJsonArray: {
        std::string text;
        for (const JsonValue* element : static_cast<const JsonArray&>(*value).Elements())
            if (element && element->GetAsString(text) && text == key) return true;
        return false;
    }
    default:
        return false;
    }
}

JSONObjPtr JsonObjectGet(const JSONObjPtr& json, const std::string& key, IContext* context) {
    JSONObjPtr result = NewJSON(context, JsonValue::eJsonString);
    if (JsonValue* member = FindMember(json->Value().Get(), key))
        result->SetValue(JsonAutoRefPtr<JsonValue>::Share(member));
    return result;
}

bool GetAsBool(const JSONObjPtr& json, const std::string& key, IContext*) {
    bool result = false;
    if (const JsonValue* member = FindMember(json->Value().Get(), key)) member->GetAsBool(result);
    return result;
}

double GetAsNumber(const JSONObjPtr& json, const std::string& key, IContext*) {
    double result = 0.0;
    if (const JsonValue* member = FindMember(json->Value().Get(), key)) member->GetAsReal(result);
    return result;
}

std::string GetAsString(const JSONObjPtr& json, const std::string& key, IContext*) {
    std::string result;
    if (const JsonValue* member = FindMember(json->Value().Get(), key)) member->GetAsString(result);
    return result;
}

BoolVectorPtr GetAsBoolVector(const JSONObjPtr& json, const std::string& key, IContext* context) {
    return MemberAsVector<bool>(json, key, context, Virelo::eTypeBoolean,
                                [](const JsonArray& array, unsigned long i) { return array.AtIndexAsBool(i); });
}

NumberVectorPtr GetAsNumberVector(const JSONObjPtr& json, const std::string& key, IContext* context) {
    return MemberAsVector<double>(json, key, context, Virelo::eTypeNumber,
                                  [](const JsonArray& array, unsigned long i) { return array.AtIndexAsReal(i); });
}

StringVectorPtr GetAsStringVector(const JSONObjPtr& json, const std::string& key, IContext* context) {
    return MemberAsVector<std::string>(
        json, key, context, Virelo::eTypeString,
        [](const JsonArray& array, unsigned long i) { return array.AtIndexAsString(i); });
}

StringVectorPtr GetKeys(const JSONObjPtr& json, IContext* context) {
    if (!context) return nullptr;
    Virelo::AutoRefPtr<Virelo::IVector<std::string>> keys(
        static_cast<Virelo::IVector<std::string>*>(context->Interface_CreateVector(Virelo::eTypeString)));
    const JsonAutoRefPtr<JsonValue>& value = json->Value();
    if (keys && value && value->GetType() == JsonValue::eJsonObject) {
        std::vector<const JsonObject::Member*> members;
        static_cast<const JsonObject&>(*value).OrderedMembers(members);
        for (const JsonObject::Member* member : members) keys->Interface_PushBack(std::string(member->Key()));
    }
    return StringVectorPtr(keys.Detach());
}

JSONObjPtr ElementMatchingString(const JSONObjPtr& json, const std::string& key, const std::string& value,
                                 IContext* context) {
    return ElementMatching(json, key, context, [&value](const JsonValue& member) {
        return member.GetAsString() == value;
    });
}

JSONObjPtr ElementMatchingNumber(const JSONObjPtr& json, const std::string& key, double value,
                                 IContext* context) {
    return ElementMatching(json, key, context, [value](const JsonValue& member) {
        double number = 0.0;
        if (member.GetAsReal(number)) return number == value;
        std::string text;
        member.GetAsString(text);
        try {
            // Deliberate: an integer conversion of the text.
            return static_cast<double>(std::stoi(text, nullptr, 10)) == value;
        } catch (const std::logic_error&) {
            return false; // neither a number nor a text that starts like one: skipped
        }
    });
}

} // namespace JsonModule
