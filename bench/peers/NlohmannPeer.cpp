// nlohmann::json: parse, dump() and dump(2), to_msgpack/from_msgpack, the copy constructor,
// operator==, heap held.
#include "bench/common/BenchSupport.h"

#include <nlohmann/json.hpp>

#include <memory>

namespace bench {

namespace {

using json = nlohmann::json;

const char* const sLibrary = "nlohmann";

void Visit(const json& value, DocStats& stats) {
    switch (value.type()) {
    case json::value_t::null:
        ++stats.fNulls;
        break;
    case json::value_t::boolean:
        ++(value.get<bool>() ? stats.fTrues : stats.fFalses);
        break;
    case json::value_t::object:
        ++stats.fObjects;
        for (const auto& [key, member] : value.get_ref<const json::object_t&>()) {
            stats.AddKey(key.size());
            Visit(member, stats);
        }
        break;
    case json::value_t::array:
        ++stats.fArrays;
        for (const json& element : value.get_ref<const json::array_t&>()) Visit(element, stats);
        break;
    case json::value_t::string:
        stats.AddString(value.get_ref<const json::string_t&>().size());
        break;
    case json::value_t::number_integer:
        stats.AddInteger(value.get<int64_t>());
        break;
    case json::value_t::number_unsigned:
        stats.AddUnsigned(value.get<uint64_t>());
        break;
    case json::value_t::number_float:
        stats.AddReal(value.get<double>());
        break;
    case json::value_t::binary:
    case json::value_t::discarded:
        Fail("nlohmann: unexpected binary or discarded value");
    }
}

DocStats StatsOf(const json& value) {
    DocStats stats;
    Visit(value, stats);
    return stats;
}

json Parse(const std::string& text) {
    json doc = json::parse(text, nullptr, false);
    if (doc.is_discarded()) Fail("nlohmann: a parse failed");
    return doc;
}

void RegisterWriteArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        auto doc = std::make_shared<const json>(Parse(input.fText));
        ExpectSameText(sLibrary, input, "compact output", doc->dump());
        ExpectSameText(sLibrary, input, "pretty output", doc->dump(2));
        AddThroughput("WriteCompact", input, sLibrary, [doc] {
            std::string out = doc->dump();
            benchmark::DoNotOptimize(out.data());
        });
        AddThroughput("WritePretty", input, sLibrary, [doc] {
            std::string out = doc->dump(2);
            benchmark::DoNotOptimize(out.data());
        });
    }
}

void RegisterMsgPackArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        auto doc = std::make_shared<const json>(Parse(input.fText));
        const std::vector<uint8_t> encoded = json::to_msgpack(*doc);
        ExpectSameStats(sLibrary, input.fName, "MessagePack encoding decoded by ours",
                        OursStatsOfMsgPack(std::string(encoded.begin(), encoded.end()),
                                           "nlohmann's MessagePack"),
                        input.fExpected);
        const std::string ours = OursMsgPack(input);
        ExpectSameStats(sLibrary, input.fName, "decode of our MessagePack",
                        StatsOf(json::from_msgpack(ours)), input.fExpected);
        AddThroughput("MsgPackEncode", input, sLibrary, [doc] {
            std::vector<uint8_t> out = json::to_msgpack(*doc);
            benchmark::DoNotOptimize(out.data());
        });
        AddThroughput("MsgPackDecode", input, sLibrary, [ours] {
            json value = json::from_msgpack(ours);
            benchmark::DoNotOptimize(value);
        });
    }
}

void RegisterTreeArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        auto a = std::make_shared<const json>(Parse(input.fText));
        auto b = std::make_shared<const json>(Parse(input.fText));
        ExpectSameStats(sLibrary, input.fName, "copy", StatsOf(json(*a)), input.fExpected);
        if (!(*a == *b)) Fail("nlohmann: two parses of " + input.fName + " compare unequal");
        AddThroughput("Copy", input, sLibrary, [a] {
            json copy(*a);
            benchmark::DoNotOptimize(copy);
        });
        AddThroughput("Equal", input, sLibrary, [a, b] {
            bool equal = *a == *b;
            benchmark::DoNotOptimize(equal);
        });
    }
}

} // namespace

void RegisterNlohmann(EArea area, const Corpus& corpus) {
    switch (area) {
    case EArea::kParse:
        return RegisterParseFamily(corpus, sLibrary, Parse, Visit);
    case EArea::kWrite:
        return RegisterWriteArea(corpus);
    case EArea::kMsgPack:
        return RegisterMsgPackArea(corpus);
    case EArea::kTree:
        return RegisterTreeArea(corpus);
    case EArea::kMemory:
        for (const Input& input : corpus.fFiles)
            AddMemory(input, sLibrary,
                      [&input] { return std::make_unique<json>(Parse(input.fText)); });
        return;
    }
}

} // namespace bench
