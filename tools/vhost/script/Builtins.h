// Builtins: the functions every script has (print, expect, lasterror, typeof, the hex and
// data helpers, readfile, call, and the host services serialize, deserialize, clone,
// transfer and lessthan). They are found before module functions of the same name.
#pragma once

#include "tools/vhost/script/ScriptParser.h"
#include "tools/vhost/script/ScriptValue.h"

#include <string_view>
#include <vector>

namespace vhost {

class Interpreter;

using BuiltinFunction = ScriptValue (*)(Interpreter& interpreter, const Expr& call,
                                        std::vector<ScriptValue>& arguments);

/// The built-in named `name`, or null.
BuiltinFunction FindBuiltin(std::string_view name);

} // namespace vhost
