// Help: the prompt's `help` command (an overview, or one name: a built-in's description or
// a module function's overloads) and the overload list a call that fits none reports. The
// overloads are shown as the module's definition text declares them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vhost {

class Registry;

/// True when `line` is `help` or `help NAME` (blanks around allowed); `name` gets NAME or
/// "". Anything else, `help = 1` included, is left to the script parser.
bool ParseHelpCommand(std::string_view line, std::string& name);

/// What `help` prints: the statements, every built-in with its description, the module
/// functions' names and the editing keys. Ends with a newline.
std::string HelpOverview(const Registry& registry);

/// What `help NAME` prints: a built-in's usage and description, else each overload of the
/// module function, else a line saying nothing has that name. Ends with a newline.
std::string HelpFor(const Registry& registry, std::string_view name);

/// Each overload of `name` as --info writes its definition entry, in definition order, an
/// unavailable one marked `[unavailable]`; empty when no module defines `name`.
std::vector<std::string> OverloadDeclarations(const Registry& registry, const std::string& name);

} // namespace vhost
