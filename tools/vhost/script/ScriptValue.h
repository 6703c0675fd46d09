// ScriptValue: one value of the script language. Data blocks and objects are held by
// reference, as the host hands them to modules; everything else is held by value.
#pragma once

#include "host/VireloInterfaces.h"

#include <string>
#include <vector>

namespace vhost {

enum class EValueKind {
    eString,
    eNumber,
    eBoolean,
    eDataRef,
    eStringVector,
    eNumberVector,
    eBooleanVector,
    eEmptyVector, ///< the literal `[]`, which fits every vector parameter
    eObject,      ///< a user-defined-type value with its object
    eNone,        ///< a user-defined-type value without an object
    eNothing,     ///< what print and expect give: no value at all
};

struct ScriptValue {
    EValueKind fKind = EValueKind::eNothing;
    std::string fString;
    double fNumber = 0;
    bool fBoolean = false;
    Virelo::AutoRefPtr<Virelo::IDataRef> fData;
    Virelo::AutoRefPtr<Virelo::IUserDefinedType> fObject;
    unsigned int fTypeId = 0; ///< for eObject and eNone
    std::string fTypeName;    ///< for eObject and eNone, e.g. "JSON"
    std::vector<std::string> fStrings;
    std::vector<double> fNumbers;
    std::vector<bool> fBooleans;

    static ScriptValue String(std::string text);
    static ScriptValue Number(double number);
    static ScriptValue Boolean(bool value);
    static ScriptValue Data(Virelo::AutoRefPtr<Virelo::IDataRef> data);
    static ScriptValue Nothing() { return {}; }
};

/// The kind as typeof names it: "STRING", ..., the type name for objects, "NONE". The
/// literal `[]` reads as "VECTOR<STRING>"; print's "no value" reads as "NOTHING".
std::string KindName(const ScriptValue& value);

} // namespace vhost
