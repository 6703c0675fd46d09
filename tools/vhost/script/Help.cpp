// Help: the help texts, built from the built-in table and the registry.
#include "tools/vhost/script/Help.h"

#include "tools/vhost/host/ModuleDefinition.h"
#include "tools/vhost/host/Registry.h"
#include "tools/vhost/script/Builtins.h"

#include <algorithm>
#include <cctype>
#include <unordered_set>

namespace vhost {

namespace {

constexpr std::string_view sHelpWord = "help";
constexpr size_t sLineWidth = 100;

bool IsBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

// The line split at blanks.
std::vector<std::string_view> Words(std::string_view line) {
    std::vector<std::string_view> words;
    size_t pos = 0;
    while (pos < line.size()) {
        while (pos < line.size() && IsBlank(line[pos]))
            ++pos;
        const size_t start = pos;
        while (pos < line.size() && !IsBlank(line[pos]))
            ++pos;
        if (pos > start) words.push_back(line.substr(start, pos - start));
    }
    return words;
}

// Each name once, in definition order.
std::vector<std::string_view> FunctionNames(const Registry& registry) {
    std::vector<std::string_view> names;
    std::unordered_set<std::string_view> seen;
    for (const RegisteredFunction& function : registry.Functions())
        if (seen.insert(function.fName).second) names.push_back(function.fName);
    return names;
}

// The words joined by blanks into indented lines no wider than sLineWidth.
std::string Wrap(const std::vector<std::string_view>& words, std::string_view indent) {
    std::string text;
    size_t column = 0;
    for (std::string_view word : words) {
        if (column > 0 && column + 1 + word.size() > sLineWidth) {
            text += '\n';
            column = 0;
        }
        if (column == 0) {
            text += indent;
            column = indent.size();
        } else {
            text += ' ';
            ++column;
        }
        text += word;
        column += word.size();
    }
    return text.empty() ? text : text + '\n';
}

} // namespace

bool ParseHelpCommand(std::string_view line, std::string& name) {
    const std::vector<std::string_view> words = Words(line);
    if (words.empty() || words.size() > 2 || words[0] != sHelpWord) return false;
    if (words.size() == 2 && words[1].front() == '=') return false; // binds a variable
    name = words.size() == 2 ? std::string(words[1]) : std::string();
    return true;
}

std::string HelpOverview(const Registry& registry) {
    std::string text =
        "Each line holds statements separated by ';': let NAME = EXPR, NAME = EXPR, or an\n"
        "expression, whose value is printed. docs/vhost.md describes the language.\n"
        "\nBuilt-ins:\n";
    size_t width = 0;
    for (const BuiltinEntry& entry : Builtins())
        width = std::max(width, entry.fUsage.size());
    for (const BuiltinEntry& entry : Builtins()) {
        text += "  " + std::string(entry.fUsage);
        text += std::string(width + 2 - entry.fUsage.size(), ' ');
        text += std::string(entry.fSummary) + '\n';
    }
    const std::vector<std::string_view> names = FunctionNames(registry);
    if (!names.empty()) {
        text += "\nModule functions (help NAME lists the overloads of one):\n";
        text += Wrap(names, "  ");
    }
    text += "\nhelp NAME describes a built-in or lists a module function's overloads.\n"
            "Keys: Up and Down recall earlier lines, Ctrl-C abandons the line being typed,\n"
            "Ctrl-D ends the session.\n";
    return text;
}

std::string HelpFor(const Registry& registry, std::string_view name) {
    if (name == sHelpWord)
        return "help [NAME]: an overview, or a built-in's description or a module function's "
               "overloads\n";
    if (const BuiltinEntry* entry = FindBuiltinEntry(name))
        return std::string(entry->fUsage) + ": " + std::string(entry->fSummary) + '\n';
    const std::vector<std::string> overloads = OverloadDeclarations(registry, std::string(name));
    if (overloads.empty())
        return "no built-in or module function is named " + std::string(name) + '\n';
    std::string text;
    for (const std::string& overload : overloads)
        text += overload + '\n';
    return text;
}

std::vector<std::string> OverloadDeclarations(const Registry& registry, const std::string& name) {
    std::vector<std::string> lines;
    for (const RegisteredFunction* function : registry.FindFunctions(name)) {
        FunctionEntry entry{function->fReturn.fName, function->fName, {}, function->fSymbol};
        for (const TypeRef& parameter : function->fParameters)
            entry.fParameters.push_back(parameter.fName);
        std::string line = FormatFunctionEntry(entry);
        if (!function->IsAvailable()) line += " [unavailable]";
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace vhost
