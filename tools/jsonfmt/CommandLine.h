// jsonfmt's command line: the options, the checks that refuse what would be ignored or
// contradict, and the help and version texts.
#pragma once

#include <string>
#include <vector>

namespace jsonfmt {

/// The widest --indent: enough for every common layout (2, 4, 8), and a bound on how much a
/// mistyped number can multiply a document's size.
inline constexpr int kMaxIndent = 16;

struct Options {
    bool fCompact = false;
    std::string fIndent = "  "; ///< pretty layout: one level's indentation
    bool fSortKeys = false;
    bool fCheck = false;
    bool fFromMsgPack = false;
    bool fToMsgPack = false;
    std::string fOutputPath;          ///< empty or "-": standard output
    std::vector<std::string> fInputs; ///< never empty; "-" is standard input
};

struct CommandLine {
    enum class EAction { kRun, kHelp, kVersion, kUsageError };
    EAction fAction = EAction::kRun;
    Options fOptions;
    std::string fError; ///< for kUsageError: what is wrong, in one line
};

/// Reads the arguments after the program name.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

const char* HelpText();
/// "jsonfmt VERSION" and a line break; the version is the project's.
std::string VersionText();

} // namespace jsonfmt
