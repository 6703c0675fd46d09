// bench_script: the hottest script functions called the way a host calls them, through
// vhost::Host::Call on the module library, in ns per call. The argument and result variants
// are made once; JSON arguments are made by one JSON.FromString call before timing.
//   ScriptFromString, ScriptToString, ScriptRoundTrip (both)  on a small document
//   ScriptGet, ScriptSet, ScriptSubNode, ScriptSetSubNode     on a 1 KB and a 100 KB document
//   FloodFromString, FloodFromMsgPack, FloodEquals, FloodGet  on an object of 100,000 (or, for
//     the smoke run, 1,000) members whose 16-byte keys all share one std::hash value, beside
//     the same calls on random keys of that length: flooding must cost a small constant
// Every call is checked once before timing (status 0, no report, the expected text).
// Options: --module=PATH (else $VIRELO_JSON_BENCH_MODULE, else the module built alongside),
// then Google Benchmark's.
#include "bench/common/BenchSupport.h"

#include "tests/support/CollidingKeys.h"
#include "tools/vhost/host/Host.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <sstream>

#ifndef VIRELO_JSON_BENCH_MODULE
#define VIRELO_JSON_BENCH_MODULE "libvirelo_json.so"
#endif

namespace {

using Virelo::AutoRefPtr;
using vhost::HostVariant;
using vhost::RegisteredFunction;

const char* const sSmallDocument =
    R"({"id":1234,"name":"Virelo","tags":["json","script"],"active":true,"ratio":0.75,)"
    R"("owner":{"login":"ada","id":42}})";

/// `count` distinct random keys of the colliding keys' length, from the same printable bytes.
std::vector<std::string> MakeRandomKeys(size_t count, uint64_t seed) {
    std::mt19937_64 random(seed);
    std::vector<std::string> keys;
    std::string key(16, ' ');
    while (keys.size() < count) {
        for (char& c : key) {
            do c = static_cast<char>(0x20 + random() % 95);
            while (c == '"' || c == '\\');
        }
        keys.push_back(key); // 95^16 keys: a repeat would need billions of draws
    }
    return keys;
}

/// {"key":index,...} over `keys`.
std::string ObjectOf(const std::vector<std::string>& keys) {
    std::string text = "{";
    for (size_t i = 0; i < keys.size(); ++i)
        text += (i ? ",\"" : "\"") + keys[i] + "\":" + std::to_string(i);
    return text + "}";
}

/// An object of about `size` bytes of compact text: a few members, then an array of records.
std::string MakeDocument(size_t size, size_t& records) {
    std::string text = R"({"id":987654321,"name":"catalogue","meta":{"version":1,)"
                       R"("created":"2024-05-01T10:00:00Z","flags":[true,false,null]},"items":[)";
    records = 0;
    while (text.size() + 2 < size) {
        char record[160];
        std::snprintf(record, sizeof record,
                      R"(%s{"id":%zu,"name":"item %zu","price":%zu.25,"tags":["a","bc"],)"
                      R"("active":%s})",
                      records ? "," : "", records, records, records % 1000,
                      records % 2 ? "true" : "false");
        text += record;
        ++records;
    }
    text += "]}";
    return text;
}

class ScriptBench {
public:
    explicit ScriptBench(const std::string& modulePath) : fHost(fDiagnostics) {
        std::string error;
        if (!fHost.LoadModule(modulePath, error)) bench::Fail("cannot load the module: " + error);
    }

    const RegisteredFunction& Function(const char* name, const char* result,
                                       const std::vector<std::string_view>& parameters) {
        const RegisteredFunction* function =
            fHost.GetRegistry().FindSignature(name, result, parameters);
        if (!function) bench::Fail(std::string("the module has no ") + name);
        return *function;
    }

    /// One call; fails loudly on a status or a report.
    void CallChecked(const RegisteredFunction& function, const std::vector<Virelo::IVariant*>& args,
                     HostVariant* result) {
        const unsigned status = fHost.Call(function, args, result);
        const std::string error = fHost.Context().TakeLastError();
        if (status != 0 || !error.empty())
            bench::Fail(function.fName + " failed: status " + std::to_string(status) + " " + error +
                        " " + fDiagnostics.str());
    }

    AutoRefPtr<HostVariant> FromString(const std::string& text) {
        const RegisteredFunction& fromString = Function("JSON.FromString", "JSON", {"STRING"});
        AutoRefPtr<HostVariant> result = vhost::Host::CreateResult(fromString.fReturn);
        AutoRefPtr<HostVariant> argument = HostVariant::FromString(text);
        CallChecked(fromString, {argument.Get()}, result.Get());
        return result;
    }

    std::string ToString(HostVariant* json) {
        const RegisteredFunction& toString = Function("ToString", "STRING", {"JSON"});
        AutoRefPtr<HostVariant> result = vhost::Host::CreateResult(toString.fReturn);
        CallChecked(toString, {json}, result.Get());
        return std::string(result->Interface_GetStringData(),
                           static_cast<size_t>(result->Interface_GetStringLength()));
    }

    /// Registers "measurement/input/ours" timing one call of `function` per iteration, after
    /// one checked call whose result's text `check` inspects.
    void Add(const std::string& measurement, const std::string& input,
             const RegisteredFunction& function, std::vector<AutoRefPtr<HostVariant>> arguments,
             const std::function<bool(const std::string&)>& check) {
        AutoRefPtr<HostVariant> result = vhost::Host::CreateResult(function.fReturn);
        std::vector<Virelo::IVariant*> raw;
        for (const auto& argument : arguments) raw.push_back(argument.Get());
        CallChecked(function, raw, result.Get());
        std::string text;
        if (result->Interface_GetType() == Virelo::eTypeString) {
            text = result->Interface_GetStringData();
        } else if (result->Interface_GetType() == Virelo::eTypeBoolean) {
            text = result->Interface_GetBoolean() ? "true" : "false";
        } else {
            text = ToString(result.Get());
        }
        if (!check(text))
            bench::Fail(measurement + "/" + input + ": unexpected result " + text.substr(0, 200));
        vhost::Host* host = &fHost;
        benchmark::RegisterBenchmark(
            bench::Name(measurement, input, "ours").c_str(),
            [host, &function, arguments, raw, result](benchmark::State& state) {
                for (auto _ : state) host->Call(function, raw, result.Get());
            })
            ->Unit(benchmark::kNanosecond);
    }

    void RegisterAll() {
        const RegisteredFunction& fromString = Function("JSON.FromString", "JSON", {"STRING"});
        const RegisteredFunction& toString = Function("ToString", "STRING", {"JSON"});
        const std::string small = sSmallDocument;
        {
            AutoRefPtr<HostVariant> text = HostVariant::FromString(small);
            Add("ScriptFromString", "small", fromString, {text},
                [&](const std::string& out) { return out == small; });
            Add("ScriptToString", "small", toString, {FromString(small)},
                [&](const std::string& out) { return out == small; });
            // FromString then ToString of its result, one pair per iteration.
            AutoRefPtr<HostVariant> parsed = vhost::Host::CreateResult(fromString.fReturn);
            AutoRefPtr<HostVariant> printed = vhost::Host::CreateResult(toString.fReturn);
            CallChecked(fromString, {text.Get()}, parsed.Get());
            CallChecked(toString, {parsed.Get()}, printed.Get());
            if (printed->Interface_GetStringData() != small)
                bench::Fail("ScriptRoundTrip: the text changed");
            vhost::Host* host = &fHost;
            benchmark::RegisterBenchmark(
                bench::Name("ScriptRoundTrip", "small", "ours").c_str(),
                [host, &fromString, &toString, text, parsed, printed](benchmark::State& state) {
                    const std::vector<Virelo::IVariant*> in{text.Get()};
                    const std::vector<Virelo::IVariant*> out{parsed.Get()};
                    for (auto _ : state) {
                        host->Call(fromString, in, parsed.Get());
                        host->Call(toString, out, printed.Get());
                    }
                })
                ->Unit(benchmark::kNanosecond);
        }

        const RegisteredFunction& get = Function("JSON.Get", "JSON", {"JSON", "STRING"});
        const RegisteredFunction& set = Function("JSON.Set", "JSON", {"JSON", "STRING", "STRING"});
        const RegisteredFunction& subNode = Function("JSON.SubNode", "JSON", {"JSON", "STRING"});
        const RegisteredFunction& setSubNode =
            Function("JSON.SetSubNode", "JSON", {"JSON", "STRING", "NUMBER"});
        for (const auto& [label, size] : {std::pair{"1KB", size_t{1024}},
                                          std::pair{"100KB", size_t{100 * 1024}}}) {
            size_t records = 0;
            const std::string text = MakeDocument(size, records);
            AutoRefPtr<HostVariant> doc = FromString(text);
            if (ToString(doc.Get()) != text) bench::Fail("the generated document does not print back");
            const std::string middle = std::to_string(records / 2);
            Add("ScriptGet", label, get, {doc, HostVariant::FromString("name")},
                [](const std::string& out) { return out == "\"catalogue\""; });
            Add("ScriptSet", label, set,
                {doc, HostVariant::FromString("name"), HostVariant::FromString("changed")},
                [&](const std::string& out) {
                    return out.size() == text.size() - 2 &&
                           out.find("\"name\":\"changed\"") != std::string::npos;
                });
            Add("ScriptSubNode", label, subNode,
                {doc, HostVariant::FromString("items/" + middle + "/name")},
                [&](const std::string& out) { return out == "\"item " + middle + "\""; });
            Add("ScriptSetSubNode", label, setSubNode,
                {doc, HostVariant::FromString("meta/version"), HostVariant::FromNumber(2)},
                [&](const std::string& out) {
                    return out.find("\"version\":2") != std::string::npos;
                });
        }
    }

    /// The flooding pairs: the same calls on keys that share one std::hash value and on random
    /// keys of the same length.
    void RegisterFlood() {
        const RegisteredFunction& fromString = Function("JSON.FromString", "JSON", {"STRING"});
        const RegisteredFunction& toMsgPack = Function("JSON.ToMsgPack", "DATAREF", {"JSON"});
        const RegisteredFunction& fromMsgPack = Function("JSON.FromMsgPack", "JSON", {"DATAREF"});
        const RegisteredFunction& equals = Function("JSON.Equals", "BOOLEAN", {"JSON", "JSON"});
        const RegisteredFunction& get = Function("JSON.Get", "JSON", {"JSON", "STRING"});
        for (const auto& [size, count] : {std::pair{"small", size_t{1000}}, std::pair{"100k", size_t{100000}}}) {
            for (const bool colliding : {true, false}) {
                const std::vector<std::string> keys =
                    colliding ? json_test::MakeCollidingKeys(count, 11) : MakeRandomKeys(count, 11);
                const std::string input = std::string(colliding ? "colliding-" : "random-") + size;
                const std::string text = ObjectOf(keys);
                const auto sameSize = [&](const std::string& out) { return out.size() == text.size(); };
                AutoRefPtr<HostVariant> textArgument = HostVariant::FromString(text);
                Add("FloodFromString", input, fromString, {textArgument}, sameSize);
                AutoRefPtr<HostVariant> doc = FromString(text);
                AutoRefPtr<HostVariant> twin = FromString(text);
                AutoRefPtr<HostVariant> bytes = vhost::Host::CreateResult(toMsgPack.fReturn);
                CallChecked(toMsgPack, {doc.Get()}, bytes.Get());
                Add("FloodFromMsgPack", input, fromMsgPack, {bytes}, sameSize);
                Add("FloodEquals", input, equals, {doc, twin},
                    [](const std::string& out) { return out == "true"; });
                const size_t middle = count / 2;
                Add("FloodGet", input, get, {doc, HostVariant::FromString(keys[middle])},
                    [&](const std::string& out) { return out == std::to_string(middle); });
            }
        }
    }

private:
    std::ostringstream fDiagnostics;
    vhost::Host fHost;
};

} // namespace

int main(int argc, char** argv) {
    std::string modulePath = VIRELO_JSON_BENCH_MODULE;
    if (const char* env = std::getenv("VIRELO_JSON_BENCH_MODULE"); env && *env) modulePath = env;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg.rfind("--module=", 0) == 0)
            modulePath = arg.substr(9);
        else if (arg.rfind("--data=", 0) != 0 && arg.rfind("--files=", 0) != 0)
            argv[kept++] = argv[i];
    }
    argc = kept;
    argv[argc] = nullptr;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    static ScriptBench bench(modulePath);
    bench.RegisterAll();
    bench.RegisterFlood();
    benchmark::AddCustomContext("bench.module", modulePath);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
