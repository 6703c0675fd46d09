// Deep equality of value trees, and whole-tree operations on very deep documents.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonEquality.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace json_test;
using Keys = JsonCompiledObjectContext;

ValuePtr Read(const std::string& text, const Keys* keys = nullptr) {
    ParserContext ctx;
    ValuePtr value = JsonValue::ReadFromString(text, &ctx, keys);
    EXPECT_TRUE(value) << ctx.fError;
    return value;
}

void ExpectEqual(const JsonValue& a, const JsonValue& b, bool equal) {
    EXPECT_EQ(a == b, equal);
    EXPECT_EQ(b == a, equal);
    EXPECT_EQ(a != b, !equal);
}

TEST(JsonEquality, ComparesParsedTrees) {
    struct Row { const char* fA; const char* fB; bool fEqual; };
    const Row rows[] = {
        // objects: member order plays no part; keys and values must match
        {R"({"a":1,"b":2})", R"({"b":2,"a":1})", true},
        {R"({"a":1})", R"({"b":1})", false},
        {R"({"a":1})", R"({"a":1,"b":2})", false},
        {R"({"a":null})", "{}", false},
        // orders that agree for a while, then part (the walk falls back to lookups)
        {R"({"a":1,"b":2,"c":3})", R"({"a":1,"c":3,"b":2})", true},
        {R"({"a":1,"b":2,"c":3})", R"({"a":1,"c":3,"d":2})", false},
        {R"({"a":1,"b":2,"c":3})", R"({"a":1,"b":2,"c":4})", false},
        {R"({"a":[1,{"b":[2]}]})", R"({"a":[1,{"b":[2]}]})", true},
        {R"({"a":[1,{"b":[2]}]})", R"({"a":[1,{"b":[3]}]})", false},
        // arrays: order and length
        {"[1,2]", "[2,1]", false},
        {"[1]", "[1,1]", false},
        {"[]", "{}", false},
        // numbers: no cross-type equality; the unsigned flag counts
        {"1", "1.0", false},
        {"-1", "18446744073709551615", false},
        {"9223372036854775807", "9223372036854775807", true},
        {"18446744073709551615", "18446744073709551615", true},
        {"0.0", "-0.0", true},
        {"1.50", "1.5", true},
        {"1e2", "100.0", true},
        {"0.1", "0.10000000000000001", true},
        // strings compare every byte, zero bytes included
        {R"("a")", R"("ab")", false},
        {R"("a\u0000b")", R"("a\u0000c")", false},
        {R"("é")", R"("\u00e9")", true},
        {R"("true")", "true", false},
        {"true", "true", true},
        {"null", "null", true},
        {"false", "true", false},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.fA) + " vs " + r.fB);
        ValuePtr a = Read(r.fA);
        ValuePtr b = Read(r.fB);
        ExpectEqual(*a, *b, r.fEqual);
    }
    JsonAutoRefPtr<JsonObject> ordered(new JsonObject(true)); // ordered vs unordered: by members
    ordered->InsertInteger("b", 2LL, false);
    ordered->InsertInteger("a", 1LL, false);
    ExpectEqual(*ordered, *Read(R"({"a":1,"b":2})"), true);
}

TEST(JsonEquality, RealsCompareAsDoubles) {
    const double nan = std::nan("");
    ValuePtr a(new JsonReal(nan));
    ValuePtr b(new JsonReal(nan));
    ExpectEqual(*a, *b, false); // NaN is unequal to itself
    ExpectEqual(*a, *a, true);  // but one node is equal to itself
    ExpectEqual(*ValuePtr(new JsonReal(0.0)), *ValuePtr(new JsonReal(-0.0)), true);

    // A parsed real keeps its text until a comparison converts it.
    ValuePtr parsed = Read("1.50");
    const auto& real = static_cast<const JsonReal&>(*parsed);
    ASSERT_TRUE(real.HasPendingText());
    EXPECT_EQ(parsed->GetAsString(), "1.50");
    ExpectEqual(*parsed, *ValuePtr(new JsonReal(1.5)), true);
    EXPECT_FALSE(real.HasPendingText());
    EXPECT_EQ(parsed->GetAsString(), "1.5");
}

TEST(JsonEquality, CompiledObjectsNeedTheSameKeyTable) {
    Keys keys, twin; // the same keys, but another table
    for (Keys* table : {&keys, &twin}) {
        table->AddKey("a", 0, nullptr);
        table->AddKey("b", 0, nullptr);
    }
    const char* text = R"({"b":[1],"a":{"x":1}})";
    ValuePtr first = Read(text, &keys);
    ExpectEqual(*first, *Read(text, &keys), true);
    ExpectEqual(*first, *ValuePtr(JsonValue::Copy(*first)), true);
    ExpectEqual(*first, *Read(text, &twin), false);
    ExpectEqual(*first, *Read(text), false); // an object and a compiled object never match

    // An empty slot matches only an empty slot, not a JSON null.
    JsonCompiledObject withNull(&keys), withNothing(&keys);
    withNull.InsertNull(0);
    ExpectEqual(withNull, withNothing, false);
    withNothing.InsertNull(0);
    EXPECT_TRUE(withNull.IsEqual(withNothing));

    // Objects made before and after the table grew have different slot counts.
    keys.AddKey("c", 0, nullptr);
    JsonCompiledObject grown(&keys);
    grown.InsertNull(0);
    ExpectEqual(withNull, grown, false);
}

// Documents nested far deeper than any native call stack could recurse through.
TEST(JsonEquality, DeepDocumentsParsePrintCopyCompareAndFree) {
    constexpr int kDepth = 100000;
    Keys self;
    self.AddKey("a", Keys::kCompiledObject, &self);
    self.AddKey("b", 0, nullptr);
    // the pretty form has no indentation: the blank after a plain key shows
    struct Row { const char* fName; const Keys* fKeys; JsonValue::EJsonValueType fType; const char *fStep, *fOpen, *fClose, *fLeaf, *fOtherLeaf, *fPrettyOpen, *fPrettyClose, *fPrettyLeaf; };
    const Row rows[] = {
        {"arrays", nullptr, JsonValue::eJsonArray, "0", "[", "]", "1", "2", "[\n", "\n]", "1"},
        {"objects", nullptr, JsonValue::eJsonObject, "a", R"({"a":)", "}", "1", "2",
         "{\n\"a\": ", "\n}", "1"},
        {"compiled objects", &self, JsonValue::eJsonCompiledObject, "a", R"({"a":)", "}",
         R"({"b":1})", R"({"b":2})", "{\n\"a\":", "\n}", "{\n\"b\":1\n}"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        std::string open, close, path, prettyOpen, prettyClose;
        for (int i = 0; i < kDepth; ++i) {
            open += r.fOpen;
            close += r.fClose;
            path += r.fStep;
            path += '/';
            prettyOpen += r.fPrettyOpen;
            prettyClose += r.fPrettyClose;
        }
        const std::string text = open + r.fLeaf + close;
        ValuePtr doc = Read(text, r.fKeys);
        ASSERT_TRUE(doc);
        EXPECT_EQ(doc->GetType(), r.fType);
        EXPECT_TRUE(doc->GetAsString() == text);
        std::string pretty;
        // Starting far below level 0 indents nothing at any depth.
        doc->AppendToStringPretty(pretty, "\t", "\n", -kDepth - 1);
        EXPECT_TRUE(pretty == prettyOpen + r.fPrettyLeaf + prettyClose);

        ValuePtr node = doc->NodeFromPath(path);
        ASSERT_TRUE(node);
        EXPECT_EQ(node->GetAsString(), r.fLeaf);

        ValuePtr copy = JsonValue::Copy(*doc);
        EXPECT_TRUE(*copy == *doc);
        ValuePtr differs = Read(open + r.fOtherLeaf + close, r.fKeys);
        ASSERT_TRUE(differs);
        EXPECT_FALSE(*differs == *doc);
    }
}

} // namespace
