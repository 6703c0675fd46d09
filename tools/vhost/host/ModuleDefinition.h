// ModuleDefinition: the entries of a module's definition text (its types and its script
// functions) and the parser that reads them. Only the syntax is checked here; whether the
// type names exist is the registry's business.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vhost {

/// `TYPE NAME : FACTORY : ATTRIBUTE...`
struct TypeEntry {
    std::string fName;
    std::string fFactory;
    std::vector<std::string> fAttributes;
};

/// `CONST_FUNCTION RETURNTYPE SCRIPT.NAME (PARAM,...) : SYMBOL`
struct FunctionEntry {
    std::string fReturnType;
    std::string fName;
    std::vector<std::string> fParameters;
    std::string fSymbol;
};

struct ModuleDefinition {
    std::vector<TypeEntry> fTypes;
    std::vector<FunctionEntry> fFunctions;
};

/// Reads a definition text. On failure returns false and leaves a message naming the entry
/// (1-based) and what was expected in `error`; `out` is then unspecified. Never throws for
/// bad text. A text of white space only has no entries and is accepted.
bool ParseModuleDefinition(std::string_view text, ModuleDefinition& out, std::string& error);

/// The entries written back one per line as the definition spells them, for --info.
std::string FormatTypeEntry(const TypeEntry& entry);
std::string FormatFunctionEntry(const FunctionEntry& entry);

} // namespace vhost
