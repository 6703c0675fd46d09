// jsoncpp: CharReader (default builder settings), writeString with a StreamWriterBuilder
// (no indentation, or two blanks; UTF-8 kept as UTF-8 like every other writer here), the copy
// constructor, operator==, heap held.
#include "bench/common/BenchSupport.h"

#include <json/json.h>

#include <memory>

namespace bench {

namespace {

const char* const sLibrary = "jsoncpp";

void Visit(const Json::Value& value, DocStats& stats) {
    switch (value.type()) {
    case Json::nullValue:
        ++stats.fNulls;
        break;
    case Json::booleanValue:
        ++(value.asBool() ? stats.fTrues : stats.fFalses);
        break;
    case Json::intValue:
        stats.AddInteger(value.asInt64());
        break;
    case Json::uintValue:
        stats.AddUnsigned(value.asUInt64());
        break;
    case Json::realValue:
        stats.AddReal(value.asDouble());
        break;
    case Json::stringValue: {
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        stats.AddString(static_cast<size_t>(end - begin));
        break;
    }
    case Json::arrayValue:
        ++stats.fArrays;
        for (const Json::Value& element : value) Visit(element, stats);
        break;
    case Json::objectValue:
        ++stats.fObjects;
        for (auto member = value.begin(); member != value.end(); ++member) {
            const char* end = nullptr;
            const char* key = member.memberName(&end);
            stats.AddKey(static_cast<size_t>(end - key));
            Visit(*member, stats);
        }
        break;
    }
}

DocStats StatsOf(const Json::Value& value) {
    DocStats stats;
    Visit(value, stats);
    return stats;
}

// The reader is made once and reused, as its interface intends.
class Parser {
public:
    Parser() : fReader(Json::CharReaderBuilder().newCharReader()) {}
    std::unique_ptr<Json::Value> operator()(const std::string& text) const {
        auto root = std::make_unique<Json::Value>();
        std::string errors;
        if (!fReader->parse(text.data(), text.data() + text.size(), root.get(), &errors))
            Fail("jsoncpp: a parse failed: " + errors);
        return root;
    }

private:
    std::shared_ptr<Json::CharReader> fReader;
};

Json::StreamWriterBuilder WriterBuilder(const char* indentation) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = indentation;
    builder["commentStyle"] = "None";
    builder["emitUTF8"] = true;
    return builder;
}

void RegisterWriteArea(const Corpus& corpus) {
    const Parser parse;
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const Json::Value> doc = parse(input.fText);
        const auto compact = std::make_shared<const Json::StreamWriterBuilder>(WriterBuilder(""));
        const auto pretty = std::make_shared<const Json::StreamWriterBuilder>(WriterBuilder("  "));
        ExpectSameText(sLibrary, input, "compact output", Json::writeString(*compact, *doc));
        ExpectSameText(sLibrary, input, "pretty output", Json::writeString(*pretty, *doc));
        AddThroughput("WriteCompact", input, sLibrary, [doc, compact] {
            std::string out = Json::writeString(*compact, *doc);
            benchmark::DoNotOptimize(out.data());
        });
        AddThroughput("WritePretty", input, sLibrary, [doc, pretty] {
            std::string out = Json::writeString(*pretty, *doc);
            benchmark::DoNotOptimize(out.data());
        });
    }
}

void RegisterTreeArea(const Corpus& corpus) {
    const Parser parse;
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const Json::Value> a = parse(input.fText);
        std::shared_ptr<const Json::Value> b = parse(input.fText);
        ExpectSameStats(sLibrary, input.fName, "copy", StatsOf(Json::Value(*a)), input.fExpected);
        if (!(*a == *b)) Fail("jsoncpp: two parses of " + input.fName + " compare unequal");
        AddThroughput("Copy", input, sLibrary, [a] {
            Json::Value copy(*a);
            benchmark::DoNotOptimize(copy);
        });
        AddThroughput("Equal", input, sLibrary, [a, b] {
            bool equal = *a == *b;
            benchmark::DoNotOptimize(equal);
        });
    }
}

} // namespace

void RegisterJsonCpp(EArea area, const Corpus& corpus) {
    switch (area) {
    case EArea::kParse:
        return RegisterParseFamily(
            corpus, sLibrary, Parser(),
            [](const std::unique_ptr<Json::Value>& doc, DocStats& stats) { Visit(*doc, stats); });
    case EArea::kWrite:
        return RegisterWriteArea(corpus);
    case EArea::kTree:
        return RegisterTreeArea(corpus);
    case EArea::kMemory:
        for (const Input& input : corpus.fFiles)
            AddMemory(input, sLibrary, [&input, parse = Parser()] { return parse(input.fText); });
        return;
    case EArea::kMsgPack:
        return;
    }
}

} // namespace bench
