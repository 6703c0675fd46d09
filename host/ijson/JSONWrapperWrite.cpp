// JSONWrapper, changing operations: member setters, array appends and replacement, removal,
// the three iteration forms and the serialized form.
//
// Deliberate behaviours kept here (host code and tests depend on each):
// - A setter on a null document first turns it into an empty object; a compiled object root
//   is refused like any other non-object. Keys are top-level member names, never paths.
// - SetJSON and PushBackJSON insert a deep copy of the other document's root; ReplaceIndex puts
//   the other root itself into the array (shared), except that a document replaced into itself
//   is copied, since sharing would make the tree contain itself.
// - RemoveIndex and RemoveKey hand the removed node back as a new document, which keeps it
//   alive after the removal.
// - Iteration neither clears nor sets the error state. The error-buffer form collects at most
//   20 texts; the context form collects at most 20 entries in 10240 bytes and reports them
//   once, as "Error.Virelo.FunctionError" from "Virelo" with severity 2.
// - The serialized form is an 8-byte length in host byte order followed by the compact text,
//   made and read through this object's own Interface_ToString and Interface_Parse: the
//   serialized form is the text form (so a text ends at its first NUL byte).
#include "host/ijson/JSONWrapper.h"
#include "host/ijson/WrapperSupport.h"

#include "host/StringHelpers.h"
#include "host/FixedTexts.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace Virelo::JSON {

using namespace Support;

namespace {

constexpr unsigned char kNo = 0;
constexpr unsigned char kYes = 1;

/// The common body of the member setters. `insert` stores the value into the root object and
/// reports whether the object took it; `refused` gives the message for a refusal.
template <class Insert, class Refused>
unsigned char SetMember(JSONData& data, const char* key, Insert&& insert, Refused&& refused) {
    if (!key || !data.fValue) {
        data.SetError(Texts::kCantSet);
        return kNo;
    }
    // Setting a member on a null document makes it an object.
    if (data.fValue->GetType() == JsonValue::eJsonNull)
        data.fValue = JsonAutoRefPtr<JsonValue>(new JsonObject());
    if (data.fValue->GetType() != JsonValue::eJsonObject) {
        data.SetError(Texts::kCantSetNotAnObject);
        return kNo;
    }
    if (!insert(static_cast<JsonObject&>(*data.fValue), std::string(key))) {
        data.SetError(refused());
        return kNo;
    }
    return kYes;
}

std::string KeyRefused() {
    return Texts::kCantSetInvalidKey;
}

// The scalar inserts, one per kind of value the setters take.
bool Insert(JsonObject& object, std::string&& key, bool value) {
    return object.InsertBool(std::move(key), value, false);
}
bool Insert(JsonObject& object, std::string&& key, double value) {
    return object.InsertReal(std::move(key), value, false);
}
bool Insert(JsonObject& object, std::string&& key, long long value) {
    return object.InsertInteger(std::move(key), value, false);
}
bool Insert(JsonObject& object, std::string&& key, unsigned long long value) {
    return object.InsertInteger(std::move(key), value, false);
}

/// The one frame of the scalar member setters (SetBool to SetUInt64).
template <class T> unsigned char SetScalar(JSONData* document, const char* key, T value) {
    return Guarded(document, kNo, [&](JSONData& data) {
        return SetMember(
            data, key,
            [&](JsonObject& object, std::string&& name) { return Insert(object, std::move(name), value); },
            KeyRefused);
    });
}

/// The common body of the scalar appends.
template <class Append> unsigned char PushBack(JSONData& data, Append&& append) {
    if (!data.fValue) return kNo;
    if (data.fValue->GetType() != JsonValue::eJsonArray) {
        data.SetWarning(Texts::kPushBackNotAnArray);
        return kNo;
    }
    return append(static_cast<JsonArray&>(*data.fValue)) ? kYes : kNo;
}

/// One child of the root as the iteration hands it out.
struct Child {
    std::string fName;
    JsonAutoRefPtr<JsonValue> fNode;
};

/// The root's children in iteration order, taken before the first callback; false (and no
/// children) when the root is no container.
bool Children(const JsonAutoRefPtr<JsonValue>& root, std::vector<Child>& out) {
    if (!root) return false;
    switch (root->GetType()) {
    case JsonValue::eJsonArray: {
        const auto& elements = static_cast<const JsonArray&>(*root).Elements();
        out.reserve(elements.size());
        for (size_t i = 0; i < elements.size(); ++i)
            out.push_back({std::to_string(i), JsonAutoRefPtr<JsonValue>::Share(elements[i])});
        return true;
    }
    case JsonValue::eJsonObject: {
        // The map's own order, deliberately not the insertion order of ordered objects.
        const auto& members = static_cast<const JsonObject&>(*root).Members();
        out.reserve(members.Size());
        for (const JsonObject::Member& member : members)
            out.push_back({std::string(member.Key()), JsonAutoRefPtr<JsonValue>::Share(member.fValue)});
        return true;
    }
    case JsonValue::eJsonCompiledObject: {
        const auto& compiled = static_cast<const JsonCompiledObject&>(*root);
        const JsonCompiledObjectContext* keys = compiled.GetContext();
        const auto& slots = compiled.Slots();
        for (size_t i = 0; i < slots.size(); ++i) {
            if (!slots[i]) continue;
            std::string name = keys && i < keys->KeyCount() ? keys->Key(i) : std::string();
            out.push_back({std::move(name), JsonAutoRefPtr<JsonValue>::Share(slots[i])});
        }
        return true;
    }
    default:
        return false;
    }
}

constexpr unsigned int kMaxCollectedErrors = 20;
constexpr size_t kCollectedErrorsSize = 10240;
constexpr size_t kCallbackErrorSize = 1024;

} // namespace

// MARK: - Member setters

unsigned char JSONWrapper::Interface_SetBool(const char* key, unsigned char value) {
    return SetScalar(fData.get(), key, value != 0);
}

unsigned char JSONWrapper::Interface_SetDouble(const char* key, double value) {
    return SetScalar(fData.get(), key, value);
}

unsigned char JSONWrapper::Interface_SetInt(const char* key, int value) {
    return SetScalar(fData.get(), key, static_cast<long long>(value));
}

unsigned char JSONWrapper::Interface_SetUInt(const char* key, unsigned int value) {
    return SetScalar(fData.get(), key, static_cast<long long>(value));
}

unsigned char JSONWrapper::Interface_SetInt64(const char* key, long long value) {
    return SetScalar(fData.get(), key, value);
}

unsigned char JSONWrapper::Interface_SetUInt64(const char* key, unsigned long long value) {
    return SetScalar(fData.get(), key, value);
}

unsigned char JSONWrapper::Interface_SetString(const char* key, const char* value) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        if (!value) return kNo;
        return SetMember(
            data, key,
            [&](JsonObject& o, std::string&& k) {
                return o.InsertString(std::move(k), std::string(value), false, false);
            },
            [&] {
                const std::string name(key);
                return JsonValue::IsUTF8(name) ? Texts::CantSetInvalidValue(name)
                                               : std::string(Texts::kCantSetInvalidKeyOrValue);
            });
    });
}

unsigned char JSONWrapper::Interface_SetJSON(const char* key, const IJSON* value) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        if (!value) { // a null document is treated like a null key
            data.SetError(Texts::kCantSet);
            return kNo;
        }
        const JSONWrapper* other = Own(value);
        const JsonAutoRefPtr<JsonValue> otherRoot = other ? other->Root() : nullptr;
        if (!otherRoot) return kNo; // another implementation, or no document: no message
        return SetMember(
            data, key,
            [&](JsonObject& o, std::string&& k) {
                return o.InsertValue(std::move(k), *otherRoot, false);
            },
            KeyRefused);
    });
}

unsigned char JSONWrapper::Interface_SetNull(const char* key) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        return SetMember(
            data, key,
            [&](JsonObject& o, std::string&& k) { return o.InsertNull(std::move(k), false); },
            KeyRefused);
    });
}

// MARK: - Array changes

unsigned char JSONWrapper::Interface_PushBackBool(unsigned char value) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        return PushBack(data, [&](JsonArray& array) {
            array.AddBool(value != 0);
            return true;
        });
    });
}

unsigned char JSONWrapper::Interface_PushBackString(const char* value) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        return PushBack(data, [&](JsonArray& array) {
            if (!value) {
                data.SetWarning(Texts::kPushBackInvalidValue);
                return false;
            }
            // Text that is not valid UTF-8 is stored as the empty string; not reported.
            array.AddString(std::string(value), nullptr, false);
            return true;
        });
    });
}

unsigned char JSONWrapper::Interface_PushBackDouble(double value) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        return PushBack(data, [&](JsonArray& array) {
            array.AddReal(value);
            return true;
        });
    });
}

unsigned char JSONWrapper::Interface_PushBackJSON(const IJSON* value) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        const JSONWrapper* other = Own(value);
        if (!other || !data.fValue) return kNo;
        if (data.fValue->GetType() != JsonValue::eJsonArray) {
            data.SetWarning(Texts::kNotAnArray);
            return kNo;
        }
        const JsonAutoRefPtr<JsonValue> otherRoot = other->Root();
        if (!otherRoot) return kNo;
        static_cast<JsonArray&>(*data.fValue).AddValue(*otherRoot);
        return kYes;
    });
}

unsigned char JSONWrapper::Interface_ReplaceIndex(unsigned long long index, const IJSON* value) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        const JSONWrapper* other = Own(value);
        if (!other || !data.fValue) return kNo;
        if (data.fValue->GetType() != JsonValue::eJsonArray) {
            data.SetWarning(Texts::kNotAnArray);
            return kNo;
        }
        JsonAutoRefPtr<JsonValue> otherRoot = other->Root();
        if (!otherRoot) return kNo;
        // The other root is shared, not copied; only the array itself is copied, because an
        // array holding itself could never be freed or printed.
        if (otherRoot.Get() == data.fValue.Get()) otherRoot = JsonValue::Copy(*otherRoot);
        // An index beyond the end changes nothing; the array decides.
        static_cast<JsonArray&>(*data.fValue)
            .SetValueAtIndex(static_cast<unsigned long>(index), otherRoot);
        return kYes;
    });
}

// MARK: - Removal

IJSON* JSONWrapper::Interface_RemoveIndex(unsigned long long index) {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData& data) -> IJSON* {
        if (!data.fValue) return nullptr;
        const std::string failed = Texts::kRemoveElementAt + std::to_string(index);
        if (data.fValue->GetType() != JsonValue::eJsonArray) {
            data.SetWarning(failed + ", JSON object is not an array");
            return nullptr;
        }
        auto& array = static_cast<JsonArray&>(*data.fValue);
        const auto position = static_cast<unsigned long>(index);
        JsonAutoRefPtr<JsonValue> element = array.AtIndex(position);
        if (!element) {
            data.SetWarning(failed);
            return nullptr;
        }
        // The result holds the element, so it outlives its removal.
        AutoRefPtr<JSONWrapper> removed(new JSONWrapper(std::move(element)));
        if (array.Erase(position, 1) != 1) data.SetWarning(failed);
        return removed.Detach();
    });
}

IJSON* JSONWrapper::Interface_RemoveKey(const char* key) {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData& data) -> IJSON* {
        if (!key || !data.fValue) return nullptr;
        const std::string name(key);
        const std::string failed = Texts::kRemoveElementWithKey + name;
        JsonValue& root = *data.fValue;
        if (!IsObjectType(root.GetType())) {
            data.SetWarning(failed + ", JSON object is not an object");
            return nullptr;
        }
        JsonAutoRefPtr<JsonValue> member = LookupMember(root, name);
        if (!member) {
            data.SetWarning(failed);
            return nullptr;
        }
        AutoRefPtr<JSONWrapper> removed(new JSONWrapper(std::move(member)));
        bool erased = false;
        if (root.GetType() == JsonValue::eJsonObject) {
            erased = static_cast<JsonObject&>(root).Erase(name);
        } else {
            auto& compiled = static_cast<JsonCompiledObject&>(root);
            erased = compiled.GetContext() && compiled.Erase(compiled.GetContext()->IndexOf(name));
        }
        if (!erased) data.SetWarning(failed);
        return removed.Detach();
    });
}

// MARK: - Iteration

unsigned char JSONWrapper::Interface_ForEach(ForEachCallback callback, void* user) const {
    return GuardedKeepingError(fData.get(), kNo, [&](JSONData&) {
        std::vector<Child> children;
        if (!callback || !Children(Root(), children)) return kNo;
        for (Child& child : children) {
            AutoRefPtr<JSONWrapper> node(new JSONWrapper(std::move(child.fNode)));
            if (!callback(child.fName.c_str(), node.Get(), user)) return kNo;
        }
        return kYes;
    });
}

unsigned char JSONWrapper::Interface_ForEach(ForEachErrorCallback callback, void* user,
                                             char* errors, unsigned int errorsSize) const {
    return GuardedKeepingError(fData.get(), kNo, [&](JSONData&) {
        std::vector<Child> children;
        if (!callback || !Children(Root(), children)) return kNo;
        unsigned char result = kYes;
        unsigned int collected = 0;
        char error[kCallbackErrorSize];
        for (size_t i = 0; i < children.size(); ++i) {
            AutoRefPtr<JSONWrapper> node(new JSONWrapper(std::move(children[i].fNode)));
            std::memset(error, 0, sizeof error);
            if (callback(children[i].fName.c_str(), node.Get(), user, error, sizeof error))
                continue;
            error[sizeof error - 1] = '\0'; // a callback may fill the whole buffer
            // A failure without a text (or without a buffer to collect it in) ends the walk.
            if (!errors || !error[0]) return kNo;
            AppendToErrorStr(errors, errorsSize, error, static_cast<unsigned long>(i));
            result = kNo;
            if (++collected == kMaxCollectedErrors) break;
        }
        return result;
    });
}

unsigned char JSONWrapper::Interface_ForEach(ForEachContextCallback callback, void* user,
                                             IContext* context) const {
    return GuardedKeepingError(fData.get(), kNo, [&](JSONData&) {
        std::vector<Child> children;
        if (!callback || !Children(Root(), children)) return kNo;
        unsigned char result = kYes;
        unsigned int collected = 0;
        std::string entries;
        for (Child& child : children) {
            AutoRefPtr<JSONWrapper> node(new JSONWrapper(std::move(child.fNode)));
            if (callback(child.fName.c_str(), node.Get(), user, context)) continue;
            result = kNo;
            // A failure that left no error on the context ends the walk.
            if (!context || !context->Interface_HasError()) break;
            std::string entry = entries.empty() ? "" : ", ";
            entry += "Item '" + child.fName + "' has error '" + ContextErrorText(*context) + "'";
            // The next child starts with a clean context.
            context->Interface_ResetError();
            if (entries.size() + entry.size() + 1 > kCollectedErrorsSize) break;
            entries += entry;
            if (++collected == kMaxCollectedErrors) break;
        }
        if (!entries.empty())
            context->TriggerErrorHandler(eSeveritySevere, Texts::kSourceVirelo, Texts::kErrorFunctionError,
                                         entries);
        return result;
    });
}

// MARK: - The serialized form

bool JSONWrapper::CompactTextThroughInterface(std::string& out) const {
    char small[1024];
    unsigned long long needed = Interface_ToString("", small, sizeof small);
    if (needed == 0) return false;
    if (needed <= sizeof small) {
        out.assign(small, static_cast<size_t>(needed - 1));
        return true;
    }
    std::vector<char> large(static_cast<size_t>(needed));
    const unsigned long long again = Interface_ToString("", large.data(), large.size());
    if (again == 0 || again > large.size()) return false;
    out.assign(large.data(), static_cast<size_t>(again - 1));
    return true;
}

unsigned long long JSONWrapper::Interface_SerializedSize() const {
    // Only the length is needed; the error state is cleared by Interface_ToString.
    return GuardedKeepingError(fData.get(), 0ULL, [&](JSONData&) -> unsigned long long {
        char small[1024];
        const unsigned long long needed = Interface_ToString("", small, sizeof small);
        return needed == 0 ? 0 : needed - 1 + sizeof(uint64_t);
    });
}

unsigned long long JSONWrapper::Interface_Serialize(char* buffer, unsigned long long size) const {
    return Guarded(fData.get(), kAllOnes, [&](JSONData&) -> unsigned long long {
        std::string text;
        if (!CompactTextThroughInterface(text)) return kAllOnes;
        const uint64_t length = text.size();
        if (!buffer || size < sizeof length || length > size - sizeof length) return kAllOnes;
        std::memcpy(buffer, &length, sizeof length); // host byte order
        std::memcpy(buffer + sizeof length, text.data(), text.size());
        return length + sizeof length;
    });
}

unsigned long long JSONWrapper::Interface_Deserialize(const char* data, unsigned long long size) {
    return Guarded(fData.get(), kAllOnes, [&](JSONData&) -> unsigned long long {
        uint64_t length = 0;
        if (!data || size < sizeof length) return kAllOnes;
        std::memcpy(&length, data, sizeof length);
        if (length > size - sizeof length) return kAllOnes;
        const std::string text(data + sizeof length, static_cast<size_t>(length));
        return Interface_Parse(text.c_str()) ? length + sizeof length : kAllOnes;
    });
}

} // namespace Virelo::JSON
