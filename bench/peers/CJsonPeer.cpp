// cJSON: cJSON_ParseWithLength, cJSON_PrintUnformatted, cJSON_Duplicate, cJSON_Compare, heap
// held. cJSON stores every number as a double, so its integer checks are skipped; its pretty
// printer indents with tabs only, so it has no pretty-write row.
#include "bench/common/BenchSupport.h"

#include <cjson/cJSON.h>

#include <cstring>
#include <memory>

namespace bench {

namespace {

const char* const sLibrary = "cjson";

struct Deleter {
    void operator()(cJSON* item) const { cJSON_Delete(item); }
};
using Tree = std::unique_ptr<cJSON, Deleter>;

void Visit(const cJSON* item, DocStats& stats) {
    switch (item->type & 0xFF) {
    case cJSON_NULL:
        ++stats.fNulls;
        break;
    case cJSON_False:
        ++stats.fFalses;
        break;
    case cJSON_True:
        ++stats.fTrues;
        break;
    case cJSON_Number:
        stats.AddReal(item->valuedouble);
        break;
    case cJSON_String:
        stats.AddString(std::strlen(item->valuestring));
        break;
    case cJSON_Array:
        ++stats.fArrays;
        for (const cJSON* child = item->child; child; child = child->next) Visit(child, stats);
        break;
    case cJSON_Object:
        ++stats.fObjects;
        for (const cJSON* child = item->child; child; child = child->next) {
            stats.AddKey(std::strlen(child->string));
            Visit(child, stats);
        }
        break;
    default:
        Fail("cjson: unexpected item type");
    }
}

DocStats StatsOf(const cJSON* item) {
    DocStats stats;
    stats.fExactIntegers = false;
    Visit(item, stats);
    return stats;
}

Tree Parse(const std::string& text) {
    Tree tree(cJSON_ParseWithLength(text.data(), text.size()));
    if (!tree) Fail("cjson: a parse failed");
    return tree;
}

std::string Print(const cJSON* item) {
    char* text = cJSON_PrintUnformatted(item);
    if (!text) Fail("cjson: printing failed");
    std::string out(text);
    cJSON_free(text);
    return out;
}

void RegisterWriteArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const cJSON> doc = Parse(input.fText);
        ExpectSameText(sLibrary, input, "compact output", Print(doc.get()), false);
        AddThroughput("WriteCompact", input, sLibrary, [doc] {
            char* text = cJSON_PrintUnformatted(doc.get());
            benchmark::DoNotOptimize(text);
            cJSON_free(text);
        });
    }
}

void RegisterTreeArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        std::shared_ptr<const cJSON> a = Parse(input.fText);
        std::shared_ptr<const cJSON> b = Parse(input.fText);
        {
            Tree copy(cJSON_Duplicate(a.get(), 1));
            DocStats stats = StatsOf(copy.get());
            ExpectSameStats(sLibrary, input.fName, "copy", stats, input.fExpected);
        }
        if (!cJSON_Compare(a.get(), b.get(), 1))
            Fail("cjson: two parses of " + input.fName + " compare unequal");
        AddThroughput("Copy", input, sLibrary, [a] {
            Tree copy(cJSON_Duplicate(a.get(), 1));
            benchmark::DoNotOptimize(copy.get());
        });
        AddThroughput("Equal", input, sLibrary, [a, b] {
            bool equal = cJSON_Compare(a.get(), b.get(), 1);
            benchmark::DoNotOptimize(equal);
        });
    }
}

} // namespace

void RegisterCJson(EArea area, const Corpus& corpus) {
    switch (area) {
    case EArea::kParse:
        return RegisterParseFamily(corpus, sLibrary, Parse, [](const Tree& tree, DocStats& stats) {
            stats.fExactIntegers = false;
            Visit(tree.get(), stats);
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
