// The interactive prompt in-process against the test module: which lines are help
// commands, what help answers, lines the reader reports as cancelled, a byte-order mark on
// the first line, and module errors reported with their <stdin>:N site. The terminal side
// (libedit, Ctrl-C) is checked through a pseudo-terminal by ReplTest.py.
#include "tools/vhost/host/Host.h"
#include "tools/vhost/script/Builtins.h"
#include "tools/vhost/script/Help.h"
#include "tools/vhost/script/Interpreter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr const char* sCancel = "<Ctrl-C>";

// Hands out the given lines; the line sCancel reads as a line the user abandoned.
class TypedLines final : public vhost::LineReader {
public:
    explicit TypedLines(std::vector<std::string> lines) : fLines(std::move(lines)) {}
    EResult ReadLine(std::string& line) override {
        if (fNext == fLines.size()) return EResult::eEnd;
        line = fLines[fNext++];
        return line == sCancel ? EResult::eCancelled : EResult::eLine;
    }

private:
    std::vector<std::string> fLines;
    size_t fNext = 0;
};

struct PromptRun {
    int fExit;
    std::string fOut;
    std::string fErr;
};

PromptRun RunPrompt(std::vector<std::string> lines) {
    std::ostringstream out;
    std::ostringstream err;
    vhost::Host host(err);
    std::string error;
    EXPECT_TRUE(host.LoadModule(VHOST_TEST_MODULE, error)) << error;
    vhost::Interpreter interpreter(host, out, err);
    TypedLines typed(std::move(lines));
    const int exit = interpreter.RunInteractive(typed);
    return {exit, out.str(), err.str()};
}

} // namespace

TEST(Prompt, HelpCommandsAreToldFromStatements) {
    struct Row {
        const char* fLine;
        bool fIsHelp;
        const char* fName;
    };
    const Row rows[] = {
        {"help", true, ""},
        {"  help\t", true, ""},
        {"help JSON.Set", true, "JSON.Set"},
        {" help  print ", true, "print"},
        {"help = 1", false, ""},
        {"help =1", false, ""},
        {"help=1", false, ""},
        {"help(1)", false, ""},
        {"help a b", false, ""},
        {"helper", false, ""},
        {"", false, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fLine);
        std::string name = "unchanged";
        EXPECT_EQ(vhost::ParseHelpCommand(row.fLine, name), row.fIsHelp);
        if (row.fIsHelp) {
            EXPECT_EQ(name, row.fName);
        }
    }
}

TEST(Prompt, HelpDescribesBuiltinsAndListsOverloadsAsDeclared) {
    struct Row {
        const char* fLine;
        const char* fOut;
    };
    const Row rows[] = {
        {"help Add", "CONST_FUNCTION NUMBER Add (NUMBER,NUMBER) : vt_AddNumbers\n"
                     "CONST_FUNCTION STRING Add (STRING,STRING) : vt_AddStrings\n"},
        {"help Gone", "CONST_FUNCTION STRING Gone (STRING) : vt_NotExported [unavailable]\n"},
        {"help print", "print(EXPR, ...): the display forms joined by one blank, then a newline\n"},
        {"help Nope", "no built-in or module function is named Nope\n"},
        {"help = 2; print(help)", "2\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fLine);
        const PromptRun run = RunPrompt({row.fLine});
        EXPECT_EQ(run.fExit, 0);
        EXPECT_EQ(run.fOut, row.fOut);
        EXPECT_EQ(run.fErr, "");
    }
}

TEST(Prompt, OverviewListsEveryBuiltinAndModuleFunction) {
    const PromptRun run = RunPrompt({"help"});
    EXPECT_EQ(run.fExit, 0);
    for (const vhost::BuiltinEntry& entry : vhost::Builtins()) {
        const std::string line = std::string(entry.fUsage) + " ";
        EXPECT_NE(run.fOut.find(line), std::string::npos) << entry.fName;
        EXPECT_NE(run.fOut.find(entry.fSummary), std::string::npos) << entry.fName;
    }
    // Each name once, however many overloads it has.
    const std::string names = run.fOut.substr(run.fOut.find("Module functions"));
    EXPECT_NE(names.find(" Add Count Split "), std::string::npos) << names;
    EXPECT_NE(run.fOut.find("help NAME"), std::string::npos);
}

TEST(Prompt, CancelledLinesAreDroppedAndErrorsCarryTheirLine) {
    // A byte-order mark only on the first line is skipped; a cancelled line is not
    // counted, so the module's error and the script error name lines 2 and 3.
    const PromptRun run =
        RunPrompt({"\xEF\xBB\xBFprint(1)", sCancel, "JSON.FromString('')", sCancel, "Nope()"});
    EXPECT_EQ(run.fExit, 2);
    EXPECT_EQ(run.fOut, "1\n<none>\n");
    EXPECT_EQ(run.fErr, "<stdin>:2: error: 1 JSON Test.Empty: empty text\n"
                        "<stdin>:3: unknown function Nope\n");
}
