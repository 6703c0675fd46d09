// Builtins: the functions every script has (print, expect, lasterror, typeof, the hex and
// data helpers, readfile, call, and the host services serialize, deserialize, clone,
// transfer and lessthan). They are found before module functions of the same name.
#pragma once

#include "tools/vhost/script/ScriptParser.h"
#include "tools/vhost/script/ScriptValue.h"

#include <span>
#include <string_view>
#include <vector>

namespace vhost {

class Interpreter;

using BuiltinFunction = ScriptValue (*)(Interpreter& interpreter, const Expr& call,
                                        std::vector<ScriptValue>& arguments);

struct BuiltinEntry {
    std::string_view fName;
    BuiltinFunction fFunction;
    std::string_view fUsage;   ///< e.g. "print(EXPR, ...)"
    std::string_view fSummary; ///< one line for help
};

/// The built-in named `name`, or null.
BuiltinFunction FindBuiltin(std::string_view name);
const BuiltinEntry* FindBuiltinEntry(std::string_view name);
/// Every built-in, in the order help lists them.
std::span<const BuiltinEntry> Builtins();

} // namespace vhost
