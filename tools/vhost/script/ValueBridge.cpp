// ValueBridge: conversions between script values and variants.
#include "tools/vhost/script/ValueBridge.h"

#include "tools/vhost/host/HostDataRef.h"
#include "tools/vhost/host/HostVector.h"

namespace vhost {

namespace {

unsigned int VectorElement(EValueKind kind) {
    switch (kind) {
    case EValueKind::eStringVector:
        return Virelo::eTypeString;
    case EValueKind::eNumberVector:
        return Virelo::eTypeNumber;
    case EValueKind::eBooleanVector:
        return Virelo::eTypeBoolean;
    default:
        return 0;
    }
}

template <class T> Virelo::AutoRefPtr<Virelo::IObject> NewVector(const std::vector<T>& items) {
    return Virelo::AutoRefPtr<Virelo::IObject>(new HostVector<T>(items));
}

std::string TypeCodeName(unsigned int code) {
    switch (code) {
    case Virelo::eTypeNone:
        return "no value";
    case Virelo::eTypeBoolean:
        return "a BOOLEAN";
    case Virelo::eTypeNumber:
        return "a NUMBER";
    case Virelo::eTypeString:
        return "a STRING";
    case Virelo::eTypeDataRef:
        return "a DATAREF";
    case Virelo::eTypeVector:
        return "a vector";
    default:
        return "type code " + std::to_string(code);
    }
}

} // namespace

bool FitsParameter(const ScriptValue& value, const TypeRef& type) {
    switch (value.fKind) {
    case EValueKind::eString:
        return type.fCode == Virelo::eTypeString;
    case EValueKind::eNumber:
        return type.fCode == Virelo::eTypeNumber;
    case EValueKind::eBoolean:
        return type.fCode == Virelo::eTypeBoolean;
    case EValueKind::eDataRef:
        return type.fCode == Virelo::eTypeDataRef;
    case EValueKind::eStringVector:
    case EValueKind::eNumberVector:
    case EValueKind::eBooleanVector:
        return type.IsVector() && type.fElement == VectorElement(value.fKind);
    case EValueKind::eEmptyVector:
        return type.IsVector();
    case EValueKind::eObject:
        return type.IsUserDefined() && type.fCode == value.fTypeId;
    case EValueKind::eNone:
        return type.IsUserDefined();
    case EValueKind::eNothing:
        return false;
    }
    return false;
}

Virelo::AutoRefPtr<HostVariant> MakeArgument(const ScriptValue& value, const TypeRef* parameter) {
    Virelo::AutoRefPtr<HostVariant> variant = HostVariant::Create();
    switch (value.fKind) {
    case EValueKind::eString:
        variant->Interface_SetString(value.fString.data(), value.fString.size());
        break;
    case EValueKind::eNumber:
        variant->Interface_SetNumber(value.fNumber);
        break;
    case EValueKind::eBoolean:
        variant->Interface_SetBoolean(value.fBoolean ? 1 : 0);
        break;
    case EValueKind::eDataRef:
        variant->Interface_SetDataRef(value.fData.Get());
        break;
    case EValueKind::eStringVector:
        variant->Interface_SetVector(NewVector(value.fStrings).Get());
        break;
    case EValueKind::eNumberVector:
        variant->Interface_SetVector(NewVector(value.fNumbers).Get());
        break;
    case EValueKind::eBooleanVector:
        variant->Interface_SetVector(NewVector(value.fBooleans).Get());
        break;
    case EValueKind::eEmptyVector: {
        const unsigned int element =
            parameter && parameter->IsVector() ? parameter->fElement : Virelo::eTypeString;
        Virelo::AutoRefPtr<Virelo::IObject> vector(CreateHostVector(element));
        variant->Interface_SetVector(vector.Get());
        break;
    }
    case EValueKind::eObject:
        variant->Interface_SetUserDefined(value.fObject.Get());
        break;
    case EValueKind::eNone:
        variant->SetNone(parameter && parameter->IsUserDefined() ? parameter->fCode
                                                                 : value.fTypeId);
        break;
    case EValueKind::eNothing:
        break;
    }
    return variant;
}

bool ReadResult(const Virelo::IVariant& result, const TypeRef& type, const Registry& registry,
                ScriptValue& out, std::string& error) {
    const unsigned int code = result.Interface_GetType();
    const bool sameKind =
        type.IsUserDefined() ? code >= Virelo::eTypeUserDefined : code == type.fCode;
    if (!sameKind) {
        error = "the result holds " + TypeCodeName(code) + " where " + type.fName + " was declared";
        return false;
    }
    out = ScriptValue();
    switch (type.fCode) {
    case Virelo::eTypeString:
        out = ScriptValue::String(
            std::string(result.Interface_GetStringData(),
                        static_cast<size_t>(result.Interface_GetStringLength())));
        return true;
    case Virelo::eTypeNumber:
        out = ScriptValue::Number(result.Interface_GetNumber());
        return true;
    case Virelo::eTypeBoolean:
        out = ScriptValue::Boolean(result.Interface_GetBoolean() != 0);
        return true;
    case Virelo::eTypeDataRef: {
        Virelo::AutoRefPtr<Virelo::IDataRef> data(result.Interface_GetDataRef());
        if (!data) data = HostDataRef::Create({}, HostDataRef::EAccess::eDirect);
        out = ScriptValue::Data(std::move(data));
        return true;
    }
    case Virelo::eTypeVector: {
        Virelo::AutoRefPtr<Virelo::IObject> vector(result.Interface_GetVector());
        bool read = false;
        if (type.fElement == Virelo::eTypeString) {
            auto items = ReadStringVector(vector.Get());
            if ((read = items.has_value())) out.fStrings = std::move(*items);
            out.fKind = EValueKind::eStringVector;
        } else if (type.fElement == Virelo::eTypeNumber) {
            auto items = ReadNumberVector(vector.Get());
            if ((read = items.has_value())) out.fNumbers = std::move(*items);
            out.fKind = EValueKind::eNumberVector;
        } else {
            auto items = ReadBooleanVector(vector.Get());
            if ((read = items.has_value())) out.fBooleans = std::move(*items);
            out.fKind = EValueKind::eBooleanVector;
        }
        if (!read) error = "the result vector holds elements that are not " + type.fName;
        return read;
    }
    default:
        break;
    }
    Virelo::AutoRefPtr<Virelo::IUserDefinedType> object(result.Interface_GetUserDefined());
    out.fKind = object ? EValueKind::eObject : EValueKind::eNone;
    out.fTypeId = code;
    if (const RegisteredType* registered = registry.FindType(code))
        out.fTypeName = registered->fName;
    else if (object && object->Interface_GetTypeName())
        out.fTypeName = object->Interface_GetTypeName();
    out.fObject = std::move(object);
    return true;
}

} // namespace vhost
