// jsonfmt: formats JSON documents (and converts them to and from MessagePack) with the engine
// alone, in its standard profile, so that what a document means never changes. The manual is
// docs/jsonfmt.md; this file maps the command line to the run and every failure to a status.
#include "tools/jsonfmt/CommandLine.h"
#include "tools/jsonfmt/Formatter.h"

#include <exception>
#include <iostream>
#include <new>

int main(int argc, char** argv) {
    using namespace jsonfmt;
    try {
        const CommandLine line = ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
        switch (line.fAction) {
        case CommandLine::EAction::kHelp:
            return PrintToStandardOutput(HelpText(), std::cerr);
        case CommandLine::EAction::kVersion:
            return PrintToStandardOutput(VersionText(), std::cerr);
        case CommandLine::EAction::kUsageError:
            std::cerr << "jsonfmt: " << line.fError << "\nTry 'jsonfmt --help' for more information.\n";
            return kTrouble;
        case CommandLine::EAction::kRun:
            break;
        }
        return Format(line.fOptions, std::cerr);
    } catch (const std::bad_alloc&) {
        std::cerr << "jsonfmt: out of memory\n";
    } catch (const std::exception& failure) {
        std::cerr << "jsonfmt: " << failure.what() << '\n';
    } catch (...) {
        std::cerr << "jsonfmt: unexpected failure\n";
    }
    return kTrouble;
}
