// JsonArray: appends, changes by index, reads, iteration and equality.
#include "json/JsonArray.h"

#include "json/JsonEquality.h"
#include "json/JsonObject.h"
#include "json/JsonRefs.h"
#include "json/JsonScalar.h"

#include <algorithm>
#include <string>

JsonArray::JsonArray(const JsonArray& other) : JsonValue(eJsonArray) {
    JsonAutoRefPtr<JsonValue> copy(CopyNoARefPtr(other));
    *this = std::move(static_cast<JsonArray&>(*copy));
}

JsonArray& JsonArray::operator=(const JsonArray& other) {
    if (this != &other) {
        JsonAutoRefPtr<JsonValue> copy(CopyNoARefPtr(other));
        *this = std::move(static_cast<JsonArray&>(*copy));
    }
    return *this;
}

JsonArray& JsonArray::operator=(JsonArray&& other) noexcept {
    if (this != &other) {
        ElementVector old;
        old.swap(fElements);
        fElements.swap(other.fElements);
        for (JsonValue* element : old)
            if (element) element->Release();
    }
    return *this;
}

JsonArray::~JsonArray() {
    for (JsonValue* element : fElements)
        if (element) element->Release();
}

JsonArray* JsonArray::CloneShell(const JsonArray& other) {
    auto* shell = new JsonArray();
    try {
        shell->fElements.assign(other.fElements.size(), nullptr);
    } catch (...) {
        delete shell;
        throw;
    }
    return shell;
}

// MARK: - Appends

void JsonArray::AddValue(const JsonAutoRefPtr<JsonValue>& value) {
    if (!value) return;
    value->AddRef();
    AddValueInternal(value.Get());
}

void JsonArray::AddValue(JsonAutoRefPtr<JsonValue>&& value) {
    AddValueInternal(value.Detach());
}

void JsonArray::AddValue(const JsonValue& value) {
    AddValueInternal(CopyNoARefPtr(value));
}

void JsonArray::AddValueInternal(JsonValue* value) {
    if (!value) return;
    try {
        Push(value);
    } catch (...) {
        value->Release();
        throw;
    }
}

void JsonArray::AddString(const std::string& text, bool* ok, bool trusted) {
    const bool valid = trusted || IsUTF8(text);
    if (ok) *ok = valid;
    if (!valid) return;
    bool yes = true;
    AddValueInternal(new JsonString(text, &yes, nullptr));
}

void JsonArray::AddString(std::string&& text, bool* ok, bool trusted) {
    const bool valid = trusted || IsUTF8(text);
    if (ok) *ok = valid;
    if (!valid) return;
    bool yes = true;
    AddValueInternal(new JsonString(std::move(text), &yes, nullptr));
}

void JsonArray::AddInteger(long long value) {
    AddValueInternal(new JsonInteger(value));
}

void JsonArray::AddReal(double value) {
    AddValueInternal(new JsonReal(value));
}

void JsonArray::AddBool(bool value) {
    AddValueInternal(value ? static_cast<JsonValue*>(new JsonTrue()) : new JsonFalse());
}

void JsonArray::AddNull() {
    AddValueInternal(new JsonNull());
}

// MARK: - Changes by index

void JsonArray::InsertValueAtIndex(unsigned long index, const JsonAutoRefPtr<JsonValue>& value) {
    // Deliberate: an index at or beyond the size does nothing; appending is AddValue's job.
    if (!value || index >= fElements.size()) return;
    fElements.insert(fElements.begin() + index, value.Get());
    value->AddRef();
}

void JsonArray::SetValueAtIndex(unsigned long index, const JsonAutoRefPtr<JsonValue>& value) {
    if (index >= fElements.size()) return;
    if (value) value->AddRef();
    SetValueAtIndexInternal(index, value.Get());
}

void JsonArray::SetValueAtIndexInternal(unsigned long index, JsonValue* value) {
    if (index >= fElements.size()) {
        if (value) value->Release();
        return;
    }
    if (!value) {
        // Deliberate: null removes only the last element, so no other index shifts; anywhere
        // else the element becomes a JSON null.
        if (index + 1 == fElements.size()) {
            EraseAtIndex(index);
            return;
        }
        value = new JsonNull();
    }
    JsonValue* old = std::exchange(fElements[index], value);
    if (old) old->Release();
}

void JsonArray::EraseAtIndex(unsigned long index) {
    if (index >= fElements.size()) return;
    JsonValue* old = fElements[index];
    fElements.erase(fElements.begin() + index, fElements.begin() + index + 1);
    if (old) old->Release();
}

unsigned long JsonArray::Erase(unsigned long first, unsigned long count) {
    if (first >= fElements.size() || first >= static_cast<unsigned long>(JsonInteger::sMaxInt64) ||
        count == 0)
        return 0;
    const unsigned long removed = std::min<unsigned long>(count, fElements.size() - first);
    const std::vector<JsonValue*> gone(fElements.begin() + first, fElements.begin() + first + removed);
    fElements.erase(fElements.begin() + first, fElements.begin() + first + removed);
    for (JsonValue* element : gone)
        if (element) element->Release();
    return removed;
}

// MARK: - Reads

JsonAutoRefPtr<JsonValue> JsonArray::AtIndex(unsigned long index) const {
    if (index >= fElements.size()) return nullptr;
    return JsonAutoRefPtr<JsonValue>::Share(fElements[index]);
}

std::string JsonArray::AtIndexAsString(unsigned long index) const {
    if (index >= fElements.size() || !fElements[index]) return std::string();
    return fElements[index]->GetAsString();
}

long long JsonArray::AtIndexAsInteger(unsigned long index) const {
    if (index >= fElements.size() || !fElements[index]) return 0;
    return fElements[index]->GetAsInteger();
}

double JsonArray::AtIndexAsReal(unsigned long index) const {
    if (index >= fElements.size() || !fElements[index]) return 0.0;
    return fElements[index]->GetAsReal();
}

bool JsonArray::AtIndexAsBool(unsigned long index) const {
    if (index >= fElements.size() || !fElements[index]) return false;
    return fElements[index]->GetAsBool();
}

JsonAutoRefPtr<JsonObject> JsonArray::AtIndexAsObject(unsigned long index) const {
    if (index >= fElements.size() || !fElements[index] || fElements[index]->GetType() != eJsonObject)
        return nullptr;
    return JsonAutoRefPtr<JsonObject>::Share(static_cast<JsonObject*>(fElements[index]));
}

JsonAutoRefPtr<JsonArray> JsonArray::AtIndexAsArray(unsigned long index) const {
    if (index >= fElements.size() || !fElements[index] || fElements[index]->GetType() != eJsonArray)
        return nullptr;
    return JsonAutoRefPtr<JsonArray>::Share(static_cast<JsonArray*>(fElements[index]));
}

ArrayRef JsonArray::operator[](unsigned long index) {
    return ArrayRef(this, index);
}

JsonValue* JsonArray::GetSubNode(const std::string& step) const {
    // Only a leading decimal digit makes an index; std::stoi then reads the leading digits and
    // ignores the rest ("2abc" is 2, "007" is 7). Too many digits throw std::out_of_range,
    // which callers taking paths from outside catch.
    if (step.empty() || step[0] < '0' || step[0] > '9') return nullptr;
    const int index = std::stoi(step, nullptr, 10);
    if (index < 0 || static_cast<size_t>(index) >= fElements.size()) return nullptr;
    return fElements[static_cast<size_t>(index)];
}

// MARK: - Iteration

void JsonArray::ForEach(const std::function<void(unsigned long, const JsonAutoRefPtr<JsonValue>&)>& f) const {
    if (!f || fElements.empty()) return;
    // The size is read again after every call: a callback may shorten or lengthen the array.
    for (unsigned long i = 0; i < fElements.size(); ++i) {
        JsonAutoRefPtr<JsonValue> element = JsonAutoRefPtr<JsonValue>::Share(fElements[i]);
        f(i, element);
    }
}

bool JsonArray::ForEachWithUserData(
    const std::function<void(unsigned long, const JsonValue*, void*, bool&, std::string*)>& f,
    void* userData, std::string* errors) const {
    constexpr unsigned kMaxRecordedErrors = 20;
    bool success = true;
    unsigned recorded = 0;
    for (unsigned long i = 0; i < fElements.size(); ++i) {
        std::string itemError;
        f(i, fElements[i], userData, success, &itemError);
        if (itemError.empty() || !errors || recorded >= kMaxRecordedErrors) continue;
        if (!errors->empty()) *errors += ", ";
        // Items are numbered from 1 in messages.
        *errors += "Item '" + std::to_string(i + 1) + "' has error '" + itemError + "'";
        ++recorded;
    }
    return success;
}

bool JsonArray::IsEqual(const JsonArray& other) const {
    return *this == other;
}
