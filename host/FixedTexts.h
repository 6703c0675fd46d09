// The fixed texts of the host binding, in one place: the sources and ids of error reports, the
// messages of the IJSON operations and of the script functions that report the same failures,
// and the member names of a wrapped document. Scripts and hosts compare them byte for byte.
//
// Deliberate: several texts serve more than one failure (a null key and a null document both
// give kCantSet, for instance); callers name the case beside their use.
#pragma once

#include <string>

struct ParserContext;

namespace Virelo::Texts {

/// The script type's name, which is also the module's name.
inline constexpr const char* kTypeName = "JSON";

// ---- Sources and ids of error reports ----
inline constexpr const char* kSourceJSON = kTypeName;
inline constexpr const char* kSourceVirelo = "Virelo";
inline constexpr const char* kErrorNoObject = "Error.JSON.NoObject";
inline constexpr const char* kErrorParse = "Error.JSON.Parse";
inline constexpr const char* kErrorWrongPath = "Error.JSON.WrongPath";
inline constexpr const char* kErrorException = "Error.JSON.Exception";
inline constexpr const char* kErrorInvalidArgument = "Error.Virelo.InvalidArgument";
inline constexpr const char* kErrorInvalidFunction = "Error.Virelo.InvalidFunction";
inline constexpr const char* kErrorFunctionError = "Error.Virelo.FunctionError";

// ---- Setting members (IJSON setters, JSON.Set, JSON.SetSubNode) ----
inline constexpr const char* kCantSet = "Can't set key/value pair into JSON";
inline constexpr const char* kCantSetNotAnObject =
    "Can't set key/value pair into JSON, JSON element is not a JSON object";
inline constexpr const char* kCantSetInvalidKey =
    "Can't set key/value pair into JSON, JSON key is not a valid UTF8-string";
inline constexpr const char* kCantSetInvalidKeyOrValue =
    "Can't set key/value pair into JSON, key and/or value is not a valid UTF8-string";
/// "Can't set key/value pair into JSON, value for key \"KEY\" is not a valid UTF8-string"
std::string CantSetInvalidValue(const std::string& key);

// ---- Arrays ----
inline constexpr const char* kNotAnArray = "JSON object is not an array";
inline constexpr const char* kPushBackNotAnArray =
    "Couldn't push back to JSON array, JSON object is not an array";
inline constexpr const char* kPushBackInvalidValue = "Couldn't push back invalid value to JSON array";
inline constexpr const char* kIndexOutOfBounds = "Index is out of bounds";
inline constexpr const char* kRemoveElementAt = "Couldn't remove element at position ";
inline constexpr const char* kRemoveElementWithKey = "Couldn't remove element with key ";

// ---- Parsing ----
/// "JSON parse error in line N: MESSAGE", N being the line breaks before the error (so the
/// first line is line 0, deliberately: hosts and scripts compare these texts).
std::string ParseErrorMessage(const ParserContext& ctx);

// ---- Documents behind IJSON ----
inline constexpr const char* kCantCopyNull = "Can't copy NULL object";
inline constexpr const char* kFetchingSubnode = "Error while fetching subnode";
inline constexpr const char* kFetchingArraySubnode = "Error while fetching array subnode";
inline constexpr const char* kIndexNotANumber = "Couldn't find JSON node, array index is not a number";
inline constexpr const char* kIndexOutOfRange = "Couldn't find JSON node, array index out of bounds";
inline constexpr const char* kSubnodeNotFound = "Couldn't find JSON node, JSON subnode not found";

// ---- The members of a wrapped document: {"type": "JSON", "value": ...} ----
inline constexpr const char* kWrappedTypeKey = "type";
inline constexpr const char* kWrappedTypeName = "JSON";
inline constexpr const char* kWrappedValueKey = "value";

} // namespace Virelo::Texts
