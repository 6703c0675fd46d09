// The exported script functions: virelo_module_SYMBOL runs its worker through the forwarding
// glue (argument conversion, status word, result, exceptions caught).
#include "host/CallForwarding.h"
#include "module/ModuleExport.h"
#include "module/ScriptFunctions.h"

#define VIRELO_JSON_EXPORT(scriptName, symbol, worker)                                        \
    VIRELO_JSON_API unsigned int virelo_module_##symbol(                                      \
        unsigned int argumentCount, Virelo::IVariant** arguments, Virelo::IVariant* result,   \
        Virelo::IModuleInfo* moduleInfo, Virelo::IContext* context) {                         \
        return Virelo::Forward<&JsonModule::worker>(argumentCount, arguments, result,         \
                                                    moduleInfo, context);                     \
    }

// Parse, print and convert
VIRELO_JSON_EXPORT("ToString", JsonToString, JsonToString)
VIRELO_JSON_EXPORT("ToFormattedString", JsonToFormattedString, JsonToFormattedString)
VIRELO_JSON_EXPORT("JSON.FromString", StringToJson, StringToJson)
VIRELO_JSON_EXPORT("JSON.FromStringIgnoreErrors", StringToJsonIgnoreErrors, StringToJsonIgnoreErrors)
VIRELO_JSON_EXPORT("JSON.IsValid", IsValid, IsValid)
VIRELO_JSON_EXPORT("JSON.FromMsgPack", MsgPackToJson, MsgPackToJson)
VIRELO_JSON_EXPORT("JSON.ToMsgPack", JsonToMsgPack, JsonToMsgPack)
// Type tests, conversions, creation
VIRELO_JSON_EXPORT("JSON.CreateEmptyArray", CreateEmptyArray, CreateEmptyArray)
VIRELO_JSON_EXPORT("JSON.CreateEmptyObject", CreateEmptyObject, CreateEmptyObject)
VIRELO_JSON_EXPORT("JSON.CreateNull", CreateNull, CreateNull)
VIRELO_JSON_EXPORT("JSON.AsBool", AsBool, AsBool)
VIRELO_JSON_EXPORT("JSON.AsNumber", AsNumber, AsDouble)
VIRELO_JSON_EXPORT("JSON.AsDouble", AsDouble, AsDouble)
VIRELO_JSON_EXPORT("JSON.AsInt64", AsInt64, AsInt64)
VIRELO_JSON_EXPORT("JSON.AsString", AsString, AsString)
VIRELO_JSON_EXPORT("JSON.IsNull", IsNull, IsNull)
VIRELO_JSON_EXPORT("JSON.IsBool", IsBool, IsBool)
VIRELO_JSON_EXPORT("JSON.IsNumber", IsNumber, IsNumber)
VIRELO_JSON_EXPORT("JSON.IsDouble", IsDouble, IsDouble)
VIRELO_JSON_EXPORT("JSON.IsInt64", IsInt64, IsInt64)
VIRELO_JSON_EXPORT("JSON.IsString", IsString, IsString)
VIRELO_JSON_EXPORT("JSON.IsArray", IsArray, IsArray)
VIRELO_JSON_EXPORT("JSON.IsObject", IsObject, IsObject)
VIRELO_JSON_EXPORT("JSON.Equals", Equals, Equals)
