// ModuleDefinition: a tokenizer and a recursive-descent reader for the definition text.
// Entries are told apart by their first word, so attribute lists end at the next entry
// keyword; white space between tokens is free.
#include "tools/vhost/host/ModuleDefinition.h"

#include <cctype>

namespace vhost {

namespace {

constexpr std::string_view sTypeKeyword = "TYPE";
constexpr std::string_view sFunctionKeyword = "CONST_FUNCTION";

bool IsWordChar(char c) {
    const auto u = static_cast<unsigned char>(c);
    return std::isalnum(u) || c == '_' || c == '.' || c == '<' || c == '>';
}

bool IsIdentifier(std::string_view word) {
    if (word.empty() || std::isdigit(static_cast<unsigned char>(word[0]))) return false;
    for (char c : word)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
    return true;
}

// dotted := identifier { "." identifier }
bool IsDottedName(std::string_view word) {
    size_t start = 0;
    for (;;) {
        const size_t dot = word.find('.', start);
        if (!IsIdentifier(word.substr(start, dot - start))) return false;
        if (dot == std::string_view::npos) return true;
        start = dot + 1;
    }
}

// type := identifier | "VECTOR<" identifier ">"
bool IsTypeName(std::string_view word) {
    constexpr std::string_view vectorPrefix = "VECTOR<";
    if (word.substr(0, vectorPrefix.size()) == vectorPrefix && word.back() == '>')
        return IsIdentifier(
            word.substr(vectorPrefix.size(), word.size() - vectorPrefix.size() - 1));
    return IsIdentifier(word);
}

class DefinitionReader {
public:
    DefinitionReader(std::string_view text, ModuleDefinition& out, std::string& error)
        : fText(text), fOut(out), fError(error) {}

    bool Read() {
        Next();
        while (!fToken.empty()) {
            ++fEntry;
            if (fToken == sTypeKeyword) {
                if (!ReadType()) return false;
            } else if (fToken == sFunctionKeyword) {
                if (!ReadFunction()) return false;
            } else {
                return Fail("expected TYPE or CONST_FUNCTION");
            }
        }
        return true;
    }

private:
    // entry := "TYPE" type ":" identifier ":" { identifier }
    bool ReadType() {
        TypeEntry entry;
        Next();
        if (!IsIdentifier(fToken)) return Fail("expected a type name");
        entry.fName = fToken;
        if (!Expect(":", "after the type name")) return false;
        if (!IsIdentifier(fToken)) return Fail("expected the factory symbol");
        entry.fFactory = fToken;
        if (!Expect(":", "after the factory symbol")) return false;
        while (!fToken.empty() && fToken != sTypeKeyword && fToken != sFunctionKeyword) {
            if (!IsIdentifier(fToken)) return Fail("expected an attribute");
            entry.fAttributes.emplace_back(fToken);
            Next();
        }
        fOut.fTypes.push_back(std::move(entry));
        return true;
    }

    // entry := "CONST_FUNCTION" type dotted "(" [ type { "," type } ] ")" ":" identifier
    bool ReadFunction() {
        FunctionEntry entry;
        Next();
        if (!IsTypeName(fToken)) return Fail("expected the return type");
        entry.fReturnType = fToken;
        Next();
        if (!IsDottedName(fToken)) return Fail("expected the function name");
        entry.fName = fToken;
        if (!Expect("(", "after the function name")) return false;
        if (fToken != ")") {
            for (;;) {
                if (!IsTypeName(fToken)) return Fail("expected a parameter type");
                entry.fParameters.emplace_back(fToken);
                Next();
                if (fToken == ")") break;
                if (fToken != ",") return Fail("expected ',' or ')' in the parameter list");
                Next();
            }
        }
        if (!Expect(":", "after the parameter list")) return false;
        if (!IsIdentifier(fToken)) return Fail("expected the function symbol");
        entry.fSymbol = fToken;
        Next();
        fOut.fFunctions.push_back(std::move(entry));
        return true;
    }

    // Checks that the current token is `what`, then moves past it.
    bool Expect(std::string_view what, std::string_view where) {
        Next();
        if (fToken != what)
            return Fail("expected '" + std::string(what) + "' " + std::string(where));
        Next();
        return true;
    }

    // token := ":" | "(" | ")" | "," | word; an empty token is the end of the text. A
    // character that can start no token becomes a one-character token nothing accepts.
    void Next() {
        while (fPos < fText.size() && std::isspace(static_cast<unsigned char>(fText[fPos])))
            ++fPos;
        const size_t start = fPos;
        if (fPos < fText.size()) {
            if (IsWordChar(fText[fPos])) {
                while (fPos < fText.size() && IsWordChar(fText[fPos]))
                    ++fPos;
            } else {
                ++fPos;
            }
        }
        fToken = fText.substr(start, fPos - start);
    }

    bool Fail(const std::string& message) {
        std::string found =
            fToken.empty() ? "the end of the text" : "'" + std::string(fToken) + "'";
        for (char& c : found)
            if (!std::isprint(static_cast<unsigned char>(c))) c = '?';
        fError = "entry " + std::to_string(fEntry) + ": " + message + ", found " + found;
        return false;
    }

    std::string_view fText;
    ModuleDefinition& fOut;
    std::string& fError;
    size_t fPos = 0;
    std::string_view fToken;
    int fEntry = 0;
};

} // namespace

bool ParseModuleDefinition(std::string_view text, ModuleDefinition& out, std::string& error) {
    out = ModuleDefinition();
    return DefinitionReader(text, out, error).Read();
}

std::string FormatTypeEntry(const TypeEntry& entry) {
    std::string line = "TYPE " + entry.fName + " : " + entry.fFactory + " :";
    for (const std::string& attribute : entry.fAttributes)
        line += " " + attribute;
    return line;
}

std::string FormatFunctionEntry(const FunctionEntry& entry) {
    std::string line = "CONST_FUNCTION " + entry.fReturnType + " " + entry.fName + " (";
    for (size_t i = 0; i < entry.fParameters.size(); ++i) {
        if (i > 0) line += ",";
        line += entry.fParameters[i];
    }
    return line + ") : " + entry.fSymbol;
}

} // namespace vhost
