// vhost: the reference host. Loads modules through the binary interface and runs scripts,
// or reads statements at a prompt (line editing and history on a terminal).
//
//   vhost [--module PATH]... [--quiet] [--strict] [--info] [SCRIPT | -e CODE]
//
// Without --module it loads ../lib/libvirelo_json.so next to its own folder.
#include "tools/vhost/cli/LineEditor.h"
#include "tools/vhost/cli/Options.h"
#include "tools/vhost/host/Host.h"
#include "tools/vhost/host/ModuleDefinition.h"
#include "tools/vhost/script/Interpreter.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <system_error>

namespace {

constexpr int sExitUsage = 2;

int Usage(const std::string& problem) {
    std::cerr << "vhost: " << problem << "\n"
              << vhost::UsageLine() << "vhost --help describes the options\n";
    return sExitUsage;
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

// The prompt edits lines only when someone types them on a terminal and sees it; the
// editor draws on standard error when standard output is redirected.
int RunPrompt(vhost::Interpreter& interpreter) {
    std::FILE* screen = isatty(STDOUT_FILENO) ? stdout : stderr;
    if (isatty(STDIN_FILENO) && isatty(fileno(screen))) {
        vhost::LineEditor editor(screen, vhost::HistoryFilePath());
        return interpreter.RunInteractive(editor);
    }
    vhost::StreamLineReader lines(std::cin);
    return interpreter.RunInteractive(lines);
}

int RunScriptFile(vhost::Interpreter& interpreter, const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::error_code ec;
    if (!in || std::filesystem::is_directory(path, ec)) {
        std::cerr << "vhost: cannot read " << path << '\n';
        return sExitUsage;
    }
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return interpreter.RunScript(text, path, folder);
}

// --strict: a run that is otherwise fine fails when a module reported an error.
int ApplyStrict(int status, size_t reportCount) {
    if (reportCount == 0) return status;
    std::cerr << "vhost: --strict: the modules reported " << reportCount
              << (reportCount == 1 ? " error\n" : " errors\n");
    return status == vhost::Interpreter::sExitOk ? vhost::Interpreter::sExitExpectFailed : status;
}

} // namespace

int main(int argc, char** argv) {
    vhost::Options options;
    std::string problem;
    if (!vhost::ParseOptions(argc, argv, options, problem)) return Usage(problem);
    if (options.fHelp) {
        std::cout << vhost::HelpText();
        return 0;
    }
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
    int status = 0;
    if (options.fHasCode)
        status = interpreter.RunScript(options.fScript, "-e", "");
    else if (options.fScript.empty())
        status = RunPrompt(interpreter);
    else
        status = RunScriptFile(interpreter, options.fScript);
    std::cout << std::flush;
    if (options.fStrict) status = ApplyStrict(status, host.Context().Reports().size());
    return status;
}
