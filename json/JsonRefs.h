// Assignable references to one member, element or slot of a container: code writes
// `object["k"] = 5` without knowing the container's insertion rules.
//
// Deliberate behaviours kept here:
// - An ArrayRef never grows its array; assigning null removes the element only at the last
//   position and puts a JSON null anywhere else (no other index shifts).
// - ObjectRef ignores every assignment under a key that is not valid UTF-8 (the string form
//   leaves that check to JsonObject::InsertString).
// - The current value seen when a reference is made is not updated by assignments through it.
#pragma once

#include "json/JsonValue.h"

#include <string>

class JsonObject;
class JsonArray;
class JsonCompiledObject;

/// The assignment forms shared by the three reference kinds. Derived classes provide
/// Store(value) (value taken over; null means "remove") and StoreString(text).
template <class Derived> class JsonElementRef {
public:
    Derived& operator=(const JsonAutoRefPtr<JsonValue>& value) {
        if (value) value->AddRef();
        Self().Store(value.Get());
        return Self();
    }
    Derived& operator=(const std::string& text) {
        Self().StoreString(text);
        return Self();
    }
    Derived& operator=(long long value);
    Derived& operator=(unsigned long long value);
    Derived& operator=(int value) { return *this = static_cast<long long>(value); }
    Derived& operator=(double value);

    /// The value found when the reference was made (null when absent).
    const JsonAutoRefPtr<JsonValue>& Current() const noexcept { return fCurrent; }

protected:
    JsonElementRef() = default;
    explicit JsonElementRef(JsonAutoRefPtr<JsonValue> current) : fCurrent(std::move(current)) {}

    JsonAutoRefPtr<JsonValue> fCurrent;

private:
    Derived& Self() { return static_cast<Derived&>(*this); }
};

class ObjectRef : public JsonElementRef<ObjectRef> {
public:
    ObjectRef(JsonObject* object, const std::string& key);
    ObjectRef(const ObjectRef& other);
    ObjectRef(ObjectRef&& other) noexcept;
    ~ObjectRef();
    using JsonElementRef::operator=;
    ObjectRef& operator=(const ObjectRef& other);
    ObjectRef& operator=(ObjectRef&& other);

private:
    friend class JsonElementRef<ObjectRef>;
    void Store(JsonValue* value);
    void StoreString(const std::string& text);

    JsonObject* fObject;
    std::string fKey;
};

class ArrayRef : public JsonElementRef<ArrayRef> {
public:
    ArrayRef(JsonArray* array, unsigned long index);
    ArrayRef(const ArrayRef& other);
    ArrayRef(ArrayRef&& other) noexcept;
    ~ArrayRef();
    using JsonElementRef::operator=;
    ArrayRef& operator=(const ArrayRef& other);
    ArrayRef& operator=(ArrayRef&& other);

private:
    friend class JsonElementRef<ArrayRef>;
    void Store(JsonValue* value);
    void StoreString(const std::string& text);

    JsonArray* fArray;
    unsigned long fIndex;
};

class CompObjectRef : public JsonElementRef<CompObjectRef> {
public:
    CompObjectRef(JsonCompiledObject* object, unsigned long slotIndex);
    CompObjectRef(const CompObjectRef& other);
    CompObjectRef(CompObjectRef&& other) noexcept;
    ~CompObjectRef();
    using JsonElementRef::operator=;
    CompObjectRef& operator=(const CompObjectRef& other);
    CompObjectRef& operator=(CompObjectRef&& other);

private:
    friend class JsonElementRef<CompObjectRef>;
    void Store(JsonValue* value);
    void StoreString(const std::string& text);

    JsonCompiledObject* fObject;
    unsigned long fSlotIndex;
};
