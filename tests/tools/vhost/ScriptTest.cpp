// Scripts run in-process against the test module: syntax errors, overload resolution,
// NONE values, call() without resolution, lasterror(), result checks, and the exit status.
#include "tools/vhost/host/Host.h"
#include "tools/vhost/script/Interpreter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

struct ScriptRow {
    const char* fName;
    const char* fScript;
    int fExit;
    const char* fOut;
    const char* fErr;
};

struct RunResult {
    int fExit;
    std::string fOut;
    std::string fErr;
};

RunResult RunText(const std::string& script) {
    std::ostringstream out;
    std::ostringstream err;
    vhost::Host host(err);
    host.Context().SetQuiet(true);
    std::string error;
    EXPECT_TRUE(host.LoadModule(VHOST_TEST_MODULE, error)) << error;
    vhost::Interpreter interpreter(host, out, err);
    const int exit = interpreter.RunScript(script, "t.vs", VHOST_TEST_FOLDER);
    return {exit, out.str(), err.str()};
}

void RunRows(const ScriptRow* rows, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const ScriptRow& row = rows[i];
        SCOPED_TRACE(row.fName);
        const RunResult result = RunText(row.fScript);
        EXPECT_EQ(result.fExit, row.fExit);
        EXPECT_EQ(result.fOut, row.fOut);
        EXPECT_EQ(result.fErr, row.fErr);
    }
}

} // namespace

// clang-format off
static const ScriptRow sSyntaxRows[] = {
    // nothing runs when the text does not parse
    {"error after output", "print(1)\nprint(2", 2, "", "t.vs:2: expected ',' or ')', found the end of the statement\n"},
    {"let without name", "let = 3", 2, "", "t.vs:1: expected a variable name, found '='\n"},
    {"reserved name", "let true = 3", 2, "", "t.vs:1: expected a variable name, found 'true'\n"},
    {"dotted variable", "a.b", 2, "", "t.vs:1: expected '(' after a.b\n"},
    {"two values", "print(1) print(2)", 2, "", "t.vs:1: unexpected 'print'\n"},
    {"leading zero", "print(01)", 2, "", "t.vs:1: bad number '01'\n"},
    {"bare fraction", "print(1.)", 2, "", "t.vs:1: bad number '1.'\n"},
    {"minus alone", "print(-nan)", 2, "", "t.vs:1: bad number '-nan'\n"},
    {"bad escape", "print(\"\\q\")", 2, "", "t.vs:1: unknown escape \\q\n"},
    {"short unicode", "print(\"\\u12\")", 2, "", "t.vs:1: \\u needs four hex digits\n"},
    {"open string", "\nprint('abc)\n", 2, "", "t.vs:2: unterminated string\n"},
    {"stray character", "print(1) & 2", 2, "", "t.vs:1: unexpected character '&'\n"},
    {"trailing comma", "print([1,])", 2, "", "t.vs:1: expected a value, found ']'\n"},
    // a byte-order mark is skipped only where a file starts
    {"late byte-order mark", "print(1)\n\xEF\xBB\xBF", 2, "", "t.vs:2: unexpected byte 239\n"},
};
// clang-format on

TEST(Script, SyntaxErrorsStopBeforeRunning) {
    RunRows(sSyntaxRows, std::size(sSyntaxRows));
    const RunResult deep = RunText(std::string(100000, '['));
    EXPECT_EQ(deep.fExit, 2);
    EXPECT_EQ(deep.fErr, "t.vs:1: expression nested too deeply\n");
}

// clang-format off
static const ScriptRow sRunRows[] = {
    // statements, comments and separators
    {"separators", "let a = 1; b = \"x#y\" # note\n\n;print(a, b)", 0, "1 x#y\n", ""},
    {"byte-order mark", "\xEF\xBB\xBFprint(1)\nexpect(2, 3)", 1, "1\nFAIL t.vs:2: got <2>, expected <3>\n", ""},
    {"rebinding", "a = 1\na = 'two'\nprint(a)", 0, "two\n", ""},
    // overloads: first fit in definition order, [] fits any vector
    {"number overload", "print(Add(1, 2))", 0, "3\n", ""},
    {"string overload", "print(Add('a', 'b'))", 0, "ab\n", ""},
    {"vector overloads", "print(Count([1,2,3]), Count(['a']), Count([]))", 0, "3 1 0\n", ""},
    {"vector result", "print(Split('a,b,,c'), Split(''))", 0, "[\"a\", \"b\", \"\", \"c\"] []\n", ""},
    // objects and NONE
    {"object display", "j = JSON.FromString('{\"a\":1}'); print(j, typeof(j), IsNone(j))", 0,
     "{\"a\":1} JSON false\n", ""},
    {"none result", "n = JSON.FromString(''); print(n, typeof(n), IsNone(n), lasterror())", 0,
     "<none> NONE true 1 JSON Test.Empty: empty text\n", ""},
    {"none to module", "print(ToString(JSON.FromString('')), lasterror())", 0, " status 65540\n", ""},
    // data blocks: a direct pointer or reads only
    {"data blocks", "print(Data.IsDirect(hex2data('01')), Data.IsDirect(hex2stream('01')), "
                    "Data.Reverse(hex2stream('01 02 ff')), data2hex(Data.Reverse(hex2data(''))))",
     0, "true false FF 02 01 \n", ""},
    // imports through the context, call site in the context
    {"imported functions", "print(Import('[1]'))", 0, "[1]\n", ""},
    {"call site", "\n\nprint(Where())", 0, "t.vs:3 value=3\n", "log: debug 3, line 3: where: asked\n"},
    // call(): exactly the arguments given, the status word through lasterror()
    {"call missing argument", "print(call('vt_AddNumbers', 1)); print(lasterror())", 0, "0\nstatus 131073\n", ""},
    {"call wrong type", "call('vt_AddStrings', 'a', 2); print(lasterror(), lasterror())", 0, "status 131074 \n", ""},
    {"call none", "print(call('vt_IsNone', JSON.FromString('')))", 0, "true\n", ""},
    {"call fine", "print(call('vt_AddStrings', 'a', 'b'), lasterror())", 0, "ab \n", ""},
    // expect goes on after a failure; the exit status says so
    {"expect", "expect(Add(1, 2), 3)\nexpect('', ' ')\nprint('after')", 1,
     "FAIL t.vs:2: got <>, expected < >\nafter\n", ""},
    {"expect display forms", "expect(1.0, 1); expect([1], '[1]'); expect(JSON.FromString('x'), 'x')", 0, "", ""},
    {"readfile", "print(str2hex(readfile('readfile.bin')))", 0, "61 00 FF 0A\n", ""},
};
// clang-format on

TEST(Script, CallsResolveConvertAndReport) {
    RunRows(sRunRows, std::size(sRunRows));
}

// clang-format off
static const ScriptRow sScriptErrorRows[] = {
    // the run stops at the first script error, after what came before
    {"unknown function", "print(1)\nNope(2)\nprint(3)", 2, "1\n", "t.vs:2: unknown function Nope\n"},
    // the overloads as declared follow, so the right argument kinds are at hand
    {"no overload", "Add(1, 'a')", 2, "", "t.vs:1: no overload of Add fits (NUMBER, STRING); its overloads:\n"
     "  CONST_FUNCTION NUMBER Add (NUMBER,NUMBER) : vt_AddNumbers\n"
     "  CONST_FUNCTION STRING Add (STRING,STRING) : vt_AddStrings\n"},
    {"no overload for object", "Add(JSON.FromString('x'), [])", 2, "",
     "t.vs:1: no overload of Add fits (JSON, VECTOR<STRING>); its overloads:\n"
     "  CONST_FUNCTION NUMBER Add (NUMBER,NUMBER) : vt_AddNumbers\n"
     "  CONST_FUNCTION STRING Add (STRING,STRING) : vt_AddStrings\n"},
    {"no overload of an unavailable function", "Gone()", 2, "",
     "t.vs:1: no overload of Gone fits (); its overloads:\n"
     "  CONST_FUNCTION STRING Gone (STRING) : vt_NotExported [unavailable]\n"},
    {"missing symbol", "Gone('x')", 2, "", "t.vs:1: Gone is declared but vt_NotExported is missing from the module\n"},
    {"missing symbol by call", "call('vt_NotExported')", 2, "",
     "t.vs:1: Gone is declared but vt_NotExported is missing from the module\n"},
    {"unknown symbol", "call('vt_Nothing')", 2, "", "t.vs:1: no module defines a function with symbol vt_Nothing\n"},
    {"wrong result kind", "WrongKind()", 2, "",
     "t.vs:1: WrongKind (vt_WrongKind): the result holds a STRING where NUMBER was declared\n"},
    {"unknown variable", "print(x)", 2, "", "t.vs:1: unknown variable x\n"},
    {"no value", "x = print()", 2, "\n", "t.vs:1: nothing to assign to x\n"},
    {"no value argument", "typeof(print())", 2, "\n", "t.vs:1: argument 1 of typeof has no value\n"},
    {"mixed vector", "[1, 'a']", 2, "", "t.vs:1: a vector's elements must be all strings, all numbers or all booleans\n"},
    {"nested vector", "[[1]]", 2, "", "t.vs:1: a vector holds strings, numbers or booleans, not VECTOR<NUMBER>\n"},
    {"bad hex", "hex2data('0g')", 2, "", "t.vs:1: hex2data: '0g' is not hex text\n"},
    {"odd hex", "hex2stream('012')", 2, "", "t.vs:1: hex2stream: odd number of hex digits\n"},
    {"builtin arguments", "data2hex('01')", 2, "", "t.vs:1: data2hex takes one DATAREF\n"},
    {"missing file", "readfile('no such file')", 2, "",
     "t.vs:1: cannot read " VHOST_TEST_FOLDER "/no such file\n"},
};
// clang-format on

TEST(Script, ScriptErrorsStopTheRunWithStatusTwo) {
    RunRows(sScriptErrorRows, std::size(sScriptErrorRows));
}

TEST(Script, InteractivePromptShowsValuesAndGoesOnAfterErrors) {
    std::istringstream in("let a = Add(1, 2)\na\nNope()\n'x'; print('y')\nexpect(a, 4)\n");
    std::ostringstream out;
    std::ostringstream err;
    vhost::Host host(err);
    std::string error;
    ASSERT_TRUE(host.LoadModule(VHOST_TEST_MODULE, error)) << error;
    vhost::Interpreter interpreter(host, out, err);
    vhost::StreamLineReader lines(in);
    EXPECT_EQ(interpreter.RunInteractive(lines), 2);
    EXPECT_EQ(out.str(), "3\nx\ny\nFAIL <stdin>:5: got <3>, expected <4>\n");
    EXPECT_EQ(err.str(), "<stdin>:3: unknown function Nope\n");
}
