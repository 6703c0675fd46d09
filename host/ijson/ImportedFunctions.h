// The three host functions this module imports by name for documents whose script type "JSON"
// belongs to another implementation: "JSON.CreateEmptyObject", "JSON.FromString" and
// "ToString". Each handle is looked up on first use and again whenever the context's host
// interface id changes (or no function was found before); the cache is guarded by a mutex.
//
// Failures are reported on the context with source "Virelo" and severity 2: a missing function
// as "Error.Virelo.InvalidFunction", a non-zero status word as "Error.Virelo.InvalidArgument".
// A context that holds an error or is interrupted after the call is written to its debug log.
// Every function gives an empty result on failure and with a null context, and never throws
// (an exception gives the empty result too).
#pragma once

#include "host/VireloInterfaces.h"

#include <string>

namespace Virelo::JSON {

/// A new, empty script "JSON" value of whichever module provides the type.
AutoRefPtr<IUserDefinedType> JSON_CreateEmptyObject(IContext* context);
/// A script "JSON" value parsed by the provider of the type from `text`.
AutoRefPtr<IUserDefinedType> JSON_FromString(const std::string& text, IContext* context);
/// The text of a script "JSON" value, made by the provider of the type.
std::string JSON_ToString(const AutoRefPtr<IUserDefinedType>& object, IContext* context);

} // namespace Virelo::JSON
