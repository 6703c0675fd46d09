// Options: vhost's command line, read into Options, and the usage and --help texts.
#pragma once

#include <string>
#include <vector>

namespace vhost {

struct Options {
    std::vector<std::string> fModules;
    bool fQuiet = false;
    bool fStrict = false; ///< any error a module reports makes the exit status 1
    bool fInfo = false;
    bool fHelp = false;
    bool fHasCode = false;
    std::string fScript; ///< a file, or the -e code
};

/// Reads the arguments after the program name. False with a message in `problem` for an
/// unknown option, a missing value, or more than one script.
bool ParseOptions(int argc, char** argv, Options& options, std::string& problem);

/// The one-line synopsis, ending with a newline.
const char* UsageLine();
/// What --help prints: the synopsis, each option, the exit statuses and the environment.
std::string HelpText();

} // namespace vhost
