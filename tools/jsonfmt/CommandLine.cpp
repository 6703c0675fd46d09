// jsonfmt's command line. Options and files may come in any order; "--" ends the options.
// When an option is given twice the last one counts; the layout options (--indent, --tab,
// --compact) replace one another. Options that would be silently ignored are usage errors.
#include "tools/jsonfmt/CommandLine.h"

namespace jsonfmt {

namespace {

CommandLine UsageError(std::string message) {
    CommandLine line;
    line.fAction = CommandLine::EAction::kUsageError;
    line.fError = std::move(message);
    return line;
}

CommandLine Only(CommandLine::EAction action) {
    CommandLine line;
    line.fAction = action;
    return line;
}

// Digits only: no sign, no blanks; at most two digits keep the value far from overflow.
bool ReadIndent(const std::string& text, int& blanks) {
    if (text.empty() || text.size() > 2) return false;
    blanks = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
        blanks = blanks * 10 + (c - '0');
    }
    return blanks <= kMaxIndent;
}

} // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine line;
    Options& options = line.fOptions;
    std::string layoutOption; // the last of --indent, --tab, --compact
    bool optionsEnded = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
            options.fInputs.push_back(argument); // "-" included: standard input
            continue;
        }
        const bool hasValue = i + 1 < arguments.size();
        if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--help") {
            return Only(CommandLine::EAction::kHelp);
        } else if (argument == "--version") {
            return Only(CommandLine::EAction::kVersion);
        } else if (argument == "--indent") {
            int blanks = 0;
            if (!hasValue) return UsageError("--indent needs a number of blanks");
            const std::string& value = arguments[++i];
            if (!ReadIndent(value, blanks)) {
                return UsageError("--indent takes a whole number of blanks from 0 to " +
                                  std::to_string(kMaxIndent) + ", not '" + value + "'");
            }
            options.fCompact = false;
            options.fIndent.assign(static_cast<size_t>(blanks), ' ');
            layoutOption = argument;
        } else if (argument == "--tab") {
            options.fCompact = false;
            options.fIndent = "\t";
            layoutOption = argument;
        } else if (argument == "--compact") {
            options.fCompact = true;
            layoutOption = argument;
        } else if (argument == "--sort-keys") {
            options.fSortKeys = true;
        } else if (argument == "--check") {
            options.fCheck = true;
        } else if (argument == "--from-msgpack") {
            options.fFromMsgPack = true;
        } else if (argument == "--to-msgpack") {
            options.fToMsgPack = true;
        } else if (argument == "-o") {
            if (!hasValue || arguments[i + 1].empty()) return UsageError("-o needs a file name");
            options.fOutputPath = arguments[++i];
        } else {
            return UsageError("unknown option " + argument);
        }
    }

    // What would be ignored is refused: the user meant something by it.
    if (options.fCheck) {
        const char* extra = !options.fOutputPath.empty() ? "-o"
                            : options.fToMsgPack        ? "--to-msgpack"
                            : !layoutOption.empty()     ? layoutOption.c_str()
                            : options.fSortKeys         ? "--sort-keys"
                                                        : nullptr;
        if (extra) return UsageError(std::string("--check writes nothing, so ") + extra + " does not go with it");
    }
    if (options.fToMsgPack && !layoutOption.empty())
        return UsageError("--to-msgpack writes no text, so " + layoutOption + " does not go with it");
    if (options.fInputs.empty()) options.fInputs.push_back("-");
    return line;
}

const char* HelpText() {
    return "usage: jsonfmt [OPTION]... [FILE]...\n"
           "Reads each JSON document named (standard input for - or when none is named) and\n"
           "writes it back formatted, in the order read, without changing what it means.\n"
           "\n"
           "  --indent N      indent N blanks per level, N from 0 to 16 (default: 2)\n"
           "  --tab           indent one tab per level\n"
           "  --compact       write each document on one line, without blanks\n"
           "  --sort-keys     write object members sorted by key (default: as read)\n"
           "  --check         only check that each input is valid; write nothing\n"
           "  -o FILE         write to FILE instead of standard output\n"
           "  --from-msgpack  read MessagePack instead of JSON text\n"
           "  --to-msgpack    write MessagePack instead of JSON text\n"
           "  --help          show this help and exit\n"
           "  --version       show the version and exit\n"
           "\n"
           "Errors read FILE:LINE:COLUMN: MESSAGE (columns count bytes; FILE is - for\n"
           "standard input). Exit status: 0 when every input was valid and written, 1 when\n"
           "an input is not valid, 2 for a usage error, an input that cannot be read or\n"
           "output that cannot be written.\n";
}

std::string VersionText() {
    return std::string("jsonfmt ") + JSONFMT_VERSION + "\n";
}

} // namespace jsonfmt
