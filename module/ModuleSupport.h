// Constants and helpers shared by the script functions.
#pragma once

#include "host/CallForwarding.h"
#include "host/FixedTexts.h"
#include "host/JSONObj.h"
#include "host/VireloInterfaces.h"
#include "json/JsonValue.h"

#include <string>

namespace JsonModule {

using Virelo::BoolVectorPtr;
using Virelo::DataRefPtr;
using Virelo::IContext;
using Virelo::JSONObj;
using Virelo::JSONObjPtr;
using Virelo::NumberVectorPtr;
using Virelo::StringVectorPtr;

// The texts the module shares with the host binding (error ids, messages of failures that both
// report) are in host/FixedTexts.h; these are the module's own.
namespace Texts = Virelo::Texts;
using Texts::kErrorException;
using Texts::kErrorNoObject;
using Texts::kErrorParse;
using Texts::kErrorWrongPath;

/// The module's type name, also the source of every error report.
inline const char* const kJSONName = Texts::kSourceJSON;
inline const std::string kReason_NoJSONObjectGiven = "No JSON object given!";
inline const char* const kNoValueGiven = "No value given!";
inline const char* const kUnknownNumberFormat = "Unknown number format!";
inline const char* const kNotAJsonArray = "Given JSON is not a JSON array";
inline const char* const kAccessingElement = "Error while accessing element at given index";
inline const char* const kCannotRetrieveFromPath = "Couldn't retrieve JSON element from path ";
inline const std::string kFormatDouble = "double";
inline const std::string kFormatInt64 = "int64";
inline const std::string kFormatUInt64 = "uint64";
inline const std::string kFormatInt32 = "int32";
inline const std::string kFormatUInt32 = "uint32";

/// The host's type id of "JSON", asked once (thread-safe) and kept for the module's life.
unsigned int JsonTypeId(IContext* context);
/// A new JSON value of the host's JSON type holding `value` (may be empty: no value).
JSONObjPtr NewJSON(IContext* context, JsonAutoRefPtr<JsonValue> value);
/// A new JSON value holding a fresh node of the given kind (see JSONObj's constructor).
JSONObjPtr NewJSON(IContext* context, JsonValue::EJsonValueType type);
/// The copy every changing function works on: same type id and name, value deep-copied.
JSONObjPtr CopyOf(const JSONObjPtr& json);
/// Reports an error to the script with source "JSON" (nothing without a context).
void Report(IContext* context, Virelo::ErrorSeverity severity, const char* errorId,
            const std::string& message);

} // namespace JsonModule
