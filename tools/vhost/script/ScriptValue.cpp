// ScriptValue: constructors and kind names.
#include "tools/vhost/script/ScriptValue.h"

namespace vhost {

ScriptValue ScriptValue::String(std::string text) {
    ScriptValue value;
    value.fKind = EValueKind::eString;
    value.fString = std::move(text);
    return value;
}

ScriptValue ScriptValue::Number(double number) {
    ScriptValue value;
    value.fKind = EValueKind::eNumber;
    value.fNumber = number;
    return value;
}

ScriptValue ScriptValue::Boolean(bool flag) {
    ScriptValue value;
    value.fKind = EValueKind::eBoolean;
    value.fBoolean = flag;
    return value;
}

ScriptValue ScriptValue::Data(Virelo::AutoRefPtr<Virelo::IDataRef> data) {
    ScriptValue value;
    value.fKind = EValueKind::eDataRef;
    value.fData = std::move(data);
    return value;
}

std::string KindName(const ScriptValue& value) {
    switch (value.fKind) {
    case EValueKind::eString:
        return "STRING";
    case EValueKind::eNumber:
        return "NUMBER";
    case EValueKind::eBoolean:
        return "BOOLEAN";
    case EValueKind::eDataRef:
        return "DATAREF";
    case EValueKind::eStringVector:
        return "VECTOR<STRING>";
    case EValueKind::eNumberVector:
        return "VECTOR<NUMBER>";
    case EValueKind::eBooleanVector:
        return "VECTOR<BOOLEAN>";
    // `[]` has no element kind of its own; it reads as the commonest vector.
    case EValueKind::eEmptyVector:
        return "VECTOR<STRING>";
    case EValueKind::eObject:
        return value.fTypeName;
    case EValueKind::eNone:
        return "NONE";
    case EValueKind::eNothing:
        return "NOTHING";
    }
    return "NOTHING";
}

} // namespace vhost
