// ObjectRef, ArrayRef and CompObjectRef.
#include "json/JsonRefs.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

template <class Derived> Derived& JsonElementRef<Derived>::operator=(long long value) {
    Self().Store(new JsonInteger(value));
    return Self();
}

template <class Derived> Derived& JsonElementRef<Derived>::operator=(unsigned long long value) {
    Self().Store(new JsonInteger(value, true)); // unsigned only above the signed range
    return Self();
}

template <class Derived> Derived& JsonElementRef<Derived>::operator=(double value) {
    Self().Store(new JsonReal(value));
    return Self();
}

template class JsonElementRef<ObjectRef>;
template class JsonElementRef<ArrayRef>;
template class JsonElementRef<CompObjectRef>;

namespace {
template <class T> T* Retained(T* p) {
    if (p) p->AddRef();
    return p;
}
template <class T> void Drop(T* p) {
    if (p) p->Release();
}
} // namespace

// MARK: - ObjectRef

ObjectRef::ObjectRef(JsonObject* object, const std::string& key)
    : JsonElementRef(object ? object->At(key) : nullptr), fObject(Retained(object)), fKey(key) {}
ObjectRef::ObjectRef(const ObjectRef& other)
    : JsonElementRef(other.fCurrent), fObject(Retained(other.fObject)), fKey(other.fKey) {}
ObjectRef::ObjectRef(ObjectRef&& other) noexcept
    : JsonElementRef(std::move(other.fCurrent)), fObject(std::exchange(other.fObject, nullptr)),
      fKey(std::move(other.fKey)) {}
ObjectRef::~ObjectRef() {
    Drop(fObject);
}
ObjectRef& ObjectRef::operator=(const ObjectRef& other) {
    if (this != &other) *this = other.fCurrent;
    return *this;
}
ObjectRef& ObjectRef::operator=(ObjectRef&& other) {
    return *this = other.fCurrent;
}

void ObjectRef::Store(JsonValue* value) {
    if (!fObject || !JsonValue::IsUTF8(fKey)) {
        Drop(value);
        return;
    }
    if (value) {
        fObject->Put(fKey, value);
    } else {
        fObject->Erase(fKey);
    }
}

void ObjectRef::StoreString(const std::string& text) {
    if (fObject) fObject->InsertString(fKey, text, false, false);
}

// MARK: - ArrayRef

ArrayRef::ArrayRef(JsonArray* array, unsigned long index)
    : JsonElementRef(array ? array->AtIndex(index) : nullptr), fArray(Retained(array)), fIndex(index) {}
ArrayRef::ArrayRef(const ArrayRef& other)
    : JsonElementRef(other.fCurrent), fArray(Retained(other.fArray)), fIndex(other.fIndex) {}
ArrayRef::ArrayRef(ArrayRef&& other) noexcept
    : JsonElementRef(std::move(other.fCurrent)), fArray(std::exchange(other.fArray, nullptr)),
      fIndex(other.fIndex) {}
ArrayRef::~ArrayRef() {
    Drop(fArray);
}
ArrayRef& ArrayRef::operator=(const ArrayRef& other) {
    if (this != &other) *this = other.fCurrent;
    return *this;
}
ArrayRef& ArrayRef::operator=(ArrayRef&& other) {
    return *this = other.fCurrent;
}

void ArrayRef::Store(JsonValue* value) {
    if (!fArray) {
        Drop(value);
        return;
    }
    // Out of range the value is released: an ArrayRef never grows the array.
    fArray->SetValueAtIndexInternal(fIndex, value);
}

void ArrayRef::StoreString(const std::string& text) {
    // Invalid UTF-8 leaves an empty string, which is stored all the same.
    Store(new JsonString(text, nullptr, nullptr));
}

// MARK: - CompObjectRef

CompObjectRef::CompObjectRef(JsonCompiledObject* object, unsigned long slotIndex)
    : JsonElementRef(object ? object->At(slotIndex) : nullptr), fObject(Retained(object)),
      fSlotIndex(slotIndex) {}
CompObjectRef::CompObjectRef(const CompObjectRef& other)
    : JsonElementRef(other.fCurrent), fObject(Retained(other.fObject)), fSlotIndex(other.fSlotIndex) {}
CompObjectRef::CompObjectRef(CompObjectRef&& other) noexcept
    : JsonElementRef(std::move(other.fCurrent)), fObject(std::exchange(other.fObject, nullptr)),
      fSlotIndex(other.fSlotIndex) {}
CompObjectRef::~CompObjectRef() {
    Drop(fObject);
}
CompObjectRef& CompObjectRef::operator=(const CompObjectRef& other) {
    if (this != &other) *this = other.fCurrent;
    return *this;
}
CompObjectRef& CompObjectRef::operator=(CompObjectRef&& other) {
    return *this = other.fCurrent;
}

void CompObjectRef::Store(JsonValue* value) {
    if (!fObject || fSlotIndex >= fObject->SlotCount()) {
        Drop(value);
        return;
    }
    fObject->PutSlot(fSlotIndex, value);
}

void CompObjectRef::StoreString(const std::string& text) {
    if (fObject) fObject->InsertString(fSlotIndex, text);
}
