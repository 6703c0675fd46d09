// The module's script functions, in definition order: one row per entry of the module
// definition text. X(SCRIPT_NAME, SYMBOL, WORKER): the host calls virelo_module_SYMBOL, which
// runs JsonModule::WORKER. The parameter list of each entry is derived from the worker's
// signature, so adding a function is one row here plus its worker.
//
// Deliberate: "ToString" and "ToFormattedString" carry no "JSON." prefix, and "JSON.AsNumber"
// and "JSON.AsDouble" are two entries with one worker.
#pragma once

#define VIRELO_JSON_FUNCTIONS(X)                                                   \
    X("ToString", JsonToString, JsonToString)                                      \
    X("ToFormattedString", JsonToFormattedString, JsonToFormattedString)           \
    X("JSON.FromString", StringToJson, StringToJson)                               \
    X("JSON.FromStringIgnoreErrors", StringToJsonIgnoreErrors, StringToJsonIgnoreErrors) \
    X("JSON.IsValid", IsValid, IsValid)                                            \
    X("JSON.FromMsgPack", MsgPackToJson, MsgPackToJson)                            \
    X("JSON.ToMsgPack", JsonToMsgPack, JsonToMsgPack)                              \
    X("JSON.SubNode", FindNodePath, FindNodePath)                                  \
    X("JSON.GetSubNode", GetFromNodePath, GetFromNodePath)                         \
    X("JSON.GetSubNode", GetFromNodeVector, GetFromNodeVector)                     \
    X("JSON.SetSubNode", SetNodePathBoolean, SetNodePathBoolean)                   \
    X("JSON.SetSubNode", SetNodePathNumber, SetNodePathNumber)                     \
    X("JSON.SetSubNode", SetNodePathNumberToFormat, SetNodePathNumberToFormat)     \
    X("JSON.SetSubNode", SetNodePathString, SetNodePathString)                     \
    X("JSON.SetSubNode", SetNodePathJson, SetNodePathJson)                         \
    X("JSON.SetSubNode", SetNodePathBooleanArray, SetNodePathBooleanArray)         \
    X("JSON.SetSubNode", SetNodePathNumberArray, SetNodePathNumberArray)           \
    X("JSON.SetSubNode", SetNodePathStringArray, SetNodePathStringArray)           \
    X("JSON.SetSubNode", SetNodeVectorBoolean, SetNodeVectorBoolean)               \
    X("JSON.SetSubNode", SetNodeVectorNumber, SetNodeVectorNumber)                 \
    X("JSON.SetSubNode", SetNodeVectorNumberToFormat, SetNodeVectorNumberToFormat) \
    X("JSON.SetSubNode", SetNodeVectorString, SetNodeVectorString)                 \
    X("JSON.SetSubNode", SetNodeVectorJson, SetNodeVectorJson)                     \
    X("JSON.SetSubNode", SetNodeVectorBooleanArray, SetNodeVectorBooleanArray)     \
    X("JSON.SetSubNode", SetNodeVectorNumberArray, SetNodeVectorNumberArray)       \
    X("JSON.SetSubNode", SetNodeVectorStringArray, SetNodeVectorStringArray)       \
    X("JSON.RemoveSubNode", RemoveNodePath, RemoveNodePath)                        \
    X("JSON.RemoveSubNode", RemoveNodeVector, RemoveNodeVector)                    \
    X("JSON.ElementMatching", ElementMatchingString, ElementMatchingString)        \
    X("JSON.ElementMatching", ElementMatchingNumber, ElementMatchingNumber)        \
    X("JSON.Set", SetBoolean, SetBoolean)                                          \
    X("JSON.Set", SetNumber, SetNumber)                                            \
    X("JSON.Set", SetNumberToFormat, SetNumberToFormat)                            \
    X("JSON.Set", SetString, SetString)                                            \
    X("JSON.Set", SetJson, SetJson)                                                \
    X("JSON.Set", SetBooleanArray, SetBooleanArray)                                \
    X("JSON.Set", SetNumberArray, SetNumberArray)                                  \
    X("JSON.Set", SetStringArray, SetStringArray)                                  \
    X("JSON.SetNull", SetNull, SetNull)                                            \
    X("JSON.Remove", RemoveMember, RemoveMember)                                   \
    X("JSON.Size", JsonSize, JsonSize)                                             \
    X("JSON.IsEmpty", IsEmpty, IsEmpty)                                            \
    X("JSON.Empty", Empty, Empty)                                                  \
    X("JSON.At", JsonArrayAt, JsonArrayAt)                                         \
    X("JSON.CreateEmptyArray", CreateEmptyArray, CreateEmptyArray)                 \
    X("JSON.CreateEmptyObject", CreateEmptyObject, CreateEmptyObject)              \
    X("JSON.CreateNull", CreateNull, CreateNull)                                   \
    X("JSON.ArrayAppend", JsonArrayAppendBoolean, JsonArrayAppendBoolean)          \
    X("JSON.ArrayAppend", JsonArrayAppendNumber, JsonArrayAppendNumber)            \
    X("JSON.ArrayAppend", JsonArrayAppendString, JsonArrayAppendString)            \
    X("JSON.ArrayAppend", JsonArrayAppendJSON, JsonArrayAppendJSON)                \
    X("JSON.ArrayRemove", JsonArrayRemove, JsonArrayRemove)                        \
    X("JSON.ArrayInsertAt", JsonArrayInsertAtJSON, JsonArrayInsertAtJSON)          \
    X("JSON.ArrayReplaceAt", JsonArrayReplaceAtJSON, JsonArrayReplaceAtJSON)       \
    X("JSON.UnionArrays", UnionArrays, UnionArrays)                                \
    X("JSON.ArrayFromBooleanVector", JSONArrayFromBooleanVector, JSONArrayFromBooleanVector) \
    X("JSON.ArrayFromNumberVector", JSONArrayFromNumberVector, JSONArrayFromNumberVector)    \
    X("JSON.ArrayFromStringVector", JSONArrayFromStringVector, JSONArrayFromStringVector)    \
    X("JSON.Get", JsonObjectGet, JsonObjectGet)                                    \
    X("JSON.GetAsBool", GetAsBool, GetAsBool)                                      \
    X("JSON.GetAsNumber", GetAsNumber, GetAsNumber)                                \
    X("JSON.GetAsString", GetAsString, GetAsString)                                \
    X("JSON.GetAsBoolVector", GetAsBoolVector, GetAsBoolVector)                    \
    X("JSON.GetAsNumberVector", GetAsNumberVector, GetAsNumberVector)              \
    X("JSON.GetAsStringVector", GetAsStringVector, GetAsStringVector)              \
    X("JSON.AsBool", AsBool, AsBool)                                               \
    X("JSON.AsNumber", AsNumber, AsDouble)                                         \
    X("JSON.AsDouble", AsDouble, AsDouble)                                         \
    X("JSON.AsInt64", AsInt64, AsInt64)                                            \
    X("JSON.AsString", AsString, AsString)                                         \
    X("JSON.HasMember", HasMember, HasMember)                                      \
    X("JSON.IsNull", IsNull, IsNull)                                               \
    X("JSON.IsBool", IsBool, IsBool)                                               \
    X("JSON.IsNumber", IsNumber, IsNumber)                                         \
    X("JSON.IsDouble", IsDouble, IsDouble)                                         \
    X("JSON.IsInt64", IsInt64, IsInt64)                                            \
    X("JSON.IsString", IsString, IsString)                                         \
    X("JSON.IsArray", IsArray, IsArray)                                            \
    X("JSON.IsObject", IsObject, IsObject)                                         \
    X("JSON.Equals", Equals, Equals)                                               \
    X("JSON.Keys", GetKeys, GetKeys)
