// vhost: the reference host. Loads modules through the binary interface and runs scripts.
//
//   vhost [--module PATH]... [--quiet] [--info] [SCRIPT | -e CODE]
//
// Without --module it loads ../lib/libvirelo_json.so next to its own folder.
#include "tools/vhost/host/Host.h"
#include "tools/vhost/host/ModuleDefinition.h"
#include "tools/vhost/script/Interpreter.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr int sExitUsage = 2;

struct Options {
    std::vector<std::string> fModules;
    bool fQuiet = false;
    bool fInfo = false;
    bool fHasCode = false;
    std::string fScript; ///< a file, or the -e code
};

int Usage(const std::string& problem) {
    std::cerr << "vhost: " << problem << "\n"
              << "usage: vhost [--module PATH]... [--quiet] [--info] [SCRIPT | -e CODE]\n";
    return sExitUsage;
}

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
        } else if (arg == "--info") {
            options.fInfo = true;
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

// The project's module lives in lib/ beside the bin/ folder holding vhost.
std::string DefaultModulePath(const char* argv0) {
    std::error_code ec;
    std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) self = std::filesystem::absolute(argv0, ec);
    return (self.parent_path() / ".." / "lib" / "libvirelo_json.so").lexically_normal().string();
}

void PrintInfo(const vhost::ModuleLibrary& module) {
    for (const vhost::MetadataValue& value : module.Metadata())
        std::cout << value.fName << ": " << value.fValue << '\n';
    const vhost::ModuleDefinition& definition = module.Definition();
    for (const vhost::TypeEntry& entry : definition.fTypes) {
        std::cout << vhost::FormatTypeEntry(entry);
        if (!module.FindSymbol(entry.fFactory)) std::cout << " [unavailable]";
        std::cout << '\n';
    }
    for (const vhost::FunctionEntry& entry : definition.fFunctions) {
        std::cout << vhost::FormatFunctionEntry(entry);
        if (!module.FindSymbol(entry.fSymbol)) std::cout << " [unavailable]";
        std::cout << '\n';
    }
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    std::string problem;
    if (!ParseOptions(argc, argv, options, problem)) return Usage(problem);
    if (options.fModules.empty()) options.fModules.push_back(DefaultModulePath(argv[0]));

    vhost::Host host(std::cerr);
    host.Context().SetQuiet(options.fQuiet);
    for (const std::string& path : options.fModules) {
        std::string error;
        if (!host.LoadModule(path, error)) {
            std::cerr << "vhost: " << error << '\n';
            return sExitUsage;
        }
    }
    if (options.fInfo) {
        for (size_t i = 0; i < host.Modules().size(); ++i) {
            if (i > 0) std::cout << '\n';
            PrintInfo(*host.Modules()[i]);
        }
        if (options.fScript.empty() && !options.fHasCode) return 0;
    }

    vhost::Interpreter interpreter(host, std::cout, std::cerr);
    if (options.fHasCode) return interpreter.RunScript(options.fScript, "-e", "");
    if (options.fScript.empty()) {
        vhost::StreamLineReader lines(std::cin);
        return interpreter.RunInteractive(lines);
    }

    std::ifstream in(options.fScript, std::ios::binary);
    std::error_code ec;
    if (!in || std::filesystem::is_directory(options.fScript, ec)) {
        std::cerr << "vhost: cannot read " << options.fScript << '\n';
        return sExitUsage;
    }
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string folder = std::filesystem::path(options.fScript).parent_path().string();
    return interpreter.RunScript(text, options.fScript, folder);
}
