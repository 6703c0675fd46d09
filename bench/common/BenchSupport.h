// What every benchmark executable shares: our own command-line options (the data folder and
// the choice of files), the corpus read from that folder, the statistics of a document that
// every library's result is checked against before anything is timed, the loud failure that
// stops a run whose libraries did different work, and the registration of a timed loop.
//
// Deliberate: the checks run when a benchmark is registered, so a library that read, wrote or
// copied something else than ours stops the whole run before the first measurement.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class JsonValue;

namespace bench {

/// What a visit of a document saw. Keys count into fStringBytes; integers are the numbers
/// that a library keeps as integers (cJSON keeps none, see fExactIntegers).
struct DocStats {
    uint64_t fObjects = 0;
    uint64_t fArrays = 0;
    uint64_t fMembers = 0;
    uint64_t fStrings = 0;
    uint64_t fStringBytes = 0;
    uint64_t fNumbers = 0;
    uint64_t fIntegers = 0;
    uint64_t fIntegerChecksum = 0; ///< wrapping sum of the integer values' bits
    uint64_t fTrues = 0;
    uint64_t fFalses = 0;
    uint64_t fNulls = 0;
    double fNumberSum = 0;    ///< every number converted to double and added
    double fNumberAbsSum = 0; ///< the same with magnitudes, the scale of the sum's tolerance
    bool fExactIntegers = true; ///< false for a library that stores every number as a double

    void AddInteger(int64_t value) {
        ++fNumbers;
        ++fIntegers;
        fIntegerChecksum += static_cast<uint64_t>(value);
        const double d = static_cast<double>(value);
        fNumberSum += d;
        fNumberAbsSum += d < 0 ? -d : d;
    }
    void AddUnsigned(uint64_t value) {
        ++fNumbers;
        ++fIntegers;
        fIntegerChecksum += value;
        const double d = static_cast<double>(value);
        fNumberSum += d;
        fNumberAbsSum += d;
    }
    void AddReal(double value) {
        ++fNumbers;
        fNumberSum += value;
        fNumberAbsSum += value < 0 ? -value : value;
    }
    void AddString(size_t bytes) {
        ++fStrings;
        fStringBytes += bytes;
    }
    void AddKey(size_t bytes) {
        ++fMembers;
        fStringBytes += bytes;
    }
};

std::string Describe(const DocStats& stats);
/// Counts must match exactly, the number sums within a relative 1e-9 of the magnitudes; the
/// integer fields only when both sides keep integers.
bool SameStats(const DocStats& a, const DocStats& b);

/// Prints the message to standard error and ends the process with status 3.
[[noreturn]] void Fail(const std::string& message);
/// Fails unless `got` matches `expected`; `what` says which operation produced `got`.
void ExpectSameStats(const std::string& library, const std::string& input, const std::string& what,
                     const DocStats& got, const DocStats& expected);

/// One input document and what our parser makes of it.
struct Input {
    std::string fName; ///< the file name, or "twitter-xNN" for the linearity documents
    std::string fText;
    DocStats fExpected;
};

struct Corpus {
    std::vector<Input> fFiles;
    /// Arrays of N copies of twitter.json (N = 1, 4, 16, 64); filled only when asked for.
    std::vector<Input> fLinear;
};

/// Our options, taken out of argv before Google Benchmark reads the rest:
///   --data=DIR     the folder with the corpus (else $VIRELO_JSON_BENCH_DATA, else the
///                  folder configured at build time)
///   --files=A,B    only these files of the corpus (else every one that exists)
///   --probe=NAME   (internal) run one memory probe in this process and print its result
struct Options {
    std::string fDataDir;
    std::vector<std::string> fFiles;
    std::string fFileList; ///< --files as given, passed on to probe processes
    std::string fProbe;
};
Options TakeOptions(int& argc, char** argv);

/// Reads the files (fails when none can be read) and computes each one's expected statistics.
Corpus LoadCorpus(const Options& options, bool withLinear);

/// Statistics of one of our trees; reals are read with GetAsReal (which converts kept texts).
void VisitOurs(const JsonValue& value, DocStats& stats);
DocStats OursStats(const JsonValue& value);
/// Parses with the options scripts use; fails loudly when the text does not parse.
DocStats OursStatsOfText(const std::string& text, const std::string& what);

/// Decodes MessagePack with ours (as scripts do); fails loudly when it cannot.
DocStats OursStatsOfMsgPack(const std::string& bytes, const std::string& what);
/// Our MessagePack encoding of the input, the bytes every decoder reads.
std::string OursMsgPack(const Input& input);

/// "measurement/input/library", the name the report splits.
std::string Name(const std::string& measurement, const std::string& input,
                 const std::string& library);

/// Registers a loop timing `body` once per iteration, counted as `bytes` per iteration.
template <class F>
void AddThroughput(const std::string& measurement, const Input& input, const std::string& library,
                   F body) {
    const int64_t bytes = static_cast<int64_t>(input.fText.size());
    benchmark::RegisterBenchmark(Name(measurement, input.fName, library).c_str(),
                                 [body, bytes](benchmark::State& state) mutable {
                                     for (auto _ : state) body();
                                     state.SetBytesProcessed(
                                         static_cast<int64_t>(state.iterations()) * bytes);
                                 });
}

/// The parse area of one library, the same loops for all: "Parse" (parse, then drop the
/// tree), "ParseVisit" (parse, visit every value converting every number, drop) and
/// "ParseLinear" on the linearity documents. `parse(text)` returns the library's document
/// holder (failing loudly on a parse error); `visit(holder, stats)` visits it.
template <class Parse, class Visit>
void RegisterParseFamily(const Corpus& corpus, const std::string& library, Parse parse,
                         Visit visit) {
    auto check = [&](const Input& input) {
        auto doc = parse(input.fText);
        DocStats stats;
        visit(doc, stats);
        ExpectSameStats(library, input.fName, "parse", stats, input.fExpected);
    };
    for (const Input& input : corpus.fFiles) {
        check(input);
        const std::string* text = &input.fText;
        AddThroughput("Parse", input, library, [text, parse] {
            auto doc = parse(*text);
            benchmark::DoNotOptimize(doc);
        });
        AddThroughput("ParseVisit", input, library, [text, parse, visit] {
            auto doc = parse(*text);
            DocStats stats;
            visit(doc, stats);
            benchmark::DoNotOptimize(stats);
        });
    }
    for (const Input& input : corpus.fLinear) {
        check(input);
        const std::string* text = &input.fText;
        AddThroughput("ParseLinear", input, library, [text, parse] {
            auto doc = parse(*text);
            benchmark::DoNotOptimize(doc);
        });
    }
}

/// Checks a library's text output: re-parsed by ours it must hold what the input holds.
void ExpectSameText(const std::string& library, const Input& input, const std::string& what,
                    const std::string& text, bool exactIntegers = true);

/// The heap bytes and blocks in use now; set by the memory probe, else they report 0.
using HeapProbe = int64_t (*)();
extern HeapProbe gHeapBytes;
extern HeapProbe gHeapBlocks;

/// The memory probe runs every measurement in a fresh process (the executable itself with
/// --probe=NAME), so no allocator reuses memory that an earlier parse left in a pool or free
/// list. In that process nothing is parsed before the measurement.
bool InProbeProcess();
bool IsProbeTarget(const std::string& name);
/// Prints the probe's result for the parent and ends the process.
[[noreturn]] void FinishProbe(int64_t bytes, int64_t blocks);
/// Runs the named probe in a fresh process; fails loudly when it does not report.
std::pair<int64_t, int64_t> RunProbe(const std::string& name);

/// Registers a probe of the heap that `parse` leaves held: the bytes and blocks in use while
/// its result lives, less those before the call, measured in a fresh process. Reported as
/// counters, one iteration each.
template <class F>
void AddMemory(const Input& input, const std::string& library, F parse) {
    const std::string name = Name("Memory", input.fName, library);
    if (IsProbeTarget(name)) {
        const int64_t bytesBefore = gHeapBytes();
        const int64_t blocksBefore = gHeapBlocks();
        auto held = parse();
        benchmark::DoNotOptimize(held);
        FinishProbe(gHeapBytes() - bytesBefore, gHeapBlocks() - blocksBefore);
    }
    if (InProbeProcess()) return;
    const double inputBytes = static_cast<double>(input.fText.size());
    benchmark::RegisterBenchmark(name.c_str(),
                                 [name, inputBytes](benchmark::State& state) {
                                     std::pair<int64_t, int64_t> held;
                                     for (auto _ : state) held = RunProbe(name);
                                     const auto bytes = static_cast<double>(held.first);
                                     state.counters["heap_bytes"] = bytes;
                                     state.counters["heap_blocks"] =
                                         static_cast<double>(held.second);
                                     state.counters["heap_per_input_byte"] = bytes / inputBytes;
                                 })
        ->Iterations(1);
}

/// The areas, one executable each (the script calls have their own main).
enum class EArea { kParse, kWrite, kMsgPack, kTree, kMemory };

/// One per library, each in its own translation unit: checks the library's results for the
/// area on every input against ours, then registers its benchmarks. A library without an
/// operation registers nothing for it.
void RegisterOurs(EArea area, const Corpus& corpus);
void RegisterRapidJson(EArea area, const Corpus& corpus);
void RegisterNlohmann(EArea area, const Corpus& corpus);
void RegisterJsonCpp(EArea area, const Corpus& corpus);
void RegisterCJson(EArea area, const Corpus& corpus);
void RegisterMsgPackC(EArea area, const Corpus& corpus);
void RegisterSimdJson(EArea area, const Corpus& corpus);

/// Our options, the corpus, every library's registrations for `area`, then Google Benchmark's
/// run; the main of every executable but the script one.
int RunMain(int argc, char** argv, EArea area);

} // namespace bench
