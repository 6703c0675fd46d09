// Our engine's side of every area: parse with the options scripts use (keep order, check the
// input's UTF-8 once, no key table), visit, write, MessagePack, copy, compare, heap held.
//
// Deliberate: "ours-converted" rows write and encode a tree whose kept real texts were
// converted by a visit, so the cost of printing converted reals shows next to the verbatim
// copy of the parsed text.
#include "bench/common/BenchSupport.h"

#include "json/JsonEquality.h"
#include "json/JsonValue.h"
#include "json/ParserContext.h"

#include <memory>

namespace bench {

namespace {

const char* const sLibrary = "ours";

JsonAutoRefPtr<JsonValue> Parse(const std::string& text) {
    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true;
    return JsonValue::ReadFromString(text, &ctx, nullptr);
}

JsonAutoRefPtr<JsonValue> ParseChecked(const Input& input) {
    JsonAutoRefPtr<JsonValue> tree = Parse(input.fText);
    if (!tree) Fail("ours cannot parse " + input.fName);
    return tree;
}

void RegisterParseArea(const Corpus& corpus) {
    RegisterParseFamily(
        corpus, sLibrary,
        [](const std::string& text) {
            JsonAutoRefPtr<JsonValue> tree = Parse(text);
            if (!tree) Fail("ours: a parse failed");
            return tree;
        },
        [](const JsonAutoRefPtr<JsonValue>& tree, DocStats& stats) { VisitOurs(*tree, stats); });
}

void RegisterWriteArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        // One tree as parsed (reals kept as text) and one whose reals a visit converted.
        std::shared_ptr<const JsonValue> parsed(ParseChecked(input).Detach(),
                                                [](const JsonValue* v) { v->Release(); });
        std::shared_ptr<const JsonValue> converted(ParseChecked(input).Detach(),
                                                   [](const JsonValue* v) { v->Release(); });
        OursStats(*converted);
        for (const auto& [library, tree] : {std::pair{std::string(sLibrary), parsed},
                                            std::pair{std::string(sLibrary) + "-converted",
                                                      converted}}) {
            std::string compact;
            tree->AppendToString(compact);
            ExpectSameText(library, input, "compact output", compact);
            std::string pretty;
            tree->AppendToStringPretty(pretty, "  ", "\n", 0);
            ExpectSameText(library, input, "pretty output", pretty);
            AddThroughput("WriteCompact", input, library, [tree = tree] {
                std::string out;
                tree->AppendToString(out);
                benchmark::DoNotOptimize(out.data());
            });
            AddThroughput("WritePretty", input, library, [tree = tree] {
                static const std::string indent("  ");
                static const std::string newLine("\n");
                std::string out;
                tree->AppendToStringPretty(out, indent, newLine, 0);
                benchmark::DoNotOptimize(out.data());
            });
        }
    }
}

void RegisterMsgPackArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const JsonValue> tree(ParseChecked(input).Detach(),
                                              [](const JsonValue* v) { v->Release(); });
        std::string encoded;
        if (!tree->WriteToMsgPack(encoded)) Fail("ours cannot encode " + input.fName);
        JsonAutoRefPtr<JsonValue> decoded = JsonValue::ReadFromMsgPack(encoded, nullptr, nullptr);
        if (!decoded) Fail("ours cannot decode its own encoding of " + input.fName);
        ExpectSameStats(sLibrary, input.fName, "MessagePack round trip", OursStats(*decoded),
                        input.fExpected);
        AddThroughput("MsgPackEncode", input, sLibrary, [tree] {
            std::string out;
            tree->WriteToMsgPack(out);
            benchmark::DoNotOptimize(out.data());
        });
        AddThroughput("MsgPackDecode", input, sLibrary, [bytes = std::move(encoded)] {
            JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromMsgPack(bytes, nullptr, nullptr);
            benchmark::DoNotOptimize(value.Get());
        });
    }
}

void RegisterTreeArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const JsonValue> a(ParseChecked(input).Detach(),
                                           [](const JsonValue* v) { v->Release(); });
        std::shared_ptr<const JsonValue> b(ParseChecked(input).Detach(),
                                           [](const JsonValue* v) { v->Release(); });
        // The copied tree is never compared: comparing converts its kept real texts.
        std::shared_ptr<const JsonValue> source(ParseChecked(input).Detach(),
                                                [](const JsonValue* v) { v->Release(); });
        ExpectSameStats(sLibrary, input.fName, "copy", OursStats(*JsonValue::Copy(*source)),
                        input.fExpected);
        if (!(*a == *b)) Fail("ours: two parses of " + input.fName + " compare unequal");
        AddThroughput("Copy", input, sLibrary, [source] {
            JsonAutoRefPtr<JsonValue> copy = JsonValue::Copy(*source);
            benchmark::DoNotOptimize(copy.Get());
        });
        AddThroughput("Equal", input, sLibrary, [a, b] {
            bool equal = *a == *b;
            benchmark::DoNotOptimize(equal);
        });
    }
}

void RegisterMemoryArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles)
        AddMemory(input, sLibrary, [&input] { return Parse(input.fText); });
}

} // namespace

void RegisterOurs(EArea area, const Corpus& corpus) {
    switch (area) {
    case EArea::kParse:
        return RegisterParseArea(corpus);
    case EArea::kWrite:
        return RegisterWriteArea(corpus);
    case EArea::kMsgPack:
        return RegisterMsgPackArea(corpus);
    case EArea::kTree:
        return RegisterTreeArea(corpus);
    case EArea::kMemory:
        return RegisterMemoryArea(corpus);
    }
}

} // namespace bench
