// Helpers shared by the JSONWrapper sources: the guard every IJSON operation runs in (it
// clears the error state and keeps exceptions in), member lookup on objects and compiled
// objects, copying text into caller buffers and reading a context's error text.
// Internal to host/ijson.
#pragma once

#include "host/VireloInterfaces.h"
#include "host/ijson/JSONData.h"
#include "json/JsonValue.h"

#include <cstring>
#include <exception>
#include <string>

namespace Virelo::JSON::Support {

/// The "all ones" result of the serialized-form operations.
constexpr unsigned long long kAllOnes = ~0ULL;

/// Records an exception as status Error with its text; silent if even that fails.
inline void RecordException(JSONData& data, const char* what) noexcept {
    try {
        data.SetError(what ? what : "unknown exception");
    } catch (...) {
    }
}

/// Runs an IJSON operation that leaves the error state as it finds it (reading the state,
/// iterating): `failure` without a document, and on any exception (recorded in the error
/// state), so that nothing is ever thrown across the interface.
template <class R, class Body> R GuardedKeepingError(JSONData* data, R failure, Body&& body) noexcept {
    if (!data) return failure;
    try {
        return body(*data);
    } catch (const std::exception& e) {
        RecordException(*data, e.what());
    } catch (...) {
        RecordException(*data, "unknown exception");
    }
    return failure;
}

/// Runs one IJSON operation as GuardedKeepingError does, clearing the document's error state
/// first: the state afterwards describes this operation alone, and no operation can forget.
template <class R, class Body> R Guarded(JSONData* data, R failure, Body&& body) noexcept {
    return GuardedKeepingError(data, failure, [&body](JSONData& document) -> R {
        document.ClearError();
        return body(document);
    });
}

inline bool IsObjectType(JsonValue::EJsonValueType type) noexcept {
    return type == JsonValue::eJsonObject || type == JsonValue::eJsonCompiledObject;
}

/// The member `key` of an object or compiled object (a compiled object's unknown key finds
/// nothing), or null; null for any other node.
JsonAutoRefPtr<JsonValue> LookupMember(const JsonValue& node, const std::string& key);

/// "Error while searching member '<key>'. Type is <type> but should be Object."
std::string NotAnObjectMessage(const std::string& key, const JsonValue& node);

/// Copies `text` and a NUL into `buffer` when `buffer` is set and the text's length is below
/// `size`; returns whether it did.
inline bool CopyWithNul(const std::string& text, char* buffer, unsigned long long size) noexcept {
    if (!buffer || text.size() >= size) return false;
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return true;
}

/// The context's current error text, asked into 1 KiB first and again with the size it needs.
inline std::string ContextErrorText(IContext& context) {
    std::string text(1024, '\0');
    const unsigned long long needed = context.Interface_GetErrorText(text.data(), text.size());
    if (needed >= text.size()) {
        text.assign(static_cast<size_t>(needed) + 1, '\0');
        context.Interface_GetErrorText(text.data(), text.size());
    }
    text.resize(static_cast<size_t>(needed));
    return text;
}

} // namespace Virelo::JSON::Support
