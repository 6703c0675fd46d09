// Inputs longer than 4 GiB: every length in the engine is 64 bits wide, so a number, a string or
// an object key of 2^32 + 5 bytes reads and writes back whole. These need up to 17 GiB and a
// minute or two, so they run only when asked:
//   VIRELO_JSON_HUGE_TESTS=1 build/bin/robustness_tests --gtest_filter="HugeInput*"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

constexpr size_t kHuge = (size_t(1) << 32) + 5;

bool HugeTestsWanted() {
    const char* wanted = std::getenv("VIRELO_JSON_HUGE_TESTS");
    return wanted && *wanted && std::string(wanted) != "0";
}

TEST(HugeInput, NumberLongerThan4GiBWritesBackWhole) {
    if (!HugeTestsWanted()) GTEST_SKIP() << "set VIRELO_JSON_HUGE_TESTS=1 to run";
    std::string text(kHuge, '7');
    ParserContext ctx;
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, &ctx, nullptr);
    ASSERT_TRUE(value) << ctx.fError;
    ASSERT_EQ(value->GetType(), JsonValue::eJsonReal);
    EXPECT_EQ(static_cast<const JsonReal&>(*value).PendingText().size(), kHuge);
    std::string out;
    value->AppendToString(out);
    EXPECT_EQ(out.size(), kHuge);
    EXPECT_TRUE(out == text); // not EXPECT_EQ: a failure must not print 4 GiB
}

TEST(HugeInput, StringLongerThan4GiBWritesBackWhole) {
    if (!HugeTestsWanted()) GTEST_SKIP() << "set VIRELO_JSON_HUGE_TESTS=1 to run";
    std::string text(kHuge + 2, 'x');
    text.front() = text.back() = '"';
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, nullptr, nullptr);
    ASSERT_TRUE(value);
    std::string out;
    value->AppendToString(out);
    EXPECT_EQ(out.size(), text.size());
    EXPECT_TRUE(out == text);
}

TEST(HugeInput, KeyLongerThan4GiBWritesBackWhole) {
    if (!HugeTestsWanted()) GTEST_SKIP() << "set VIRELO_JSON_HUGE_TESTS=1 to run";
    std::string text = "{\"" + std::string(kHuge, 'k') + "\":1}";
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, nullptr, nullptr);
    ASSERT_TRUE(value && value->GetType() == JsonValue::eJsonObject);
    const auto& object = static_cast<const JsonObject&>(*value);
    ASSERT_EQ(object.Size(), 1u);
    EXPECT_EQ(object.Members().begin()->Key().size(), kHuge);
    std::string out;
    value->AppendToString(out);
    EXPECT_EQ(out.size(), text.size());
    EXPECT_TRUE(out == text);
}

} // namespace
