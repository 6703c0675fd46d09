// Options, corpus, statistics and the shared main of the benchmark executables.
#include "bench/common/BenchSupport.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include <unistd.h>

#ifndef VIRELO_JSON_BENCH_DATA_DEFAULT
#define VIRELO_JSON_BENCH_DATA_DEFAULT "../shared/bench-data"
#endif

namespace bench {

namespace {
Options gOptions;
} // namespace

HeapProbe gHeapBytes = [] { return int64_t{0}; };
HeapProbe gHeapBlocks = [] { return int64_t{0}; };

namespace {

const char* const sCorpusFiles[] = {"twitter.json", "citm_catalog.json", "canada.json"};
const int sLinearCopies[] = {1, 4, 16, 64};

bool ReadFile(const std::string& path, std::string& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    out = buffer.str();
    return true;
}

std::vector<std::string> SplitList(const std::string& text) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= text.size()) {
        const size_t comma = std::min(text.find(',', start), text.size());
        if (comma > start) parts.push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
    return parts;
}

bool Near(double a, double b, double scale) {
    return std::fabs(a - b) <= 1e-9 * std::max(1.0, scale);
}

} // namespace

std::string Describe(const DocStats& s) {
    std::ostringstream out;
    out.precision(17);
    out << "objects " << s.fObjects << ", arrays " << s.fArrays << ", members " << s.fMembers
        << ", strings " << s.fStrings << " (" << s.fStringBytes << " bytes with keys)"
        << ", numbers " << s.fNumbers << " (sum " << s.fNumberSum << ", |sum| "
        << s.fNumberAbsSum << ")";
    if (s.fExactIntegers)
        out << ", integers " << s.fIntegers << " (checksum " << s.fIntegerChecksum << ")";
    out << ", true " << s.fTrues << ", false " << s.fFalses << ", null " << s.fNulls;
    return out.str();
}

bool SameStats(const DocStats& a, const DocStats& b) {
    if (a.fObjects != b.fObjects || a.fArrays != b.fArrays || a.fMembers != b.fMembers ||
        a.fStrings != b.fStrings || a.fStringBytes != b.fStringBytes ||
        a.fNumbers != b.fNumbers || a.fTrues != b.fTrues || a.fFalses != b.fFalses ||
        a.fNulls != b.fNulls)
        return false;
    const double scale = std::max(a.fNumberAbsSum, b.fNumberAbsSum);
    if (!Near(a.fNumberSum, b.fNumberSum, scale) || !Near(a.fNumberAbsSum, b.fNumberAbsSum, scale))
        return false;
    if (a.fExactIntegers && b.fExactIntegers &&
        (a.fIntegers != b.fIntegers || a.fIntegerChecksum != b.fIntegerChecksum))
        return false;
    return true;
}

void Fail(const std::string& message) {
    std::fflush(stdout);
    std::cerr << "bench: FAILED: " << message << std::endl;
    std::exit(3);
}

void ExpectSameStats(const std::string& library, const std::string& input, const std::string& what,
                     const DocStats& got, const DocStats& expected) {
    if (SameStats(got, expected)) return;
    Fail(library + " on " + input + ": " + what + " differs from ours\n  " + library + ": " +
         Describe(got) + "\n  ours: " + Describe(expected));
}

void ExpectSameText(const std::string& library, const Input& input, const std::string& what,
                    const std::string& text, bool exactIntegers) {
    DocStats got = OursStatsOfText(text, library + " " + what + " of " + input.fName);
    got.fExactIntegers = exactIntegers;
    ExpectSameStats(library, input.fName, what + " re-parsed by ours", got, input.fExpected);
}

Options TakeOptions(int& argc, char** argv) {
    Options options;
    if (const char* env = std::getenv("VIRELO_JSON_BENCH_DATA"); env && *env)
        options.fDataDir = env;
    else
        options.fDataDir = VIRELO_JSON_BENCH_DATA_DEFAULT;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg.rfind("--data=", 0) == 0) {
            options.fDataDir = arg.substr(7);
        } else if (arg.rfind("--files=", 0) == 0) {
            options.fFiles = SplitList(arg.substr(8));
            options.fFileList = arg.substr(8);
        } else if (arg.rfind("--probe=", 0) == 0) {
            options.fProbe = arg.substr(8);
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    argv[argc] = nullptr;
    return options;
}

void VisitOurs(const JsonValue& value, DocStats& stats) {
    switch (value.GetType()) {
    case JsonValue::eJsonString:
        stats.AddString(static_cast<const JsonString&>(value).Get().size());
        break;
    case JsonValue::eJsonInteger: {
        const auto& integer = static_cast<const JsonInteger&>(value);
        if (integer.IsUnsigned())
            stats.AddUnsigned(integer.Bits());
        else
            stats.AddInteger(static_cast<int64_t>(integer.Bits()));
        break;
    }
    case JsonValue::eJsonReal:
        stats.AddReal(value.GetAsReal());
        break;
    case JsonValue::eJsonObject:
        ++stats.fObjects;
        for (const JsonObject::Member& member : static_cast<const JsonObject&>(value).Members()) {
            stats.AddKey(member.Key().size());
            VisitOurs(*member.fValue, stats);
        }
        break;
    case JsonValue::eJsonArray:
        ++stats.fArrays;
        for (const JsonValue* element : static_cast<const JsonArray&>(value).Elements())
            VisitOurs(*element, stats);
        break;
    case JsonValue::eJsonTrue:
        ++stats.fTrues;
        break;
    case JsonValue::eJsonFalse:
        ++stats.fFalses;
        break;
    case JsonValue::eJsonNull:
        ++stats.fNulls;
        break;
    case JsonValue::eJsonCompiledObject:
        Fail("ours: a parse without a key table made a compiled object");
    }
}

DocStats OursStats(const JsonValue& value) {
    DocStats stats;
    VisitOurs(value, stats);
    return stats;
}

DocStats OursStatsOfText(const std::string& text, const std::string& what) {
    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true;
    JsonAutoRefPtr<JsonValue> tree = JsonValue::ReadFromString(text, &ctx, nullptr);
    if (!tree)
        Fail("ours cannot parse " + what + ": " + ctx.fError + " (line " +
             std::to_string(ctx.fLine) + ")");
    return OursStats(*tree);
}

Corpus LoadCorpus(const Options& options, bool withLinear) {
    Corpus corpus;
    for (const char* name : sCorpusFiles) {
        if (!options.fFiles.empty()) {
            bool wanted = false;
            for (const std::string& file : options.fFiles) wanted = wanted || file == name;
            if (!wanted) continue;
        }
        Input input;
        input.fName = name;
        const std::string path = options.fDataDir + "/" + name;
        if (!ReadFile(path, input.fText)) Fail("cannot read " + path);
        // A memory probe process parses nothing before its measurement.
        if (options.fProbe.empty()) input.fExpected = OursStatsOfText(input.fText, name);
        corpus.fFiles.push_back(std::move(input));
    }
    if (corpus.fFiles.empty()) Fail("no input file chosen in " + options.fDataDir);
    if (!withLinear) return corpus;

    const Input* twitter = nullptr;
    for (const Input& input : corpus.fFiles)
        if (input.fName == "twitter.json") twitter = &input;
    if (!twitter) return corpus;
    for (int copies : sLinearCopies) {
        Input input;
        char name[32];
        std::snprintf(name, sizeof name, "twitter-x%02d", copies);
        input.fName = name;
        input.fText.reserve(static_cast<size_t>(copies) * (twitter->fText.size() + 1) + 2);
        input.fText += '[';
        for (int i = 0; i < copies; ++i) {
            if (i) input.fText += ',';
            input.fText += twitter->fText;
        }
        input.fText += ']';
        if (options.fProbe.empty())
            input.fExpected = OursStatsOfText(input.fText, input.fName);
        corpus.fLinear.push_back(std::move(input));
    }
    return corpus;
}

DocStats OursStatsOfMsgPack(const std::string& bytes, const std::string& what) {
    JsonAutoRefPtr<JsonValue> tree = JsonValue::ReadFromMsgPack(bytes, nullptr, nullptr);
    if (!tree) Fail("ours cannot decode " + what);
    return OursStats(*tree);
}

std::string OursMsgPack(const Input& input) {
    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true;
    JsonAutoRefPtr<JsonValue> tree = JsonValue::ReadFromString(input.fText, &ctx, nullptr);
    std::string bytes;
    if (!tree || !tree->WriteToMsgPack(bytes)) Fail("ours cannot encode " + input.fName);
    return bytes;
}

std::string Name(const std::string& measurement, const std::string& input,
                 const std::string& library) {
    return measurement + "/" + input + "/" + library;
}

bool InProbeProcess() {
    return !gOptions.fProbe.empty();
}

bool IsProbeTarget(const std::string& name) {
    return gOptions.fProbe == name;
}

void FinishProbe(int64_t bytes, int64_t blocks) {
    std::printf("%lld %lld\n", static_cast<long long>(bytes), static_cast<long long>(blocks));
    std::fflush(stdout);
    std::_Exit(0);
}

namespace {
std::string ShellQuote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}
} // namespace

std::pair<int64_t, int64_t> RunProbe(const std::string& name) {
    char self[4096];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0) Fail("cannot find the running executable");
    self[length] = '\0';
    std::string command = ShellQuote(self) + " " + ShellQuote("--probe=" + name) + " " +
                          ShellQuote("--data=" + gOptions.fDataDir);
    if (!gOptions.fFileList.empty()) command += " " + ShellQuote("--files=" + gOptions.fFileList);
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) Fail("cannot start the probe " + name);
    long long bytes = 0;
    long long blocks = 0;
    const int read = std::fscanf(pipe, "%lld %lld", &bytes, &blocks);
    const int status = pclose(pipe);
    if (read != 2 || status != 0) Fail("the probe " + name + " did not report");
    return {bytes, blocks};
}

int RunMain(int argc, char** argv, EArea area) {
    gOptions = TakeOptions(argc, argv);
    const Options& options = gOptions;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    static const Corpus corpus = LoadCorpus(options, area == EArea::kParse);
    if (!options.fProbe.empty() && area != EArea::kMemory) Fail("--probe is for bench_memory");
    for (auto registration : {RegisterOurs, RegisterRapidJson, RegisterNlohmann, RegisterJsonCpp,
                              RegisterCJson, RegisterMsgPackC, RegisterSimdJson})
        registration(area, corpus);
    if (InProbeProcess()) Fail("no memory probe is named " + options.fProbe);
    benchmark::AddCustomContext("bench.data", options.fDataDir);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace bench
