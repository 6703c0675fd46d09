// RapidJSON: Document::Parse with the default allocator and flags (not in situ), Writer and
// PrettyWriter (two blanks) into a StringBuffer, CopyFrom, operator==, heap held.
#include "bench/common/BenchSupport.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <memory>

namespace bench {

namespace {

const char* const sLibrary = "rapidjson";

void Visit(const rapidjson::Value& value, DocStats& stats) {
    switch (value.GetType()) {
    case rapidjson::kNullType:
        ++stats.fNulls;
        break;
    case rapidjson::kFalseType:
        ++stats.fFalses;
        break;
    case rapidjson::kTrueType:
        ++stats.fTrues;
        break;
    case rapidjson::kObjectType:
        ++stats.fObjects;
        for (auto member = value.MemberBegin(); member != value.MemberEnd(); ++member) {
            stats.AddKey(member->name.GetStringLength());
            Visit(member->value, stats);
        }
        break;
    case rapidjson::kArrayType:
        ++stats.fArrays;
        for (auto element = value.Begin(); element != value.End(); ++element)
            Visit(*element, stats);
        break;
    case rapidjson::kStringType:
        stats.AddString(value.GetStringLength());
        break;
    case rapidjson::kNumberType:
        if (value.IsInt64())
            stats.AddInteger(value.GetInt64());
        else if (value.IsUint64())
            stats.AddUnsigned(value.GetUint64());
        else
            stats.AddReal(value.GetDouble());
        break;
    }
}

std::unique_ptr<rapidjson::Document> Parse(const std::string& text) {
    auto doc = std::make_unique<rapidjson::Document>();
    doc->Parse(text.c_str(), text.size());
    if (doc->HasParseError()) Fail("rapidjson: a parse failed");
    return doc;
}

template <class W> std::string Write(const rapidjson::Document& doc) {
    rapidjson::StringBuffer buffer;
    W writer(buffer);
    doc.Accept(writer);
    return std::string(buffer.GetString(), buffer.GetSize());
}

using PrettyWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

void RegisterWriteArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const rapidjson::Document> doc = Parse(input.fText);
        ExpectSameText(sLibrary, input, "compact output",
                       Write<rapidjson::Writer<rapidjson::StringBuffer>>(*doc));
        {
            rapidjson::StringBuffer buffer;
            PrettyWriter writer(buffer);
            writer.SetIndent(' ', 2);
            doc->Accept(writer);
            ExpectSameText(sLibrary, input, "pretty output",
                           std::string(buffer.GetString(), buffer.GetSize()));
        }
        AddThroughput("WriteCompact", input, sLibrary, [doc] {
            rapidjson::StringBuffer buffer;
            rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
            doc->Accept(writer);
            benchmark::DoNotOptimize(buffer.GetString());
        });
        AddThroughput("WritePretty", input, sLibrary, [doc] {
            rapidjson::StringBuffer buffer;
            PrettyWriter writer(buffer);
            writer.SetIndent(' ', 2);
            doc->Accept(writer);
            benchmark::DoNotOptimize(buffer.GetString());
        });
    }
}

void RegisterTreeArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const rapidjson::Document> a = Parse(input.fText);
        std::shared_ptr<const rapidjson::Document> b = Parse(input.fText);
        {
            rapidjson::Document copy;
            copy.CopyFrom(*a, copy.GetAllocator());
            DocStats stats;
            Visit(copy, stats);
            ExpectSameStats(sLibrary, input.fName, "copy", stats, input.fExpected);
        }
        const rapidjson::Value& va = *a;
        const rapidjson::Value& vb = *b;
        if (!(va == vb)) Fail("rapidjson: two parses of " + input.fName + " compare unequal");
        AddThroughput("Copy", input, sLibrary, [a] {
            rapidjson::Document copy;
            copy.CopyFrom(*a, copy.GetAllocator());
            benchmark::DoNotOptimize(copy);
        });
        AddThroughput("Equal", input, sLibrary, [a, b] {
            const rapidjson::Value& x = *a;
            const rapidjson::Value& y = *b;
            bool equal = x == y;
            benchmark::DoNotOptimize(equal);
        });
    }
}

} // namespace

void RegisterRapidJson(EArea area, const Corpus& corpus) {
    switch (area) {
    case EArea::kParse:
        return RegisterParseFamily(
            corpus, sLibrary, Parse,
            [](const std::unique_ptr<rapidjson::Document>& doc, DocStats& stats) {
                Visit(*doc, stats);
            });
    case EArea::kWrite:
        return RegisterWriteArea(corpus);
    case EArea::kTree:
        return RegisterTreeArea(corpus);
    case EArea::kMemory:
        for (const Input& input : corpus.fFiles)
            AddMemory(input, sLibrary, [&input] { return Parse(input.fText); });
        return;
    case EArea::kMsgPack:
        return;
    }
}

} // namespace bench
