// ValueBridge: script values to argument variants and result variants back to script
// values, and the fit test of overload resolution.
#pragma once

#include "tools/vhost/host/HostVariant.h"
#include "tools/vhost/host/Registry.h"
#include "tools/vhost/script/ScriptValue.h"

#include <string>

namespace vhost {

/// Whether `value` fits a parameter of `type`: the same kind, `[]` for any vector, NONE for
/// any user-defined type, an object for its own type only.
bool FitsParameter(const ScriptValue& value, const TypeRef& type);

/// A new argument variant holding `value` (not eNothing). `parameter` may be null (call()
/// passes arguments unchecked); when given it supplies the type id of a NONE and the element
/// kind of `[]`, which otherwise are the NONE's own type and strings.
Virelo::AutoRefPtr<HostVariant> MakeArgument(const ScriptValue& value, const TypeRef* parameter);

/// Reads the result of a function declared to return `type`. False with a message when the
/// variant holds another kind than declared or a vector with elements of another kind.
bool ReadResult(const Virelo::IVariant& result, const TypeRef& type, const Registry& registry,
                ScriptValue& out, std::string& error);

} // namespace vhost
