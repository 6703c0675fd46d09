// Interpreter: statement execution, evaluation and module calls.
#include "tools/vhost/script/Interpreter.h"

#include "tools/vhost/script/Builtins.h"
#include "tools/vhost/script/Display.h"
#include "tools/vhost/script/Help.h"
#include "tools/vhost/script/ValueBridge.h"

#include <string>

namespace vhost {

namespace {

// Editors on some systems start UTF-8 files with one; it is no part of the script.
std::string_view WithoutByteOrderMark(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    return text.substr(0, byteOrderMark.size()) == byteOrderMark ? text.substr(byteOrderMark.size())
                                                                 : text;
}

} // namespace

Interpreter::Interpreter(Host& host, std::ostream& out, std::ostream& err)
    : fHost(host), fOut(out), fErr(err) {}

int Interpreter::RunScript(std::string_view text, const std::string& file,
                           const std::string& folder) {
    fFile = file;
    fFolder = folder;
    std::vector<Statement> statements;
    SyntaxError syntax;
    if (!ParseScript(WithoutByteOrderMark(text), 1, statements, syntax)) {
        Report(syntax.fLine, syntax.fMessage);
        return sExitError;
    }
    try {
        for (const Statement& statement : statements)
            Execute(statement, false);
    } catch (const ScriptFault& fault) {
        Report(fault.fLine, fault.fMessage);
        return sExitError;
    }
    return fExpectFailed ? sExitExpectFailed : sExitOk;
}

int Interpreter::RunInteractive(LineReader& lines) {
    fFile = "<stdin>";
    fFolder.clear();
    bool hadError = false;
    std::string line;
    unsigned int number = 0;
    for (;;) {
        const LineReader::EResult result = lines.ReadLine(line);
        if (result == LineReader::EResult::eEnd) break;
        if (result == LineReader::EResult::eCancelled) continue;
        const std::string_view text = ++number == 1 ? WithoutByteOrderMark(line) : line;
        std::string helpName;
        if (ParseHelpCommand(text, helpName)) {
            const Registry& registry = fHost.GetRegistry();
            fOut << (helpName.empty() ? HelpOverview(registry) : HelpFor(registry, helpName))
                 << std::flush;
            continue;
        }
        std::vector<Statement> statements;
        SyntaxError syntax;
        if (!ParseScript(text, number, statements, syntax)) {
            Report(syntax.fLine, syntax.fMessage);
            hadError = true;
            continue;
        }
        try {
            for (const Statement& statement : statements)
                Execute(statement, true);
        } catch (const ScriptFault& fault) {
            Report(fault.fLine, fault.fMessage);
            hadError = true;
        }
    }
    return hadError ? sExitError : fExpectFailed ? sExitExpectFailed : sExitOk;
}

void Interpreter::Fail(unsigned int line, std::string message) const {
    throw ScriptFault{line, std::move(message)};
}

void Interpreter::Report(unsigned int line, const std::string& message) {
    fOut << std::flush;
    fErr << fFile << ":" << line << ": " << message << std::endl;
}

void Interpreter::Execute(const Statement& statement, bool show) {
    fLine = statement.fLine;
    ScriptValue value = Evaluate(statement.fExpr);
    if (!statement.fTarget.empty()) {
        if (value.fKind == EValueKind::eNothing)
            Fail(statement.fLine, "nothing to assign to " + statement.fTarget);
        fVariables[statement.fTarget] = std::move(value);
    } else if (show && value.fKind != EValueKind::eNothing) {
        // Flushed so that a value and a module's error report on standard error that
        // follows it keep their order.
        fOut << Display(value) << '\n' << std::flush;
    }
}

ScriptValue Interpreter::Evaluate(const Expr& expr) {
    switch (expr.fKind) {
    case Expr::EKind::eLiteral:
        return expr.fLiteral;
    case Expr::EKind::eVariable: {
        const auto found = fVariables.find(expr.fName);
        if (found == fVariables.end()) Fail(expr.fLine, "unknown variable " + expr.fName);
        return found->second;
    }
    case Expr::EKind::eVector:
        return EvaluateVector(expr);
    case Expr::EKind::eCall:
        return EvaluateCall(expr);
    }
    return {};
}

ScriptValue Interpreter::EvaluateVector(const Expr& expr) {
    ScriptValue vector;
    vector.fKind = EValueKind::eEmptyVector;
    for (const Expr& item : expr.fItems) {
        ScriptValue element = Evaluate(item);
        EValueKind kind = EValueKind::eNothing;
        switch (element.fKind) {
        case EValueKind::eString:
            kind = EValueKind::eStringVector;
            vector.fStrings.push_back(std::move(element.fString));
            break;
        case EValueKind::eNumber:
            kind = EValueKind::eNumberVector;
            vector.fNumbers.push_back(element.fNumber);
            break;
        case EValueKind::eBoolean:
            kind = EValueKind::eBooleanVector;
            vector.fBooleans.push_back(element.fBoolean);
            break;
        default:
            Fail(item.fLine,
                 "a vector holds strings, numbers or booleans, not " + KindName(element));
        }
        if (vector.fKind != EValueKind::eEmptyVector && vector.fKind != kind)
            Fail(item.fLine,
                 "a vector's elements must be all strings, all numbers or all booleans");
        vector.fKind = kind;
    }
    return vector;
}

ScriptValue Interpreter::EvaluateCall(const Expr& expr) {
    std::vector<ScriptValue> arguments;
    for (const Expr& item : expr.fItems) {
        arguments.push_back(Evaluate(item));
        if (arguments.back().fKind == EValueKind::eNothing)
            Fail(item.fLine, "argument " + std::to_string(arguments.size()) + " of " + expr.fName +
                                 " has no value");
    }
    if (BuiltinFunction builtin = FindBuiltin(expr.fName)) return builtin(*this, expr, arguments);

    const auto& candidates = fHost.GetRegistry().FindFunctions(expr.fName);
    if (candidates.empty()) Fail(expr.fLine, "unknown function " + expr.fName);
    for (const RegisteredFunction* function : candidates) {
        if (function->fParameters.size() != arguments.size()) continue;
        bool fits = true;
        for (size_t i = 0; i < arguments.size() && fits; ++i)
            fits = FitsParameter(arguments[i], function->fParameters[i]);
        if (fits) return CallFunction(*function, arguments, expr.fLine);
    }
    FailNoOverload(expr, arguments);
}

// Lists the overloads, so the fitting argument kinds need no look-up elsewhere.
void Interpreter::FailNoOverload(const Expr& expr, const std::vector<ScriptValue>& arguments) {
    std::string message = "no overload of " + expr.fName + " fits (";
    for (size_t i = 0; i < arguments.size(); ++i)
        message += (i > 0 ? ", " : "") + KindName(arguments[i]);
    message += "); its overloads:";
    for (const std::string& overload : OverloadDeclarations(fHost.GetRegistry(), expr.fName))
        message += "\n  " + overload;
    Fail(expr.fLine, std::move(message));
}

ScriptValue Interpreter::CallFunction(const RegisteredFunction& function,
                                      const std::vector<ScriptValue>& arguments,
                                      unsigned int line) {
    std::vector<Virelo::AutoRefPtr<HostVariant>> holders;
    std::vector<Virelo::IVariant*> variants;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const TypeRef* parameter =
            i < function.fParameters.size() ? &function.fParameters[i] : nullptr;
        holders.push_back(MakeArgument(arguments[i], parameter));
        variants.push_back(holders.back().Get());
    }
    Virelo::AutoRefPtr<HostVariant> result = Host::CreateResult(function.fReturn);
    try {
        fHost.Call(function, variants, result.Get(), fFile, line);
    } catch (const ModuleFault& fault) {
        Fail(line, fault.what());
    }
    ScriptValue value;
    std::string error;
    if (!ReadResult(*result, function.fReturn, fHost.GetRegistry(), value, error))
        Fail(line, function.fName + " (" + function.fSymbol + "): " + error);
    return value;
}

std::string Interpreter::Display(const ScriptValue& value) {
    return DisplayForm(value, [this](const ScriptValue& object) { return ObjectText(object); });
}

// An object shows as the text its module's ToString gives. That call is the host's own
// business, so it leaves the script's last error as it was.
std::string Interpreter::ObjectText(const ScriptValue& value) {
    const std::string fallback = "<" + value.fTypeName + ">";
    const RegisteredFunction* toString =
        fHost.GetRegistry().FindSignature("ToString", "STRING", {value.fTypeName});
    if (!toString) return fallback;
    HostContext& context = fHost.Context();
    const std::string savedError = context.PeekLastError();
    Virelo::AutoRefPtr<HostVariant> argument = MakeArgument(value, &toString->fParameters[0]);
    Virelo::AutoRefPtr<HostVariant> result = Host::CreateResult(toString->fReturn);
    std::vector<Virelo::IVariant*> variants{argument.Get()};
    unsigned int status = 1;
    try {
        status = fHost.Call(*toString, variants, result.Get(), fFile, fLine);
    } catch (const ModuleFault&) {
        status = 1;
    }
    context.SetLastError(savedError);
    if (status != 0 || result->Interface_GetType() != Virelo::eTypeString) return fallback;
    return std::string(result->Interface_GetStringData(),
                       static_cast<size_t>(result->Interface_GetStringLength()));
}

} // namespace vhost
