// JSONWrapper, reading operations: parse, text, lookups, member getters, root conversions and
// type tests, comparison, clone and the error state.
//
// Deliberate behaviours kept here (host code and tests depend on each):
// - The four caller-buffer conventions differ: ToString copies when length < size; AsString the
//   same and flags the copy; GetString copies when length <= size (it writes length + 1 bytes,
//   so callers give one spare byte) and flags "found" even when nothing was copied;
//   GetErrorMessage copies when length + 1 <= size. A null buffer is never written; the needed
//   size is still returned.
// - GetInt's texts: "is no 32 bit integer" for a value that is no integer at all, "is no
//   integer" for one outside 32 bits. GetDouble reports with status Error, the other getters
//   with Warning. GetString's missing-member text ends with a full stop.
// - Equals and LessThan give 0 for documents of other implementations; LessThan orders the
//   string forms byte-wise, not numbers.
// - ElementMatchingDouble falls back to strtol on the member's text: "42 apples" matches 42.
// - Has on an array tests element values (their string forms), not keys.
// - IsObject is 0 for a compiled object, although Get finds its members.
#include "host/ijson/JSONWrapper.h"
#include "host/ijson/WrapperSupport.h"
#include "host/FixedTexts.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonEquality.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace Virelo::JSON {

using namespace Support;

namespace Support {

JsonAutoRefPtr<JsonValue> LookupMember(const JsonValue& node, const std::string& key) {
    if (node.GetType() == JsonValue::eJsonObject)
        return static_cast<const JsonObject&>(node).At(key);
    if (node.GetType() != JsonValue::eJsonCompiledObject) return nullptr;
    const auto& compiled = static_cast<const JsonCompiledObject&>(node);
    const JsonCompiledObjectContext* keys = compiled.GetContext();
    return compiled.At(keys ? keys->IndexOf(key) : JsonCompiledObjectContext::sMaxIndex);
}

std::string NotAnObjectMessage(const std::string& key, const JsonValue& node) {
    return "Error while searching member '" + key + "'. Type is " +
           JsonValue::fTypeStrings[node.GetType()] + " but should be Object.";
}

} // namespace Support

namespace {

constexpr unsigned char kNo = 0;
constexpr unsigned char kYes = 1;

IJSON* WrapNode(JsonAutoRefPtr<JsonValue>&& node) {
    return node ? new JSONWrapper(std::move(node)) : nullptr;
}

/// The member lookup shared by the getters: the root must be an object (else Error), and a
/// missing member is recorded with `missingStatus` and "Could not find member '<key>'" +
/// `ending`.
JsonAutoRefPtr<JsonValue> MemberForGetter(JSONData& data, const JsonValue& root, const char* key,
                                          EJsonErrorStatus missingStatus, const char* ending) {
    if (!IsObjectType(root.GetType())) {
        data.SetError(NotAnObjectMessage(key, root));
        return nullptr;
    }
    JsonAutoRefPtr<JsonValue> member = LookupMember(root, key);
    if (!member) {
        std::string message = std::string("Could not find member '") + key + "'" + ending;
        if (missingStatus == EJsonErrorStatus::Error) {
            data.SetError(std::move(message));
        } else {
            data.SetWarning(std::move(message));
        }
    }
    return member;
}

/// The frame of the typed member getters, inside Guarded: the error state is cleared, no key,
/// output or document gives kNo, the member is looked up (a missing one recorded with
/// `missingStatus`), and `convert(data, member)` does the rest.
template <class Convert>
unsigned char GetMember(JSONData* state, const JsonAutoRefPtr<JsonValue>& root, const char* key,
                        const void* out, EJsonErrorStatus missingStatus, Convert&& convert) {
    return Guarded(state, kNo, [&](JSONData& data) {
        if (!key || !out || !root) return kNo;
        const JsonAutoRefPtr<JsonValue> member = MemberForGetter(data, *root, key, missingStatus, "");
        if (!member) return kNo;
        return convert(data, *member);
    });
}

std::string MemberMessage(const char* key, const char* tail) {
    return std::string("Member '") + key + tail;
}

bool IsSignedIntegerIn(const JsonValue& node, long long low, long long high) {
    if (node.GetType() != JsonValue::eJsonInteger) return false;
    const auto& integer = static_cast<const JsonInteger&>(node);
    if (integer.IsUnsigned()) return false;
    long long value = 0;
    integer.Get(value);
    return value >= low && value <= high;
}

bool Matches(const JsonValue& member, double value) {
    double real = 0.0;
    if (member.GetAsReal(real)) return real == value;
    // Deliberate: a member that is no number is read by strtol and truncated to 32 bits, so
    // the text "42 apples" matches 42.
    std::string text;
    if (!member.GetAsString(text)) return false;
    const auto number = static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10));
    return static_cast<double>(number) == value;
}

template <class Match>
IJSON* FirstElementMatching(JSONData& data, const JsonAutoRefPtr<JsonValue>& root, const char* key,
                            bool haveValue, Match&& match) {
    if (!root) return nullptr;
    if (!key || !haveValue || root->GetType() != JsonValue::eJsonArray) {
        data.SetWarning(Texts::kNotAnArray);
        return nullptr;
    }
    const std::string name(key);
    const auto& array = static_cast<const JsonArray&>(*root);
    for (size_t i = 0; i < array.Size(); ++i) {
        JsonAutoRefPtr<JsonValue> element = array.AtIndex(i);
        if (!element || !IsObjectType(element->GetType())) continue;
        JsonAutoRefPtr<JsonValue> member = LookupMember(*element, name);
        if (member && match(*member)) return WrapNode(std::move(element));
    }
    return nullptr;
}

} // namespace

const JSONWrapper* JSONWrapper::Own(const IJSON* json) noexcept {
    // The class is final and lives only in this module: its dynamic type identifies it.
    return dynamic_cast<const JSONWrapper*>(json);
}

JsonAutoRefPtr<JsonValue> JSONWrapper::Root() const {
    return fData ? fData->fValue : nullptr;
}

bool JSONWrapper::Parse(JSONData& data, const std::string& text, bool keepOrder) {
    ParserContext ctx;
    ctx.fKeepOrder = keepOrder;
    ctx.fCheckUTF8 = true;
    JsonAutoRefPtr<JsonValue> parsed = JsonValue::ReadFromString(text, &ctx, nullptr);
    if (!parsed) {
        // fLine counts the line breaks before the error: the first line is line 0.
        data.SetError(Texts::ParseErrorMessage(ctx));
        return false;
    }
    data.fValue = std::move(parsed);
    return true;
}

bool JSONWrapper::ParseDirect(const std::string& text, bool keepOrder) {
    return Guarded(fData.get(), false, [&](JSONData& data) {
        return Parse(data, text, keepOrder);
    });
}

// MARK: - Text and comparison

unsigned char JSONWrapper::Interface_Parse(const char* text) {
    return Guarded(fData.get(), kNo, [&](JSONData& data) {
        if (!text) return kYes;
        return Parse(data, text, true) ? kYes : kNo;
    });
}

unsigned char JSONWrapper::Interface_LessThan(const IJSON* other) const {
    return Guarded(fData.get(), kNo, [&](JSONData&) {
        const JSONWrapper* theirs = Own(other);
        const JsonAutoRefPtr<JsonValue> mine = Root();
        const JsonAutoRefPtr<JsonValue> their = theirs ? theirs->Root() : nullptr;
        if (!mine || !their) return kNo;
        const std::string a = mine->GetAsString();
        const std::string b = their->GetAsString();
        const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
        return order < 0 || (order == 0 && a.size() < b.size()) ? kYes : kNo;
    });
}

unsigned char JSONWrapper::Interface_Equals(const IJSON* other) const {
    return Guarded(fData.get(), kNo, [&](JSONData&) {
        const JSONWrapper* theirs = Own(other);
        const JsonAutoRefPtr<JsonValue> mine = Root();
        const JsonAutoRefPtr<JsonValue> their = theirs ? theirs->Root() : nullptr;
        if (!mine || !their) return kNo;
        return *mine == *their ? kYes : kNo;
    });
}

unsigned long long JSONWrapper::Interface_ToString(const char* format, char* buffer,
                                                   unsigned long long size) const {
    return Guarded(fData.get(), 0ULL, [&](JSONData& data) -> unsigned long long {
        if (!data.fValue) return 0;
        std::string text;
        data.ToString(text, format);
        CopyWithNul(text, buffer, size);
        return text.size() + 1;
    });
}

unsigned long long JSONWrapper::Interface_ToCachedString(const char* format, char* buffer,
                                                         unsigned long long size) const {
    return Interface_ToString(format, buffer, size);
}

// MARK: - Lookups and size

IJSON* JSONWrapper::Interface_FindNodePath(const char* path) const {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData& data) -> IJSON* {
        const JsonAutoRefPtr<JsonValue> root = Root();
        if (!path || !root) return nullptr;
        return WrapNode(data.FindNodePath(root, path));
    });
}

IJSON* JSONWrapper::Interface_ElementMatchingString(const char* key, const char* value) const {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData& data) {
        const size_t length = value ? std::strlen(value) : 0;
        return FirstElementMatching(
            data, Root(), key, value != nullptr, [&](const JsonValue& member) {
                std::string text;
                member.GetAsString(text);
                return text.size() == length && std::memcmp(text.data(), value, length) == 0;
            });
    });
}

IJSON* JSONWrapper::Interface_ElementMatchingDouble(const char* key, double value) const {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData& data) {
        return FirstElementMatching(data, Root(), key, true, [value](const JsonValue& member) {
            return Matches(member, value);
        });
    });
}

unsigned long long JSONWrapper::Interface_Size() const {
    return Guarded(fData.get(), 0ULL, [&](JSONData&) -> unsigned long long {
        const JsonAutoRefPtr<JsonValue> root = Root();
        if (!root) return 0;
        switch (root->GetType()) {
        case JsonValue::eJsonObject:
            return static_cast<const JsonObject&>(*root).Size();
        case JsonValue::eJsonCompiledObject:
            return static_cast<const JsonCompiledObject&>(*root).GetSetCount();
        case JsonValue::eJsonArray:
            return static_cast<const JsonArray&>(*root).Size();
        default:
            return 0;
        }
    });
}

unsigned char JSONWrapper::Interface_Empty() const {
    return Guarded(fData.get(), kNo, [&](JSONData&) {
        const JsonAutoRefPtr<JsonValue> root = Root();
        if (!root) return kYes;
        bool empty = false;
        switch (root->GetType()) {
        case JsonValue::eJsonString:
            empty = static_cast<const JsonString&>(*root).Get().empty();
            break;
        case JsonValue::eJsonObject:
            empty = static_cast<const JsonObject&>(*root).Empty();
            break;
        case JsonValue::eJsonCompiledObject:
            empty = static_cast<const JsonCompiledObject&>(*root).GetSetCount() == 0;
            break;
        case JsonValue::eJsonArray:
            empty = static_cast<const JsonArray&>(*root).Empty();
            break;
        case JsonValue::eJsonNull:
            empty = true;
            break;
        default:
            break;
        }
        return empty ? kYes : kNo;
    });
}

// MARK: - Members and elements

unsigned long long JSONWrapper::Interface_GetString(const char* key, char* buffer,
                                                    unsigned long long size,
                                                    unsigned char* found) const {
    if (found) *found = kNo;
    return Guarded(fData.get(), 0ULL, [&](JSONData& data) -> unsigned long long {
        const JsonAutoRefPtr<JsonValue> root = Root();
        // A null output buffer is a null argument like any other: 0 at once, no size is
        // reported. The found flag is optional.
        if (!key || !buffer || !root) return 0;
        const JsonAutoRefPtr<JsonValue> member =
            MemberForGetter(data, *root, key, EJsonErrorStatus::Warning, ".");
        std::string text;
        if (!member || !JSONData::AsString(member, text)) return 0;
        if (found) *found = kYes;
        // Deliberate: copies when length <= size and then writes length + 1 bytes.
        if (text.size() <= size) {
            std::memcpy(buffer, text.data(), text.size());
            buffer[text.size()] = '\0';
        }
        return text.size() + 1;
    });
}

unsigned char JSONWrapper::Interface_GetDouble(const char* key, double* out) const {
    // Deliberate: GetDouble reports with status Error where the other getters warn.
    return GetMember(fData.get(), Root(), key, out, EJsonErrorStatus::Error,
                     [&](JSONData& data, const JsonValue& member) {
        double value = 0.0;
        if (!member.GetAsReal(value)) {
            data.SetError(MemberMessage(key, "' is no double"));
            return kNo;
        }
        *out = value;
        return kYes;
    });
}

unsigned char JSONWrapper::Interface_GetInt(const char* key, int* out) const {
    return GetMember(fData.get(), Root(), key, out, EJsonErrorStatus::Warning,
                     [&](JSONData& data, const JsonValue& member) {
        long long value = 0;
        // Deliberate text order: "no 32 bit integer" when there is no integer at all, "no
        // integer" when it does not fit in 32 bits.
        if (!member.GetAsInteger(value)) {
            data.SetWarning(MemberMessage(key, "' is no 32 bit integer"));
            return kNo;
        }
        if (value != static_cast<int32_t>(value)) {
            *out = 0;
            data.SetWarning(MemberMessage(key, "' is no integer"));
            return kNo;
        }
        *out = static_cast<int>(value);
        return kYes;
    });
}

unsigned char JSONWrapper::Interface_GetUInt(const char* key, unsigned int* out) const {
    return GetMember(fData.get(), Root(), key, out, EJsonErrorStatus::Warning,
                     [&](JSONData& data, const JsonValue& member) {
        long long value = 0;
        const bool converted = member.GetAsInteger(value);
        if (!converted || value < 0 || value > 4294967295LL) {
            if (converted) *out = 0;
            data.SetWarning(MemberMessage(key, "' is no 32 bit unsigned integer"));
            return kNo;
        }
        *out = static_cast<unsigned int>(value);
        return kYes;
    });
}

unsigned char JSONWrapper::Interface_GetInt64(const char* key, long long* out) const {
    return GetMember(fData.get(), Root(), key, out, EJsonErrorStatus::Warning,
                     [&](JSONData& data, const JsonValue& member) {
        long long value = 0;
        if (!member.GetAsInteger(value)) {
            data.SetWarning(MemberMessage(key, "' is no integer"));
            return kNo;
        }
        *out = value;
        return kYes;
    });
}

unsigned char JSONWrapper::Interface_GetUInt64(const char* key, unsigned long long* out) const {
    return GetMember(fData.get(), Root(), key, out, EJsonErrorStatus::Warning,
                     [&](JSONData& data, const JsonValue& member) {
        long long value = 0;
        bool converted = false;
        if (member.GetType() == JsonValue::eJsonInteger) {
            const auto& integer = static_cast<const JsonInteger&>(member);
            // Unlike JSONData::AsUInt64, an unsigned integer gives its full unsigned value.
            if (integer.IsUnsigned()) {
                integer.Get(*out);
                return kYes;
            }
            integer.Get(value);
            converted = true;
        } else {
            converted = member.GetAsInteger(value);
        }
        if (converted && value >= 0) {
            *out = static_cast<unsigned long long>(value);
            return kYes;
        }
        if (converted || member.GetType() == JsonValue::eJsonReal) *out = 0;
        data.SetWarning(MemberMessage(key, "' is no unsigned integer"));
        return kNo;
    });
}

unsigned char JSONWrapper::Interface_GetBoolean(const char* key, unsigned char* out) const {
    return GetMember(fData.get(), Root(), key, out, EJsonErrorStatus::Warning,
                     [&](JSONData& data, const JsonValue& member) {
        bool value = false;
        if (!member.GetAsBool(value)) {
            data.SetWarning(MemberMessage(key, "' is no boolean"));
            return kNo;
        }
        *out = value ? kYes : kNo;
        return kYes;
    });
}

IJSON* JSONWrapper::Interface_Get(const char* key) const {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData& data) -> IJSON* {
        const JsonAutoRefPtr<JsonValue> root = Root();
        if (!key || !root) return nullptr;
        if (!IsObjectType(root->GetType())) {
            data.SetError(NotAnObjectMessage(key, *root));
            return nullptr;
        }
        return WrapNode(LookupMember(*root, key)); // a missing member: null, no message
    });
}

unsigned char JSONWrapper::Interface_Has(const char* text) const {
    return Guarded(fData.get(), kNo, [&](JSONData&) {
        const JsonAutoRefPtr<JsonValue> root = Root();
        if (!text || !root) return kNo;
        if (IsObjectType(root->GetType())) return LookupMember(*root, text) ? kYes : kNo;
        if (root->GetType() != JsonValue::eJsonArray) return kNo;
        // Deliberate: for an array the text is a value, compared with each element's string form.
        const size_t length = std::strlen(text);
        std::string element;
        for (const JsonValue* item : static_cast<const JsonArray&>(*root).Elements()) {
            if (!item) continue;
            item->GetAsString(element);
            if (element.size() == length && std::memcmp(element.data(), text, length) == 0)
                return kYes;
        }
        return kNo;
    });
}

IJSON* JSONWrapper::Interface_At(unsigned long long index) const {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData& data) -> IJSON* {
        const JsonAutoRefPtr<JsonValue> root = Root();
        if (!root || root->GetType() != JsonValue::eJsonArray) return nullptr;
        const auto& array = static_cast<const JsonArray&>(*root);
        if (index >= array.Size()) {
            data.SetError(Texts::kIndexOutOfBounds);
            return nullptr;
        }
        return WrapNode(array.AtIndex(static_cast<unsigned long>(index)));
    });
}

// MARK: - The root as a scalar

unsigned char JSONWrapper::Interface_AsBool(unsigned char* out) const {
    return Guarded(fData.get(), kNo, [&](JSONData&) {
        const JsonAutoRefPtr<JsonValue> root = Root();
        if (!out || !root) return kNo;
        *out = kNo;
        bool value = false;
        const bool converted = JSONData::AsBool(root, value);
        *out = value ? kYes : kNo;
        return converted ? kYes : kNo;
    });
}

namespace {
/// The body of the numeric root conversions: output 0 first, then the JSONData rule.
template <class T>
unsigned char ConvertRoot(JSONData* data, T* out,
                          bool (*convert)(const JsonAutoRefPtr<JsonValue>&, T&)) noexcept {
    return Guarded(data, kNo, [&](JSONData& document) {
        const JsonAutoRefPtr<JsonValue> root = document.fValue;
        if (!out || !root) return kNo;
        *out = T();
        return convert(root, *out) ? kYes : kNo;
    });
}
} // namespace

unsigned char JSONWrapper::Interface_AsDouble(double* out) const {
    return ConvertRoot(fData.get(), out, &JSONData::AsDouble);
}
unsigned char JSONWrapper::Interface_AsInt(int* out) const {
    return ConvertRoot(fData.get(), out, &JSONData::AsInt);
}
unsigned char JSONWrapper::Interface_AsUInt(unsigned int* out) const {
    return ConvertRoot(fData.get(), out, &JSONData::AsUInt);
}
unsigned char JSONWrapper::Interface_AsInt64(long long* out) const {
    return ConvertRoot(fData.get(), out, &JSONData::AsInt64);
}
unsigned char JSONWrapper::Interface_AsUInt64(unsigned long long* out) const {
    return ConvertRoot(fData.get(), out, &JSONData::AsUInt64);
}

unsigned long long JSONWrapper::Interface_AsString(char* buffer, unsigned long long size,
                                                   unsigned char* copied) const {
    if (copied) *copied = kNo;
    return Guarded(fData.get(), 0ULL, [&](JSONData&) -> unsigned long long {
        const JsonAutoRefPtr<JsonValue> root = Root();
        // The buffer and the copied flag are both outputs: either one null gives 0 at once.
        if (!buffer || !copied || !root) return 0;
        std::string text;
        if (!JSONData::AsString(root, text)) return 0;
        if (CopyWithNul(text, buffer, size)) *copied = kYes;
        return text.size() + 1;
    });
}

// MARK: - Type tests of the root

namespace {
/// The body of the type tests: 0 without a root.
template <class Test> unsigned char TestRoot(JSONData* data, Test&& test) noexcept {
    return Guarded(data, kNo, [&](JSONData& document) {
        const JsonAutoRefPtr<JsonValue> root = document.fValue;
        return root && test(*root) ? kYes : kNo;
    });
}
bool Is(const JsonValue& node, JsonValue::EJsonValueType type) {
    return node.GetType() == type;
}
} // namespace

unsigned char JSONWrapper::Interface_IsNull() const {
    return TestRoot(fData.get(), [](const JsonValue& n) { return Is(n, JsonValue::eJsonNull); });
}
unsigned char JSONWrapper::Interface_IsBool() const {
    return TestRoot(fData.get(), [](const JsonValue& n) {
        return Is(n, JsonValue::eJsonTrue) || Is(n, JsonValue::eJsonFalse);
    });
}
unsigned char JSONWrapper::Interface_IsNumber() const {
    return TestRoot(fData.get(), [](const JsonValue& n) {
        return Is(n, JsonValue::eJsonInteger) || Is(n, JsonValue::eJsonReal);
    });
}
unsigned char JSONWrapper::Interface_IsDouble() const {
    return TestRoot(fData.get(), [](const JsonValue& n) { return Is(n, JsonValue::eJsonReal); });
}
unsigned char JSONWrapper::Interface_IsInt() const {
    return TestRoot(fData.get(),
                    [](const JsonValue& n) { return IsSignedIntegerIn(n, INT32_MIN, INT32_MAX); });
}
unsigned char JSONWrapper::Interface_IsUInt() const {
    return TestRoot(fData.get(),
                    [](const JsonValue& n) { return IsSignedIntegerIn(n, 0, 4294967295LL); });
}
unsigned char JSONWrapper::Interface_IsInt64() const {
    return TestRoot(fData.get(), [](const JsonValue& n) { return Is(n, JsonValue::eJsonInteger); });
}
unsigned char JSONWrapper::Interface_IsUInt64() const {
    // An unsigned integer counts; a signed one when it is not negative.
    return TestRoot(fData.get(), [](const JsonValue& n) {
        if (!Is(n, JsonValue::eJsonInteger)) return false;
        const auto& integer = static_cast<const JsonInteger&>(n);
        return integer.IsUnsigned() || static_cast<long long>(integer.Bits()) >= 0;
    });
}
unsigned char JSONWrapper::Interface_IsString() const {
    return TestRoot(fData.get(), [](const JsonValue& n) { return Is(n, JsonValue::eJsonString); });
}
unsigned char JSONWrapper::Interface_IsArray() const {
    return TestRoot(fData.get(), [](const JsonValue& n) { return Is(n, JsonValue::eJsonArray); });
}
unsigned char JSONWrapper::Interface_IsObject() const {
    // Deliberate: a compiled object is not reported as an object here.
    return TestRoot(fData.get(), [](const JsonValue& n) { return Is(n, JsonValue::eJsonObject); });
}

// MARK: - Clone and the error state

IJSON* JSONWrapper::Interface_Clone() const {
    return Guarded(fData.get(), static_cast<IJSON*>(nullptr), [&](JSONData&) -> IJSON* {
        return new JSONWrapper(*this);
    });
}

unsigned int JSONWrapper::Interface_GetErrorStatus() const {
    // Without a document the status is Error.
    return GuardedKeepingError(fData.get(), static_cast<unsigned int>(EJsonErrorStatus::Error),
                   [](JSONData& data) { return data.GetErrorStatus(); });
}

unsigned long long JSONWrapper::Interface_GetErrorMessage(char* buffer, unsigned long long size,
                                                          unsigned char* copied) const {
    if (copied) *copied = kNo;
    return GuardedKeepingError(fData.get(), 0ULL, [&](JSONData& data) -> unsigned long long {
        const std::string message = data.GetErrorMessage();
        if (CopyWithNul(message, buffer, size) && copied) *copied = kYes;
        return message.size() + 1;
    });
}

} // namespace Virelo::JSON
