// JsonCompiledObjectContext and JsonCompiledObject.
#include "json/JsonCompiledObject.h"

#include "json/JsonArray.h"
#include "json/JsonEquality.h"
#include "json/JsonObject.h"
#include "json/JsonRefs.h"
#include "json/JsonScalar.h"

// MARK: - Key table

unsigned long JsonCompiledObjectContext::AddKey(const std::string& key, unsigned short typeMask,
                                                JsonCompiledObjectContext* subContext) {
    auto found = fKeyIndex.find(key);
    if (found != fKeyIndex.end()) return found->second;
    // Deliberate: a compiled-object key without a key table for its value expects a plain
    // object instead; the other bits (the required bit among them) are kept.
    if ((typeMask & kCompiledObject) && !subContext)
        typeMask = static_cast<unsigned short>((typeMask & ~(kObject | kCompiledObject)) | kObject);
    const unsigned long index = fKeys.size();
    fKeys.push_back(key);
    fTypeMasks.push_back(typeMask);
    fSubContexts.push_back(subContext);
    fKeyIndex.emplace(key, index);
    return index;
}

unsigned long JsonCompiledObjectContext::IndexOf(const std::string& key) const {
    auto found = fKeyIndex.find(key);
    return found == fKeyIndex.end() ? sMaxIndex : found->second;
}

unsigned short JsonCompiledObjectContext::TypeBit(JsonValue::EJsonValueType type) {
    switch (type) {
    case JsonValue::eJsonString: return kString;
    case JsonValue::eJsonInteger:
    case JsonValue::eJsonReal: return kNumber;
    case JsonValue::eJsonObject: return kObject;
    case JsonValue::eJsonCompiledObject: return kCompiledObject;
    case JsonValue::eJsonArray: return kArray;
    case JsonValue::eJsonTrue:
    case JsonValue::eJsonFalse: return kBoolean;
    case JsonValue::eJsonNull: return kNull;
    }
    return 0;
}

// MARK: - Construction

JsonCompiledObject::JsonCompiledObject(const JsonCompiledObjectContext* context)
    : JsonValue(eJsonCompiledObject), fContext(context),
      fSlots(context ? context->KeyCount() : 0, nullptr) {}

JsonCompiledObject::JsonCompiledObject(const JsonCompiledObject& other)
    : JsonValue(eJsonCompiledObject), fContext(other.fContext) {
    JsonAutoRefPtr<JsonValue> copy(CopyNoARefPtr(other));
    *this = std::move(static_cast<JsonCompiledObject&>(*copy));
}

JsonCompiledObject& JsonCompiledObject::operator=(const JsonCompiledObject& other) {
    if (this != &other) {
        JsonAutoRefPtr<JsonValue> copy(CopyNoARefPtr(other));
        auto& fresh = static_cast<JsonCompiledObject&>(*copy);
        ReleaseSlots(); // the values held before are released
        fContext = fresh.fContext;
        fSlots.swap(fresh.fSlots);
        fSetCount = std::exchange(fresh.fSetCount, 0);
    }
    return *this;
}

JsonCompiledObject& JsonCompiledObject::operator=(JsonCompiledObject&& other) noexcept {
    if (this != &other) {
        std::vector<JsonValue*> old;
        old.swap(fSlots);
        fSlots.swap(other.fSlots);
        fSetCount = std::exchange(other.fSetCount, 0);
        for (JsonValue* value : old)
            if (value) value->Release();
    }
    return *this;
}

JsonCompiledObject::~JsonCompiledObject() {
    ReleaseSlots();
}

void JsonCompiledObject::ReleaseSlots() noexcept {
    for (JsonValue*& slot : fSlots)
        if (JsonValue* value = std::exchange(slot, nullptr)) value->Release();
    fSetCount = 0;
}

JsonCompiledObject* JsonCompiledObject::CloneShell(const JsonCompiledObject& other) {
    auto* shell = new JsonCompiledObject(other.fContext);
    try {
        shell->fSlots.assign(other.fSlots.size(), nullptr);
    } catch (...) {
        delete shell;
        throw;
    }
    shell->fSetCount = other.fSetCount;
    return shell;
}

// MARK: - Inserts

void JsonCompiledObject::PutSlot(unsigned long index, JsonValue* value) noexcept {
    JsonValue* old = std::exchange(fSlots[index], value);
    if (value) ++fSetCount;
    if (old) {
        old->Release();
        --fSetCount;
    }
}

bool JsonCompiledObject::InsertValueInternal(unsigned long index, JsonValue* value) {
    if (index >= fSlots.size()) {
        if (value) value->Release();
        return false;
    }
    PutSlot(index, value);
    return true;
}

bool JsonCompiledObject::InsertValue(unsigned long index, const JsonAutoRefPtr<JsonValue>& value) {
    if (index >= fSlots.size()) return false;
    if (value) value->AddRef();
    PutSlot(index, value.Get());
    return true;
}

bool JsonCompiledObject::InsertValue(unsigned long index, const JsonValue& value) {
    if (index >= fSlots.size()) return false;
    PutSlot(index, CopyNoARefPtr(value));
    return true;
}

bool JsonCompiledObject::InsertString(unsigned long index, const std::string& text) {
    if (index >= fSlots.size() || !IsUTF8(text)) return false;
    bool yes = true;
    PutSlot(index, new JsonString(text, &yes, nullptr));
    return true;
}

bool JsonCompiledObject::InsertInteger(unsigned long index, long long value) {
    return InsertValueInternal(index, new JsonInteger(value));
}

bool JsonCompiledObject::InsertInteger(unsigned long index, unsigned long long value) {
    return InsertValueInternal(index, new JsonInteger(value, true));
}

bool JsonCompiledObject::InsertReal(unsigned long index, double value) {
    return InsertValueInternal(index, new JsonReal(value));
}

bool JsonCompiledObject::InsertBool(unsigned long index, bool value) {
    return InsertValueInternal(index, value ? static_cast<JsonValue*>(new JsonTrue()) : new JsonFalse());
}

bool JsonCompiledObject::InsertNull(unsigned long index) {
    return InsertValueInternal(index, new JsonNull());
}

bool JsonCompiledObject::Erase(unsigned long index) {
    if (index >= fSlots.size() || !fSlots[index]) return false;
    PutSlot(index, nullptr);
    return true;
}

// MARK: - Reads

JsonAutoRefPtr<JsonValue> JsonCompiledObject::At(unsigned long index) const {
    if (index >= fSlots.size()) return nullptr;
    return JsonAutoRefPtr<JsonValue>::Share(fSlots[index]);
}

JsonValue* JsonCompiledObject::Find(const std::string& key) const {
    if (!fContext) return nullptr;
    const unsigned long index = fContext->IndexOf(key);
    return index < fSlots.size() ? fSlots[index] : nullptr;
}

std::string JsonCompiledObject::KeyValAsString(unsigned long index) const {
    if (index >= fSlots.size() || !fSlots[index]) return std::string();
    return fSlots[index]->GetAsString();
}

long long JsonCompiledObject::KeyValAsInteger(unsigned long index) const {
    if (index >= fSlots.size() || !fSlots[index]) return 0;
    const JsonValue* value = fSlots[index];
    if (value->GetType() == eJsonInteger) {
        // Deliberate: an unsigned integer reads as 0 here.
        long long out = 0;
        static_cast<const JsonInteger*>(value)->Get(out);
        return out;
    }
    return value->GetAsInteger();
}

double JsonCompiledObject::KeyValAsReal(unsigned long index) const {
    if (index >= fSlots.size() || !fSlots[index]) return 0.0;
    return fSlots[index]->GetAsReal();
}

bool JsonCompiledObject::KeyValAsBool(unsigned long index) const {
    if (index >= fSlots.size() || !fSlots[index]) return false;
    return fSlots[index]->GetAsBool();
}

namespace {
template <class T>
JsonAutoRefPtr<T> SlotAs(const std::vector<JsonValue*>& slots, unsigned long index,
                         JsonValue::EJsonValueType type) {
    if (index >= slots.size() || !slots[index] || slots[index]->GetType() != type) return nullptr;
    return JsonAutoRefPtr<T>::Share(static_cast<T*>(slots[index]));
}
} // namespace

JsonAutoRefPtr<JsonObject> JsonCompiledObject::KeyValAsObject(unsigned long index) const {
    return SlotAs<JsonObject>(fSlots, index, eJsonObject);
}

JsonAutoRefPtr<JsonCompiledObject> JsonCompiledObject::KeyValAsCompObject(unsigned long index) const {
    return SlotAs<JsonCompiledObject>(fSlots, index, eJsonCompiledObject);
}

JsonAutoRefPtr<JsonArray> JsonCompiledObject::KeyValAsArray(unsigned long index) const {
    return SlotAs<JsonArray>(fSlots, index, eJsonArray);
}

CompObjectRef JsonCompiledObject::operator[](unsigned long index) {
    return CompObjectRef(this, index);
}

JsonValue* JsonCompiledObject::GetSubNode(const std::string& key) const {
    return Find(key);
}

bool JsonCompiledObject::Completed() const {
    if (!fContext) return true;
    for (size_t i = 0; i < fSlots.size(); ++i)
        if (!fSlots[i] && (fContext->TypeMask(i) & JsonCompiledObjectContext::kRequired)) return false;
    return true;
}

void JsonCompiledObject::ForEach(
    const std::function<void(unsigned long, const JsonAutoRefPtr<JsonValue>&)>& f) const {
    if (!f) return;
    for (unsigned long i = 0; i < fSlots.size(); ++i) {
        if (!fSlots[i]) continue;
        JsonAutoRefPtr<JsonValue> value = JsonAutoRefPtr<JsonValue>::Share(fSlots[i]);
        f(i, value);
    }
}

bool JsonCompiledObject::IsEqual(const JsonCompiledObject& other) const {
    return *this == other;
}
