// JsonObject: inserts, reads, member order, iteration and equality.
#include "json/JsonObject.h"

#include "json/JsonArray.h"
#include "json/JsonEquality.h"
#include "json/JsonRefs.h"
#include "json/JsonScalar.h"

static_assert(sizeof(JsonObject) <= 96, "an object is one 96-byte block of the node pool");

JsonObject::JsonObject(const JsonObject& other) : JsonValue(eJsonObject) {
    JsonAutoRefPtr<JsonValue> copy(CopyNoARefPtr(other));
    *this = std::move(static_cast<JsonObject&>(*copy));
}

JsonObject& JsonObject::operator=(const JsonObject& other) {
    if (this != &other) {
        JsonAutoRefPtr<JsonValue> copy(CopyNoARefPtr(other));
        *this = std::move(static_cast<JsonObject&>(*copy));
    }
    return *this;
}

JsonObject& JsonObject::operator=(JsonObject&& other) noexcept {
    if (this != &other) {
        MemberTable old;
        old.Swap(fMembers);
        fMembers.Swap(other.fMembers);
        fOrder = other.fOrder;
        for (Member& member : old)
            if (member.fValue) member.fValue->Release();
    }
    return *this;
}

JsonObject::~JsonObject() {
    for (Member& member : fMembers)
        if (member.fValue) member.fValue->Release();
}

JsonObject* JsonObject::CloneShell(const JsonObject& other) {
    auto* shell = new JsonObject();
    try {
        shell->fMembers.CopyKeysOf(other.fMembers); // same buckets, so the same iteration order
    } catch (...) {
        delete shell;
        throw;
    }
    shell->fOrder = other.fOrder;
    return shell;
}

void JsonObject::Put(std::string_view key, JsonValue* value) {
    std::pair<Member*, bool> result;
    try {
        result = fMembers.TryEmplace(key, GetNextSequence(), value);
    } catch (...) {
        value->Release(); // the value is taken over in every case, also when out of memory
        throw;
    }
    if (result.second) {
        SetNextSequence(GetNextSequence() + 1);
    } else {
        JsonValue* old = std::exchange(result.first->fValue, value);
        if (old) old->Release();
    }
}

// MARK: - Inserts

template <class K> bool JsonObject::InsertOrErase(K&& key, JsonValue* value) {
    if (value) {
        Put(std::forward<K>(key), value);
    } else {
        Erase(key);
    }
    return true;
}

template <class K> bool JsonObject::InsertChecked(K&& key, JsonValue* value, bool trusted) {
    if (!trusted && !IsUTF8(key)) {
        if (value) value->Release();
        return false;
    }
    return InsertOrErase(std::forward<K>(key), value);
}

namespace {
JsonValue* Shared(const JsonAutoRefPtr<JsonValue>& value) {
    if (value) value->AddRef();
    return value.Get();
}
} // namespace

bool JsonObject::InsertValue(const std::string& key, const JsonAutoRefPtr<JsonValue>& value, bool trusted) {
    if (!trusted && !IsUTF8(key)) return false;
    return InsertOrErase(key, Shared(value));
}
bool JsonObject::InsertValue(std::string&& key, const JsonAutoRefPtr<JsonValue>& value, bool trusted) {
    if (!trusted && !IsUTF8(key)) return false;
    return InsertOrErase(std::move(key), Shared(value));
}
bool JsonObject::InsertValue(const std::string& key, JsonAutoRefPtr<JsonValue>&& value, bool trusted) {
    if (!trusted && !IsUTF8(key)) return false;
    return InsertOrErase(key, value.Detach());
}
bool JsonObject::InsertValue(std::string&& key, JsonAutoRefPtr<JsonValue>&& value, bool trusted) {
    if (!trusted && !IsUTF8(key)) return false;
    return InsertOrErase(std::move(key), value.Detach());
}
bool JsonObject::InsertValueInternal(const std::string& key, JsonValue* value, bool trusted) {
    return InsertChecked(key, value, trusted);
}
bool JsonObject::InsertValueInternal(std::string&& key, JsonValue* value, bool trusted) {
    return InsertChecked(std::move(key), value, trusted);
}
bool JsonObject::InsertValueWithNonUTF8Key(const std::string& key, const JsonAutoRefPtr<JsonValue>& value) {
    return InsertOrErase(key, Shared(value));
}
bool JsonObject::InsertValueWithNonUTF8Key(std::string&& key, const JsonAutoRefPtr<JsonValue>& value) {
    return InsertOrErase(std::move(key), Shared(value));
}
bool JsonObject::InsertValueWithNonUTF8Key(const std::string& key, JsonAutoRefPtr<JsonValue>&& value) {
    return InsertOrErase(key, value.Detach());
}
bool JsonObject::InsertValueWithNonUTF8Key(std::string&& key, JsonAutoRefPtr<JsonValue>&& value) {
    return InsertOrErase(std::move(key), value.Detach());
}
bool JsonObject::InsertValueWithNonUTF8KeyInternal(const std::string& key, JsonValue* value) {
    return InsertOrErase(key, value);
}
bool JsonObject::InsertValueWithNonUTF8KeyInternal(std::string&& key, JsonValue* value) {
    return InsertOrErase(std::move(key), value);
}
// Deliberate: despite the name, the copying form checks the key. Callers that copy values
// from elsewhere rely on never storing an invalid key this way.
bool JsonObject::InsertValueWithNonUTF8Key(const std::string& key, const JsonValue& value) {
    return InsertChecked(key, CopyNoARefPtr(value), false);
}
bool JsonObject::InsertValueWithNonUTF8Key(std::string&& key, const JsonValue& value) {
    return InsertChecked(std::move(key), CopyNoARefPtr(value), false);
}
bool JsonObject::InsertValue(const std::string& key, const JsonValue& value, bool trusted) {
    if (!trusted && !IsUTF8(key)) return false;
    Put(key, CopyNoARefPtr(value));
    return true;
}
bool JsonObject::InsertValue(std::string&& key, const JsonValue& value, bool trusted) {
    if (!trusted && !IsUTF8(key)) return false;
    Put(std::move(key), CopyNoARefPtr(value));
    return true;
}

namespace {
template <class T> bool TextIsValid(const T& text, bool textTrusted) {
    return textTrusted || JsonValue::IsUTF8(text);
}
} // namespace

bool JsonObject::InsertString(const std::string& key, const std::string& text, bool trusted, bool textTrusted) {
    if ((!trusted && !IsUTF8(key)) || !TextIsValid(text, textTrusted)) return false;
    bool yes = true;
    Put(key, new JsonString(text, &yes, nullptr));
    return true;
}
bool JsonObject::InsertString(std::string&& key, const std::string& text, bool trusted, bool textTrusted) {
    if ((!trusted && !IsUTF8(key)) || !TextIsValid(text, textTrusted)) return false;
    bool yes = true;
    Put(std::move(key), new JsonString(text, &yes, nullptr));
    return true;
}
bool JsonObject::InsertString(const std::string& key, std::string&& text, bool trusted, bool textTrusted) {
    if ((!trusted && !IsUTF8(key)) || !TextIsValid(text, textTrusted)) return false;
    bool yes = true;
    Put(key, new JsonString(std::move(text), &yes, nullptr));
    return true;
}
bool JsonObject::InsertString(std::string&& key, std::string&& text, bool trusted, bool textTrusted) {
    if ((!trusted && !IsUTF8(key)) || !TextIsValid(text, textTrusted)) return false;
    bool yes = true;
    Put(std::move(key), new JsonString(std::move(text), &yes, nullptr));
    return true;
}
bool JsonObject::InsertInteger(const std::string& key, long long value, bool trusted) {
    return InsertChecked(key, new JsonInteger(value), trusted);
}
bool JsonObject::InsertInteger(std::string&& key, long long value, bool trusted) {
    return InsertChecked(std::move(key), new JsonInteger(value), trusted);
}
bool JsonObject::InsertInteger(const std::string& key, unsigned long long value, bool trusted) {
    return InsertChecked(key, new JsonInteger(value, true), trusted);
}
bool JsonObject::InsertInteger(std::string&& key, unsigned long long value, bool trusted) {
    return InsertChecked(std::move(key), new JsonInteger(value, true), trusted);
}
bool JsonObject::InsertReal(const std::string& key, double value, bool trusted) {
    return InsertChecked(key, new JsonReal(value), trusted);
}
bool JsonObject::InsertReal(std::string&& key, double value, bool trusted) {
    return InsertChecked(std::move(key), new JsonReal(value), trusted);
}
bool JsonObject::InsertBool(const std::string& key, bool value, bool trusted) {
    return InsertChecked(key, value ? static_cast<JsonValue*>(new JsonTrue()) : new JsonFalse(), trusted);
}
bool JsonObject::InsertBool(std::string&& key, bool value, bool trusted) {
    return InsertChecked(std::move(key), value ? static_cast<JsonValue*>(new JsonTrue()) : new JsonFalse(),
                         trusted);
}
bool JsonObject::InsertNull(const std::string& key, bool trusted) {
    return InsertChecked(key, new JsonNull(), trusted);
}
bool JsonObject::InsertNull(std::string&& key, bool trusted) {
    return InsertChecked(std::move(key), new JsonNull(), trusted);
}

bool JsonObject::Erase(const std::string& key) {
    bool found = false;
    JsonValue* value = fMembers.Erase(key, found);
    if (value) value->Release();
    return found;
}

// MARK: - Reads

JsonValue* JsonObject::Find(const std::string& key) const noexcept {
    const Member* member = fMembers.Find(key);
    return member ? member->fValue : nullptr;
}

JsonAutoRefPtr<JsonValue> JsonObject::At(const std::string& key) const {
    return JsonAutoRefPtr<JsonValue>::Share(Find(key));
}

std::string JsonObject::KeyValAsString(const std::string& key) const {
    const JsonValue* value = Find(key);
    return value ? value->GetAsString() : std::string();
}

long long JsonObject::KeyValAsInteger(const std::string& key) const {
    const JsonValue* value = Find(key);
    return value ? value->GetAsInteger() : 0;
}

double JsonObject::KeyValAsReal(const std::string& key) const {
    const JsonValue* value = Find(key);
    return value ? value->GetAsReal() : 0.0;
}

bool JsonObject::KeyValAsBool(const std::string& key) const {
    const JsonValue* value = Find(key);
    return value ? value->GetAsBool() : false;
}

JsonAutoRefPtr<JsonObject> JsonObject::KeyValAsObject(const std::string& key) const {
    JsonValue* value = Find(key);
    if (!value || value->GetType() != eJsonObject) return nullptr;
    return JsonAutoRefPtr<JsonObject>::Share(static_cast<JsonObject*>(value));
}

JsonAutoRefPtr<JsonArray> JsonObject::KeyValAsArray(const std::string& key) const {
    JsonValue* value = Find(key);
    if (!value || value->GetType() != eJsonArray) return nullptr;
    return JsonAutoRefPtr<JsonArray>::Share(static_cast<JsonArray*>(value));
}

ObjectRef JsonObject::operator[](const std::string& key) {
    return ObjectRef(this, key);
}

JsonValue* JsonObject::GetSubNode(const std::string& step) const {
    return Find(step);
}

// MARK: - Order and iteration

void JsonObject::OrderedMembers(std::vector<const Member*>& out) const {
    out.clear();
    AppendOrderedMembers(out);
}

void JsonObject::AppendOrderedMembers(std::vector<const Member*>& out) const {
    const size_t base = out.size();
    // The map's own order unless the object keeps order and at most half of the sequence
    // numbers are gaps; rebuilding a sparse order would cost more than it is worth.
    const unsigned long next = GetNextSequence();
    if (!GetKeepOrder() || next > 2 * fMembers.Size()) {
        // No reserve: `out` may be shared by nested objects, and growing it by doubling keeps
        // a deep walk linear.
        for (const Member& member : fMembers) out.push_back(&member);
        return;
    }
    // Slots by sequence number, then the gaps left by erasures squeezed out in place.
    out.resize(base + next, nullptr);
    for (const Member& member : fMembers) out[base + member.fSequence] = &member;
    size_t kept = base;
    for (size_t i = base; i < out.size(); ++i)
        if (out[i]) out[kept++] = out[i];
    out.resize(kept);
}

void JsonObject::ForEach(
    const std::function<void(const std::string&, const JsonAutoRefPtr<JsonValue>&)>& f) const {
    if (!f) return;
    std::vector<const Member*> members;
    OrderedMembers(members);
    // Keys and values are taken before the first call, so a callback that changes this object
    // cannot invalidate what is still to be visited.
    std::vector<std::pair<std::string, JsonAutoRefPtr<JsonValue>>> snapshot;
    snapshot.reserve(members.size());
    for (const Member* member : members)
        snapshot.emplace_back(member->Key(), JsonAutoRefPtr<JsonValue>::Share(member->fValue));
    for (const auto& [key, value] : snapshot) f(key, value);
}

bool JsonObject::IsEqual(const JsonObject& other) const {
    return *this == other;
}
