// JSONObj: the script type "JSON". Each value owns one reference to the root of a value tree
// (the root may be absent after a failed MessagePack read). The host creates values through
// virelo_module_CreateJSONObj, clones, orders and (de)serializes them, and moves a value between
// variables through the binary-data channel (format 11100), which shares the tree.
//
// Deliberate behaviours kept here:
// - The 11100 channel shares the tree between two values; Clone and Deserialize copy it.
// - Interface_LessThan orders by the values' texts (a string's own text, any other value's
//   compact JSON), byte by byte, not by numbers.
// - The type-4 constructor makes null: a compiled object cannot exist without a key table.
#pragma once

#include "host/InterfaceImpl.h"
#include "host/VireloIJSON.h"
#include "host/VireloInterfaces.h"
#include "json/JsonValue.h"

#include <string>

namespace Virelo {

/// Adds the defaults of module types (none beyond the interface's own) over the count.
class UserDefinedType : public InterfaceImpl<IUserDefinedType> {};

/// A module type with a host type id and a type name; clones through T's copy constructor.
template <class T> class CustomType : public UserDefinedType {
public:
    CustomType(unsigned int typeId, std::string typeName)
        : fTypeId(typeId), fTypeName(std::move(typeName)) {}

    const char* Interface_GetTypeName() const override { return fTypeName.data(); }
    IUserDefinedType* Interface_Clone() const override {
        return new T(static_cast<const T&>(*this));
    }
    unsigned int Interface_GetType() const override { return fTypeId; }

private:
    unsigned int fTypeId;
    std::string fTypeName;
};

/// The binary-data format that hands over a value's root reference instead of bytes.
constexpr unsigned long long kJsonValueHandshake = 11100;

class JSONObj final : public CustomType<JSONObj> {
public:
    /// A value holding null. The context is not used.
    JSONObj(unsigned int typeId, IContext* context);
    /// A value of the given kind: "", 0, 0.0, {}, [], true, false; null otherwise (type 4 too).
    JSONObj(unsigned int typeId, JsonValue::EJsonValueType type, IContext* context);
    /// A deep copy (used by Interface_Clone).
    JSONObj(const JSONObj& other);

    bool Interface_LessThan(const IUserDefinedType* other) const override;
    using IUserDefinedType::Interface_Deserialize;
    using IUserDefinedType::Interface_Serialize;
    /// Takes over a copy of `json` (or of its "value" member when its "type" member is "JSON").
    bool Interface_Deserialize(const IJSON* json, IContext* context) override;
    /// A new document sharing this value (one reference for the caller).
    IJSON* Interface_Serialize(IContext* context) const override;
    unsigned long long Interface_FromBinaryData(const void* data, unsigned long long size,
                                                unsigned long long format) override;
    unsigned long long Interface_ToBinaryData(void** target, unsigned long long format) const override;

    const JsonAutoRefPtr<JsonValue>& Value() const noexcept { return fValue; }
    void SetValue(JsonAutoRefPtr<JsonValue> value) noexcept { fValue = std::move(value); }

    /// Whether `object` is a JSONObj of this module (its dynamic type is exactly JSONObj).
    static bool IsJSONObj(const IUserDefinedType* object);

private:
    JsonAutoRefPtr<JsonValue> fValue;
};

using JSONObjPtr = AutoRefPtr<JSONObj>;

template <> struct is_importtype<JSONObjPtr> : std::true_type {};

} // namespace Virelo
