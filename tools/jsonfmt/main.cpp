// jsonfmt: reads one JSON document from a file or standard input and writes it back compact
// or pretty, keeping member order. Bad input is reported as the module reports it to scripts.
//
//   jsonfmt [--indent TEXT | --tab | --spaces N] [FILE | -]
#include "json/JsonValue.h"
#include "json/ParserContext.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

namespace {

int Usage() {
    std::cerr << "usage: jsonfmt [--indent TEXT | --tab | --spaces N] [FILE | -]\n"
                 "Writes the JSON document back compact, or pretty with the given indent.\n";
    return 2;
}

bool ReadAll(std::istream& in, std::string& out) {
    out.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

} // namespace

int main(int argc, char** argv) {
    std::string indent;
    std::string path = "-";
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--indent" && i + 1 < argc) {
            indent = argv[++i];
        } else if (arg == "--tab") {
            indent = "\t";
        } else if (arg == "--spaces" && i + 1 < argc) {
            indent.assign(static_cast<size_t>(std::atoi(argv[++i])), ' ');
        } else if (arg == "-h" || arg == "--help") {
            Usage();
            return 0;
        } else if (!arg.empty() && arg[0] == '-' && arg != "-") {
            return Usage();
        } else {
            path = arg;
        }
    }

    std::string text;
    if (path == "-") {
        if (!ReadAll(std::cin, text)) return Usage();
    } else {
        std::ifstream file(path, std::ios::binary);
        if (!file || !ReadAll(file, text)) {
            std::cerr << "jsonfmt: cannot read " << path << "\n";
            return 2;
        }
    }

    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true;
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, &ctx, nullptr);
    if (!value) {
        std::cerr << "JSON parse error in line " << ctx.fLine << ": " << ctx.fError << "\n";
        return 1;
    }
    std::string out;
    if (indent.empty()) {
        value->AppendToString(out);
    } else {
        value->AppendToStringPretty(out, indent, "\n", 0);
    }
    out += '\n';
    std::cout << out;
    return 0;
}
