// Allocation failure in every reader and walk of the engine: text and MessagePack parsing (plain
// and compiled objects, good and bad input), copy, equality, node paths and the three writers.
// Each run must either give exactly the result of an undisturbed run or throw std::bad_alloc,
// and must free everything it built either way.
#include "tests/robustness/FailureInjection.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonEquality.h"
#include "json/JsonObject.h"
#include "json/ParserContext.h"

#include <functional>
#include <new>
#include <string>

namespace {

using FailureInjection::FailEachAllocation;

// Long keys and texts (beyond the small-string buffer), pending and converted reals, escapes,
// every scalar kind and some nesting.
const std::string kDocument =
    R"({"list":[1,-2,2.50,-3e5,1.0000000000000000001,18446744073709551615,"x\u00e9\n",true,false,)"
    R"(null,{"b":{}}],"a key longer than any small-string buffer":"and a text longer than one too",)"
    R"("deep":[[[[[{"k":[{"z":0.5}]}]]]]],"n":-9223372036854775808})";

JsonAutoRefPtr<JsonValue> Parse(const std::string& text, bool keepOrder = false) {
    ParserContext ctx;
    ctx.fKeepOrder = keepOrder;
    return JsonValue::ReadFromString(text, &ctx, nullptr);
}

std::string Compact(const JsonValue& value) {
    std::string out;
    value.AppendToString(out);
    return out;
}

/// Runs `produce` under every allocation failure: each run gives `expected` or throws
/// std::bad_alloc (and only when an allocation was failed).
void ExpectResultOrBadAlloc(const std::string& expected, const std::function<std::string()>& produce) {
    const size_t allocations = FailEachAllocation([&] {
        try {
            const std::string result = produce();
            EXPECT_EQ(result, expected);
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(AllocationProbe::Fired()) << "std::bad_alloc without a failed allocation";
        }
    });
    EXPECT_GT(allocations, 0u);
}

/// A parse's outcome as text: the compact value, or the message.
std::string Outcome(const JsonAutoRefPtr<JsonValue>& value, const ParserContext& ctx) {
    return value ? Compact(*value) : "error: " + ctx.fError;
}

struct ParseCase {
    const char* fName;
    std::string fText;
    bool fKeepOrder;
};

TEST(EngineAllocationFailure, TextParsing) {
    const ParseCase cases[] = {
        {"document", kDocument, false},
        {"document keeping order", kDocument, true},
        {"error at the end", kDocument.substr(0, kDocument.size() - 1), false},
        {"error in a nested key", R"({"a":[{"b":{"c\x01":1}}]})", false},
        {"string", R"("a text longer than any small-string buffer")", false},
    };
    for (const ParseCase& c : cases) {
        SCOPED_TRACE(c.fName);
        ParserContext reference;
        reference.fKeepOrder = c.fKeepOrder;
        const std::string expected = Outcome(JsonValue::ReadFromString(c.fText, &reference, nullptr), reference);
        ExpectResultOrBadAlloc(expected, [&] {
            ParserContext ctx;
            ctx.fKeepOrder = c.fKeepOrder;
            return Outcome(JsonValue::ReadFromString(c.fText, &ctx, nullptr), ctx);
        });
    }
}

JsonCompiledObjectContext MakeKeys(JsonCompiledObjectContext& inner) {
    inner.AddKey("z", JsonCompiledObjectContext::kNumber, nullptr);
    JsonCompiledObjectContext keys;
    keys.AddKey("name", JsonCompiledObjectContext::kString, nullptr);
    keys.AddKey("inner", JsonCompiledObjectContext::kCompiledObject, &inner);
    keys.AddKey("list", JsonCompiledObjectContext::kArray, nullptr);
    return keys;
}

TEST(EngineAllocationFailure, CompiledObjects) {
    JsonCompiledObjectContext inner;
    const JsonCompiledObjectContext keys = MakeKeys(inner);
    const std::string text =
        R"({"name":"a name longer than the small-string buffer","unknown":[1,{"x":2}],)"
        R"("inner":{"z":1.5},"list":[1,"two",[3]]})";
    const std::string badText = R"({"name":"n","inner":{"z":"not a number"}})";
    for (const std::string& input : {text, badText}) {
        ParserContext reference;
        const auto expected = JsonCompiledObject::ReadFromString(input, &keys, &reference);
        const std::string expectedText = expected ? Compact(*expected) : "error: " + reference.fError;
        ExpectResultOrBadAlloc(expectedText, [&] {
            ParserContext ctx;
            const auto value = JsonCompiledObject::ReadFromString(input, &keys, &ctx);
            return value ? Compact(*value) : "error: " + ctx.fError;
        });
        if (!expected) continue;
        std::string bytes;
        ASSERT_TRUE(expected->WriteToMsgPack(bytes));
        // The MessagePack reader checks every member's kind, the text parser only containers'.
        ParserContext binaryReference;
        const auto fromBytes = JsonCompiledObject::ReadFromMsgPack(bytes, &keys, &binaryReference);
        const std::string expectedBinary = fromBytes ? Compact(*fromBytes) : "error: " + binaryReference.fError;
        ExpectResultOrBadAlloc(expectedBinary, [&] {
            ParserContext ctx;
            const auto value = JsonCompiledObject::ReadFromMsgPack(bytes, &keys, &ctx);
            return value ? Compact(*value) : "error: " + ctx.fError;
        });
    }
}

TEST(EngineAllocationFailure, MessagePackReading) {
    const auto tree = Parse(kDocument);
    std::string bytes;
    ASSERT_TRUE(tree->WriteToMsgPack(bytes));
    struct Case {
        const char* fName;
        std::string fBytes;
    };
    const Case cases[] = {
        {"document", bytes},
        {"cut short", bytes.substr(0, bytes.size() - 3)},
        {"nested headers claiming 2^32 elements", std::string("\xDD\xFF\xFF\xFF\xFF\xDD\xFF\xFF\xFF\xFF\x90", 11)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fName);
        ParserContext reference;
        const std::string expected = Outcome(JsonValue::ReadFromMsgPack(c.fBytes, &reference, nullptr), reference);
        ExpectResultOrBadAlloc(expected, [&] {
            ParserContext ctx;
            return Outcome(JsonValue::ReadFromMsgPack(c.fBytes, &ctx, nullptr), ctx);
        });
    }
}

TEST(EngineAllocationFailure, CopyEqualityAndPaths) {
    for (const bool keepOrder : {false, true}) {
        SCOPED_TRACE(keepOrder ? "keeping order" : "map order");
        const auto tree = Parse(kDocument, keepOrder);
        const auto other = Parse(kDocument, !keepOrder);
        const std::string expected = Compact(*tree);
        ExpectResultOrBadAlloc(expected, [&] { return Compact(*JsonValue::Copy(*tree)); });
        ExpectResultOrBadAlloc("equal", [&] { return *tree == *other ? "equal" : "different"; });
        ExpectResultOrBadAlloc("0.5", [&] {
            const auto node = tree->NodeFromPath("/deep/0/0/0/0/0/k/0/z");
            return node ? Compact(*node) : "none";
        });
    }
}

TEST(EngineAllocationFailure, Writers) {
    for (const bool keepOrder : {false, true}) {
        SCOPED_TRACE(keepOrder ? "keeping order" : "map order");
        const auto tree = Parse(kDocument, keepOrder);
        ExpectResultOrBadAlloc(Compact(*tree), [&] { return Compact(*tree); });
        std::string pretty;
        tree->AppendToStringPretty(pretty, "\t", "\n", 0);
        ExpectResultOrBadAlloc(pretty, [&] {
            std::string out;
            tree->AppendToStringPretty(out, "\t", "\n", 0);
            return out;
        });
        std::string bytes;
        ASSERT_TRUE(tree->WriteToMsgPack(bytes));
        ExpectResultOrBadAlloc(bytes, [&] {
            std::string out;
            EXPECT_TRUE(tree->WriteToMsgPack(out));
            return out;
        });
    }
}

} // namespace
