// The MessagePack writer: the exact bytes of every encoding form at its boundaries, the
// float32/float64 choice, output that spans several buffers, compiled objects, and round trips
// of the benchmark corpora through the reader.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonEquality.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace json_test;

std::string Encode(const JsonValue& value) {
    std::string out = "stale"; // WriteToMsgPack empties its target first
    EXPECT_TRUE(value.WriteToMsgPack(out));
    return out;
}

ValuePtr Decode(const std::string& bytes, bool keepOrder = false) {
    ParserContext ctx;
    ctx.fKeepOrder = keepOrder;
    ValuePtr value = JsonValue::ReadFromMsgPack(bytes, &ctx, nullptr);
    EXPECT_TRUE(value) << ctx.fError << " at " << ctx.fPos;
    return value;
}

ValuePtr Int(long long v) { return ValuePtr(new JsonInteger(v)); }
ValuePtr UInt(unsigned long long v) { return ValuePtr(new JsonInteger(v, true)); }
ValuePtr Real(double v) { return ValuePtr(new JsonReal(v)); }

TEST(MsgPackWriter, ScalarEncodings) {
    using Limits = std::numeric_limits<double>;
    bool trusted = true;
    struct Row { const char* fName; ValuePtr fValue; const char* fHex; };
    const Row rows[] = {
        {"null", ValuePtr(new JsonNull()), "C0"},
        {"false", ValuePtr(new JsonFalse()), "C2"},
        {"true", ValuePtr(new JsonTrue()), "C3"},
        // positive and negative fixint, then the shortest signed or unsigned form
        {"0", Int(0), "00"},
        {"127", Int(127), "7F"},
        {"-1", Int(-1), "FF"},
        {"-32", Int(-32), "E0"},
        {"-33", Int(-33), "D0 DF"},
        {"-128", Int(-128), "D0 80"},
        {"-129", Int(-129), "D1 FF 7F"},
        {"-32768", Int(-32768), "D1 80 00"},
        {"-32769", Int(-32769), "D2 FF FF 7F FF"},
        {"-2^31", Int(-2147483648LL), "D2 80 00 00 00"},
        {"-2^31-1", Int(-2147483649LL), "D3 FF FF FF FF 7F FF FF FF"},
        {"int64 min", Int(JsonInteger::sMinInt64), "D3 80 00 00 00 00 00 00 00"},
        {"128", Int(128), "CC 80"},
        {"255", Int(255), "CC FF"},
        {"256", Int(256), "CD 01 00"},
        {"65535", Int(65535), "CD FF FF"},
        {"65536", Int(65536), "CE 00 01 00 00"},
        {"2^32-1", Int(4294967295LL), "CE FF FF FF FF"},
        {"2^32", Int(4294967296LL), "CF 00 00 00 01 00 00 00 00"},
        {"int64 max", Int(JsonInteger::sMaxInt64), "CF 7F FF FF FF FF FF FF FF"},
        {"uint64 max", UInt(JsonInteger::sMaxUInt64), "CF FF FF FF FF FF FF FF FF"},
        {"2^63 unsigned", UInt(9223372036854775808ULL), "CF 80 00 00 00 00 00 00 00"},
        {"small via unsigned constructor", UInt(5), "05"},
        // float32 exactly when the double survives the round trip through float
        {"0.5", Real(0.5), "CA 3F 00 00 00"},
        {"1.5", Real(1.5), "CA 3F C0 00 00"},
        {"-0.0", Real(-0.0), "CA 80 00 00 00"},
        {"float max", Real(std::numeric_limits<float>::max()), "CA 7F 7F FF FF"},
        {"+inf", Real(Limits::infinity()), "CA 7F 80 00 00"},
        {"-inf", Real(-Limits::infinity()), "CA FF 80 00 00"},
        {"0.1", Real(0.1), "CB 3F B9 99 99 99 99 99 9A"},
        {"1e30", Real(1e30), "CB 46 29 3E 59 39 A0 8C EA"},
        {"double max", Real(Limits::max()), "CB 7F EF FF FF FF FF FF FF"},
        {"NaN", Real(Limits::quiet_NaN()), "CB 7F F8 00 00 00 00 00 00"},
        {"pending 1.50", ValuePtr(new JsonReal(std::string("1.50"), 3)), "CA 3F C0 00 00"},
        {"pending 0.1", ValuePtr(new JsonReal(std::string("0.1"), 3)), "CB 3F B9 99 99 99 99 99 9A"},
        // strings are written as their bytes, without a UTF-8 check
        {"empty string", ValuePtr(new JsonString()), "A0"},
        {"not UTF-8", ValuePtr(new JsonString("\xC3\x28", &trusted, nullptr)), "A2 C3 28"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        EXPECT_EQ(Hex(Encode(*row.fValue)), row.fHex);
    }
}

TEST(MsgPackWriter, LengthAndCountHeaders) {
    struct Row { size_t fCount; const char *fString, *fArray, *fMap; };
    const Row rows[] = {
        {0, "A0", "90", "80"},
        {15, "AF", "9F", "8F"},
        {16, "B0", "DC 00 10", "DE 00 10"},
        {31, "BF", "DC 00 1F", "DE 00 1F"},
        {32, "D9 20", "DC 00 20", "DE 00 20"},
        {255, "D9 FF", "DC 00 FF", "DE 00 FF"},
        {256, "DA 01 00", "DC 01 00", "DE 01 00"},
        {65535, "DA FF FF", "DC FF FF", "DE FF FF"},
        {65536, "DB 00 01 00 00", "DD 00 01 00 00", "DF 00 01 00 00"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fCount);
        const std::string text(row.fCount, 'x');
        EXPECT_EQ(Encode(JsonString(text, nullptr, nullptr)), Bytes(row.fString) + text);

        JsonArray array;
        JsonObject object; // keys "00000".."65535", each 5 bytes, values null
        char key[24];
        for (size_t i = 0; i < row.fCount; ++i) {
            array.AddNull();
            std::snprintf(key, sizeof key, "%05zu", i);
            object.InsertNull(key, true);
        }
        EXPECT_EQ(Encode(array), Bytes(row.fArray) + std::string(row.fCount, '\xC0'));
        const std::string bytes = Encode(object);
        const std::string header = Bytes(row.fMap);
        EXPECT_EQ(bytes.substr(0, header.size()), header);
        EXPECT_EQ(bytes.size(), header.size() + row.fCount * 7); // A5 + 5 bytes + C0
        EXPECT_TRUE(*Decode(bytes) == object);
    }
}

TEST(MsgPackWriter, NestingAndMissingChildren) {
    JsonAutoRefPtr<JsonObject> member(new JsonObject());
    member->InsertValue("k", JsonArray(), true);
    member->MutableMembers().TryEmplace("n", 1UL, nullptr); // missing value: nil
    JsonAutoRefPtr<JsonObject> inner(new JsonObject());
    inner->InsertValue("a", std::move(member), true);
    JsonArray array;
    array.AddInteger(1);
    array.MutableElements().push_back(nullptr); // missing element: nil
    array.AddValue(std::move(inner));
    const std::string hex = Hex(Encode(array));
    // the two members of the innermost object may come in either map order
    EXPECT_TRUE(hex == "93 01 C0 81 A1 61 82 A1 6B 90 A1 6E C0" ||
                hex == "93 01 C0 81 A1 61 82 A1 6E C0 A1 6B 90")
        << hex;
}

TEST(MsgPackWriter, OutputLargerThanTheFirstBuffer) {
    // 3000 integers: items of 1, 2 and 3 bytes cross every buffer boundary at some point
    JsonArray numbers;
    std::string expected = Bytes("DC 0B B8");
    for (int i = 0; i < 3000; ++i) {
        numbers.AddInteger(i);
        if (i > 255)
            expected += {'\xCD', static_cast<char>(i >> 8), static_cast<char>(i & 0xFF)};
        else if (i > 127)
            expected += {'\xCC', static_cast<char>(i)};
        else
            expected += static_cast<char>(i);
    }
    EXPECT_EQ(Encode(numbers), expected);

    // one string larger than a whole buffer, placed after a nearly full first buffer
    const std::string big(5000, 'y');
    JsonArray mixed;
    for (int i = 0; i < 990; ++i)
        mixed.AddNull();
    mixed.AddString(big, nullptr, true);
    mixed.AddString(std::string(20, 'z'), nullptr, true);
    mixed.AddInteger(7);
    EXPECT_EQ(Encode(mixed), Bytes("DC 03 E1") + std::string(990, '\xC0') + Bytes("DA 13 88") +
                                 big + Bytes("B4") + std::string(20, 'z') + Bytes("07"));
    EXPECT_EQ(Encode(JsonString(big, nullptr, nullptr)), Bytes("DA 13 88") + big);
}

TEST(MsgPackWriter, CompiledObjects) {
    JsonCompiledObjectContext keys;
    for (const char* k : {"a", "b", "c"})
        keys.AddKey(k, 0, nullptr);
    JsonCompiledObject object(&keys); // set out of order: written in slot order
    object.InsertInteger(2, 3LL);
    object.InsertInteger(0, 1LL);
    EXPECT_EQ(Hex(Encode(object)), "82 A1 61 01 A1 63 03");
    EXPECT_EQ(Hex(Encode(JsonCompiledObject(&keys))), "80");
    EXPECT_EQ(Hex(Encode(JsonCompiledObject(nullptr))), "80");

    // fewer set slots than the count announces: each missing pair is A0 C0
    JsonAutoRefPtr<JsonCompiledObject> shell(JsonCompiledObject::CloneShell(object));
    EXPECT_EQ(Hex(Encode(*shell)), "82 A0 C0 A0 C0");
    // more set slots than the count: the output stops once the announced pairs are written
    shell->MutableSlots()[1] = new JsonTrue();
    shell->MutableSlots()[2] = new JsonFalse();
    shell->MutableSlots()[0] = new JsonNull();
    EXPECT_EQ(Hex(Encode(*shell)), "82 A1 61 C0 A1 62 C3");

    ParserContext ctx;
    ValuePtr back = JsonValue::ReadFromMsgPack(Encode(object), &ctx, &keys);
    ASSERT_TRUE(back) << ctx.fError;
    EXPECT_TRUE(*back == object);
}

TEST(MsgPackRoundTrip, BenchmarkCorpora) {
    SKIP_WITHOUT_SHARED_DATA();
    for (const char* name : {"canada.json", "citm_catalog.json", "twitter.json"}) {
        const std::string text = ReadFile(SharedPath("bench-data") / name);
        for (bool keepOrder : {false, true}) {
            SCOPED_TRACE(std::string(name) + (keepOrder ? " ordered" : ""));
            ParserContext ctx;
            ctx.fKeepOrder = keepOrder;
            ValuePtr tree = JsonValue::ReadFromString(text, &ctx, nullptr);
            ASSERT_TRUE(tree) << ctx.fError;
            ValuePtr back = Decode(Encode(*tree), keepOrder);
            ASSERT_TRUE(back);
            EXPECT_TRUE(*back == *tree);
        }
    }
}

} // namespace
