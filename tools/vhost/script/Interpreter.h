// Interpreter: runs parsed statements against a Host: variables, overload resolution of
// module calls, the conversions both ways and the display forms. A script stops at its
// first error; the interactive prompt reports it and goes on, and also answers `help`.
#pragma once

#include "tools/vhost/host/Host.h"
#include "tools/vhost/script/LineReader.h"
#include "tools/vhost/script/ScriptParser.h"
#include "tools/vhost/script/ScriptValue.h"

#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vhost {

/// A script error: reported as `FILE:LINE: message`, exit status 2.
struct ScriptFault {
    unsigned int fLine = 0;
    std::string fMessage;
};

class Interpreter {
public:
    static constexpr int sExitOk = 0;
    static constexpr int sExitExpectFailed = 1;
    static constexpr int sExitError = 2;

    /// Output (print, FAIL lines, prompt values) goes to `out`, error lines to `err`.
    Interpreter(Host& host, std::ostream& out, std::ostream& err);

    /// Runs a whole script named `file`; relative readfile paths start in `folder` (the
    /// current folder when empty). A leading UTF-8 byte-order mark is skipped. Returns
    /// sExitOk, sExitExpectFailed, or sExitError after a syntax or script error.
    int RunScript(std::string_view text, const std::string& file, const std::string& folder);
    /// Runs `lines` one at a time as `<stdin>` and prints the value of each expression
    /// statement; `help` lines print help instead. Errors are reported and reading goes
    /// on; a cancelled line is dropped uncounted. Returns the worst status seen.
    int RunInteractive(LineReader& lines);

    // ---- For the built-ins ----

    std::ostream& Out() { return fOut; }
    Host& GetHost() { return fHost; }
    const std::string& File() const { return fFile; }
    const std::string& Folder() const { return fFolder; }
    void NoteExpectFailure() { fExpectFailed = true; }
    /// The display form; objects through their module's ToString.
    std::string Display(const ScriptValue& value);
    /// Calls `function` with exactly `arguments`, no fit test; reports a missing symbol,
    /// an escaping exception and a result of the wrong kind as script errors.
    ScriptValue CallFunction(const RegisteredFunction& function,
                             const std::vector<ScriptValue>& arguments, unsigned int line);
    [[noreturn]] void Fail(unsigned int line, std::string message) const;

private:
    void Execute(const Statement& statement, bool show);
    ScriptValue Evaluate(const Expr& expr);
    ScriptValue EvaluateVector(const Expr& expr);
    ScriptValue EvaluateCall(const Expr& expr);
    [[noreturn]] void FailNoOverload(const Expr& expr, const std::vector<ScriptValue>& arguments);
    std::string ObjectText(const ScriptValue& value);
    void Report(unsigned int line, const std::string& message);

    Host& fHost;
    std::ostream& fOut;
    std::ostream& fErr;
    std::string fFile;
    std::string fFolder;
    unsigned int fLine = 0; ///< the statement running, for calls the host makes itself
    std::unordered_map<std::string, ScriptValue> fVariables;
    bool fExpectFailed = false;
};

} // namespace vhost
