// Options: the option parser and the help text.
#include "tools/vhost/cli/Options.h"

namespace vhost {

bool ParseOptions(int argc, char** argv, Options& options, std::string& problem) {
    bool haveScript = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--module" || arg == "-e") {
            if (i + 1 >= argc) {
                problem = arg + " needs a value";
                return false;
            }
            if (arg == "--module") {
                options.fModules.emplace_back(argv[++i]);
                continue;
            }
            options.fHasCode = true;
        } else if (arg == "--quiet") {
            options.fQuiet = true;
            continue;
        } else if (arg == "--strict") {
            options.fStrict = true;
            continue;
        } else if (arg == "--info") {
            options.fInfo = true;
            continue;
        } else if (arg == "--help" || arg == "-h") {
            options.fHelp = true;
            continue;
        } else if (arg.size() > 1 && arg[0] == '-') {
            problem = "unknown option " + arg;
            return false;
        }
        if (haveScript) {
            problem = "only one script or -e may be given";
            return false;
        }
        haveScript = true;
        options.fScript = options.fHasCode ? argv[++i] : arg;
    }
    return true;
}

const char* UsageLine() {
    return "usage: vhost [--module PATH]... [--quiet] [--strict] [--info] [SCRIPT | -e CODE]\n";
}

std::string HelpText() {
    return std::string(UsageLine()) +
           "\n"
           "Loads Virelo modules and runs a script file, or the CODE given with -e, against\n"
           "them. With neither it reads statements from standard input: on a terminal an\n"
           "interactive prompt with line editing and history (type help there).\n"
           "\n"
           "options:\n"
           "  --module PATH  load this module library (repeatable); without it\n"
           "                 ../lib/libvirelo_json.so beside vhost's folder\n"
           "  --quiet        do not print the errors modules report\n"
           "  --strict       an error a module reports fails the run: the script goes on and\n"
           "                 the exit status is 1 at the end\n"
           "  --info         print each module's metadata and definition entries\n"
           "  -e CODE        run CODE (named -e in error lines) instead of a script file\n"
           "  -h, --help     print this help and exit\n"
           "\n"
           "exit status: 0 when everything ran and every expect held; 1 when an expect failed\n"
           "or, with --strict, a module reported an error; 2 on a syntax or script error, or a\n"
           "bad command line or module.\n"
           "\n"
           "environment:\n"
           "  VHOST_HISTORY  the prompt's history file (default ~/.vhost_history; empty: none)\n"
           "\n"
           "docs/vhost.md describes the script language.\n";
}

} // namespace vhost
