// jsonfmt's command line: every option, defaults, the last layout option counting, files and
// "--", and each refusal with its message.
#include "tools/jsonfmt/CommandLine.h"

#include <gtest/gtest.h>

namespace {

using jsonfmt::CommandLine;

// The parse in one line: the options that differ from the defaults, then the inputs; or the
// action; or "error: MESSAGE".
std::string Describe(const std::vector<std::string>& arguments) {
    const CommandLine line = jsonfmt::ParseCommandLine(arguments);
    switch (line.fAction) {
    case CommandLine::EAction::kHelp: return "help";
    case CommandLine::EAction::kVersion: return "version";
    case CommandLine::EAction::kUsageError: return "error: " + line.fError;
    case CommandLine::EAction::kRun: break;
    }
    const jsonfmt::Options& options = line.fOptions;
    std::string text = options.fCompact ? "compact" : "indent '" + options.fIndent + "'";
    if (options.fSortKeys) text += " sort";
    if (options.fCheck) text += " check";
    if (options.fFromMsgPack) text += " from";
    if (options.fToMsgPack) text += " to";
    if (!options.fOutputPath.empty()) text += " -o " + options.fOutputPath;
    for (const std::string& input : options.fInputs) text += " <" + input + ">";
    return text;
}

TEST(CommandLine, OptionsAndFiles) {
    struct Row { std::vector<std::string> fArguments; std::string fExpected; };
    const Row rows[] = {
        {{}, "indent '  ' <->"},
        {{"--indent", "4"}, "indent '    ' <->"},
        {{"--indent", "0"}, "indent '' <->"},
        {{"--indent", "16"}, "indent '                ' <->"},
        {{"--indent", "04"}, "indent '    ' <->"},
        {{"--tab"}, "indent '\t' <->"},
        {{"--compact"}, "compact <->"},
        {{"--compact", "--indent", "3"}, "indent '   ' <->"},
        {{"--indent", "3", "--tab", "--compact"}, "compact <->"},
        {{"--sort-keys"}, "indent '  ' sort <->"},
        {{"--check"}, "indent '  ' check <->"},
        {{"--from-msgpack", "--to-msgpack"}, "indent '  ' from to <->"},
        {{"-o", "out.json", "-o", "last.json"}, "indent '  ' -o last.json <->"},
        {{"a.json", "-", "--compact", "b.json"}, "compact <a.json> <-> <b.json>"},
        {{"--", "--tab", "-", "-x"}, "indent '  ' <--tab> <-> <-x>"},
        {{"", "x"}, "indent '  ' <> <x>"},
        {{"--compact", "--help", "--bogus"}, "help"},
        {{"a.json", "--version"}, "version"},
    };
    for (const Row& row : rows) {
        std::string arguments;
        for (const std::string& argument : row.fArguments) arguments += " '" + argument + "'";
        SCOPED_TRACE(arguments);
        EXPECT_EQ(Describe(row.fArguments), row.fExpected);
    }
}

TEST(CommandLine, Refusals) {
    const std::string indent = "error: --indent takes a whole number of blanks from 0 to 16, not ";
    struct Row { std::vector<std::string> fArguments; std::string fExpected; };
    const Row rows[] = {
        {{"--indent", "-1"}, indent + "'-1'"},
        {{"--indent", "abc"}, indent + "'abc'"},
        {{"--indent", "17"}, indent + "'17'"},
        {{"--indent", "100"}, indent + "'100'"},
        {{"--indent", ""}, indent + "''"},
        {{"--indent", "+4"}, indent + "'+4'"},
        {{"--indent", " 4"}, indent + "' 4'"},
        {{"--indent"}, "error: --indent needs a number of blanks"},
        {{"-o"}, "error: -o needs a file name"},
        {{"-o", ""}, "error: -o needs a file name"},
        {{"--spaces", "2"}, "error: unknown option --spaces"},
        {{"--indent=2"}, "error: unknown option --indent=2"},
        {{"-x"}, "error: unknown option -x"},
        {{"--bogus", "--help"}, "error: unknown option --bogus"},
        {{"--check", "-o", "x"}, "error: --check writes nothing, so -o does not go with it"},
        {{"--check", "--to-msgpack"}, "error: --check writes nothing, so --to-msgpack does not go with it"},
        {{"--tab", "--check"}, "error: --check writes nothing, so --tab does not go with it"},
        {{"--check", "--sort-keys"}, "error: --check writes nothing, so --sort-keys does not go with it"},
        {{"--to-msgpack", "--indent", "2"}, "error: --to-msgpack writes no text, so --indent does not go with it"},
        {{"--compact", "--to-msgpack"}, "error: --to-msgpack writes no text, so --compact does not go with it"},
    };
    for (const Row& row : rows) {
        std::string arguments;
        for (const std::string& argument : row.fArguments) arguments += " '" + argument + "'";
        SCOPED_TRACE(arguments);
        EXPECT_EQ(Describe(row.fArguments), row.fExpected);
    }
}

TEST(CommandLine, HelpNamesEveryOption) {
    const std::string help = jsonfmt::HelpText();
    for (const char* option : {"--indent N", "--tab", "--compact", "--sort-keys", "--check", "-o FILE",
                               "--from-msgpack", "--to-msgpack", "--help", "--version"}) {
        EXPECT_NE(help.find(option), std::string::npos) << option;
    }
    EXPECT_EQ(jsonfmt::VersionText().rfind("jsonfmt 1.", 0), 0u);
}

} // namespace
