// The MessagePack reader: every code (including forms only other encoders write), every fixed
// message with the position it leaves, the UTF-8 and duplicate-key rules, compiled objects,
// hostile lengths, and the text parser's routing of binary input.
#include "tests/json/JsonTestHelpers.h"
#include "tests/support/AllocationProbe.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

namespace {

using namespace json_test;

TEST(MsgPackReader, DecodesEveryCode) {
    using V = JsonValue;
    struct Row { const char* fHex; JsonValue::EJsonValueType fType; const char* fText; };
    const Row rows[] = {
        {"00", V::eJsonInteger, "0"},
        {"7F", V::eJsonInteger, "127"},
        {"E0", V::eJsonInteger, "-32"},
        {"FF", V::eJsonInteger, "-1"},
        {"CC 05", V::eJsonInteger, "5"}, // uint 8 for a fixint value
        {"CD 01 00", V::eJsonInteger, "256"},
        {"CE FF FF FF FF", V::eJsonInteger, "4294967295"},
        {"D0 FF", V::eJsonInteger, "-1"},
        {"D0 80", V::eJsonInteger, "-128"},
        {"D1 FF FE", V::eJsonInteger, "-2"}, // int 16 for a small negative
        {"D1 00 05", V::eJsonInteger, "5"},
        {"D2 80 00 00 00", V::eJsonInteger, "-2147483648"},
        {"D3 FF FF FF FF FF FF FF FE", V::eJsonInteger, "-2"},
        {"D3 80 00 00 00 00 00 00 00", V::eJsonInteger, "-9223372036854775808"},
        {"C0", V::eJsonNull, "null"},
        {"C2", V::eJsonFalse, "false"},
        {"C3", V::eJsonTrue, "true"},
        {"CA 3F C0 00 00", V::eJsonReal, "1.5"},
        {"CB 3F B9 99 99 99 99 99 9A", V::eJsonReal, "0.1"},
        {"A0", V::eJsonString, "\"\""},
        {"A3 61 62 63", V::eJsonString, "\"abc\""},
        {"D9 03 61 62 63", V::eJsonString, "\"abc\""}, // str 8 for a short string
        {"DA 00 03 61 62 63", V::eJsonString, "\"abc\""},
        {"DB 00 00 00 03 61 62 63", V::eJsonString, "\"abc\""},
        {"80", V::eJsonObject, "{}"},
        {"90", V::eJsonArray, "[]"},
        {"92 01 C3", V::eJsonArray, "[1,true]"},
        {"DC 00 01 01", V::eJsonArray, "[1]"}, // array 16 for a small count
        {"DD 00 00 00 01 01", V::eJsonArray, "[1]"},
        {"81 A1 61 01", V::eJsonObject, "{\"a\":1}"},
        {"DE 00 01 A1 61 01", V::eJsonObject, "{\"a\":1}"}, // map 16 for a small count
        {"DF 00 00 00 01 A1 61 01", V::eJsonObject, "{\"a\":1}"},
        {"82 A1 61 01 A1 61 02", V::eJsonObject, "{\"a\":2}"}, // later duplicate wins
        {"92 81 A1 61 91 90 C0", V::eJsonArray, "[{\"a\":[[]]},null]"},
        {"C0 20 0A", V::eJsonNull, "null"}, // trailing white space is tolerated
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fHex);
        ParserContext ctx;
        ctx.fError = "stale";
        ValuePtr value = JsonValue::ReadFromMsgPack(Bytes(row.fHex), &ctx, nullptr);
        ASSERT_TRUE(value) << ctx.fError;
        EXPECT_EQ(value->GetType(), row.fType);
        EXPECT_EQ(Text(value), row.fText);
        EXPECT_TRUE(ctx.fComplete);
        EXPECT_EQ(ctx.fError, "");
        EXPECT_EQ(ctx.fPos, Bytes(row.fHex).size());
    }
}

TEST(MsgPackReader, IntegerSignednessAndRealWidth) {
    struct Row { const char* fHex; bool fUnsigned; unsigned long long fBits; };
    const Row rows[] = {
        {"CF FF FF FF FF FF FF FF FF", true, 18446744073709551615ULL},
        {"CF 80 00 00 00 00 00 00 00", true, 9223372036854775808ULL},
        {"CF 7F FF FF FF FF FF FF FF", false, 9223372036854775807ULL},
        {"CF 00 00 00 00 00 00 00 05", false, 5},
        {"CE FF FF FF FF", false, 4294967295ULL},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fHex);
        ValuePtr value = JsonValue::ReadFromMsgPack(Bytes(row.fHex), nullptr, nullptr);
        ASSERT_TRUE(value && value->GetType() == JsonValue::eJsonInteger);
        EXPECT_EQ(static_cast<JsonInteger&>(*value).IsUnsigned(), row.fUnsigned);
        EXPECT_EQ(static_cast<JsonInteger&>(*value).Bits(), row.fBits);
    }
    // a float 32 is widened, not re-rounded; reals from binary carry no text
    ValuePtr real = JsonValue::ReadFromMsgPack(Bytes("CA 3D CC CC CD"), nullptr, nullptr);
    ASSERT_TRUE(real);
    EXPECT_EQ(static_cast<JsonReal&>(*real).Get(), static_cast<double>(0.1f));
    EXPECT_FALSE(static_cast<JsonReal&>(*real).HasPendingText());
}

TEST(MsgPackReader, FailsWithMessageAndPosition) {
    const char *end = "unexpected end of input", *unsupported = "unsupported MsgPack type code",
               *stringExpected = "string expected";
    struct Row { const char* fHex; const char* fError; uint64_t fPos; bool fStrictKeys = false; };
    const Row rows[] = {
        {"", "empty input", 0},
        // every fixed-size payload, length and count is checked before it is read
        {"CA 3F C0 00", end, 1},
        {"CB 3F B9 99 99 99 99 99", end, 1},
        {"CC", end, 1},
        {"CD 01", end, 1},
        {"CE 00 00 00", end, 1},
        {"CF 00 00 00 00 00 00 00", end, 1},
        {"D0", end, 1},
        {"D1 FF", end, 1},
        {"D2 FF FF FF", end, 1},
        {"D3 FF FF FF FF FF FF FF", end, 1},
        {"A5 61 62", end, 1},
        {"D9", end, 1},
        {"D9 05 61 62", end, 2}, // the length bytes are consumed
        {"DA 00", end, 1},
        {"DA 00 05 61", end, 3},
        {"DB 00 00 00", end, 1},
        {"DB 00 00 00 05 61", end, 5},
        {"DC 00", end, 1},
        {"DD 00 00 00", end, 1},
        {"DE 00", end, 1},
        {"DF 00 00 00", end, 1},
        {"91", end, 1},
        {"92 01", end, 2},
        {"81 A1 61", end, 3},
        {"81 A3 61", end, 2},
        // binary and extension types: the position stays on the code byte
        {"C1", unsupported, 0},
        {"C4 00", unsupported, 0},
        {"C5 00 00", unsupported, 0},
        {"C6 00 00 00 00", unsupported, 0},
        {"C7 00 00", unsupported, 0},
        {"C8 00 00 00", unsupported, 0},
        {"C9 00 00 00 00 00", unsupported, 0},
        {"D4 00 00", unsupported, 0},
        {"D5 00 00 00", unsupported, 0},
        {"D6 00 00 00 00 00", unsupported, 0},
        {"D7 00 00 00 00 00 00 00 00 00", unsupported, 0},
        {"D8 00", unsupported, 0},
        {"92 01 D6 FF 00 00 00 00", unsupported, 2},
        // map keys must be strings; input ending where a key should start is no string either
        {"81 01 02", stringExpected, 2},
        {"81 C0 02", stringExpected, 2},
        {"81", stringExpected, 1},
        {"82 A1 61 01", stringExpected, 4},
        {"DE 00 01", stringExpected, 3},
        // a key that is not UTF-8 under strict keys
        {"81 A2 C3 28 01", "duplicate key", 5, true},
        {"C0 C0", "illegal trailing characters after value", 1},
        {"C0 20 0A 41", "illegal trailing characters after value", 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fHex);
        ParserContext ctx;
        ctx.fStrictKeys = row.fStrictKeys;
        EXPECT_FALSE(JsonValue::ReadFromMsgPack(Bytes(row.fHex), &ctx, nullptr));
        EXPECT_EQ(ctx.fError, row.fError);
        EXPECT_EQ(ctx.fPos, row.fPos);
        EXPECT_FALSE(ctx.fComplete);
    }

    ParserContext ctx; // the value reader itself, at the end of its range
    const char* nothing = "";
    EXPECT_EQ(JsonValue::ParseFromMsgPack(nothing, nothing, ctx, nullptr), nullptr);
    EXPECT_EQ(ctx.fError, end);
}

TEST(MsgPackReader, ContextOptions) {
    struct Row { const char* fName; const char* fHex; bool fTrustUTF8, fStrictKeys; const char* fText; };
    const Row rows[] = {
        // deliberate: a string value that is not UTF-8 silently becomes "" unless trusted
        {"bad value", "A2 C3 28", false, false, "\"\""},
        {"bad value trusted", "A2 C3 28", true, false, "\"\xC3(\""},
        {"bad value strict", "81 A1 61 A2 C3 28", false, true, "{\"a\":\"\"}"},
        // a key that is not UTF-8 is dropped, even with UTF-8 trusted
        {"bad key", "82 A2 C3 28 01 A1 62 02", false, false, "{\"b\":2}"},
        {"bad key trusted", "81 A2 C3 28 01", true, false, "{}"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        ParserContext ctx;
        ctx.fTrustUTF8 = row.fTrustUTF8;
        ctx.fStrictKeys = row.fStrictKeys;
        EXPECT_EQ(Text(JsonValue::ReadFromMsgPack(Bytes(row.fHex), &ctx, nullptr)), row.fText);
        EXPECT_EQ(ctx.fError, "");
    }

    // fKeepOrder reaches every object, nested ones included; the reset keeps the option flags
    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fLine = 9;
    ValuePtr value = JsonValue::ReadFromMsgPack(Bytes("92 82 A1 62 01 A1 61 02 80 0D 0A 0A"), &ctx, nullptr);
    EXPECT_EQ(Text(value), "[{\"b\":1,\"a\":2},{}]");
    EXPECT_TRUE(static_cast<const JsonArray&>(*value).AtIndexAsObject(1)->GetKeepOrder());
    EXPECT_TRUE(ctx.fKeepOrder);
    EXPECT_EQ(ctx.fLine, 2u); // CR LF counts once
    EXPECT_EQ(ctx.fLineStart, 12u);
    ctx.fKeepOrder = false;
    EXPECT_FALSE(JsonObject::ReadFromMsgPack(Bytes("81 A1 61 01"), &ctx)->GetKeepOrder());
}

TEST(MsgPackReader, HostileLengthsFailFastWithoutAllocating) {
    const std::string padding(64, '\x01');
    const char* const end = "unexpected end of input";
    struct Row { const char* fClaim; const char* fError; };
    const Row rows[] = {
        {"DB FF FF FF FF", end}, // str 32 of 4 GiB
        {"DD FF FF FF FF", end}, // array 32 of 4 Gi elements
        {"91 DD FF FF FF FF", end},
        {"DF FF FF FF FF DB FF FF FF FF", end}, // map 32 whose first key claims 4 GiB
        {"DF FF FF FF FF", "string expected"},  // map 32 of 4 Gi pairs
        {"81 A1 61 DF FF FF FF FF", "string expected"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fClaim);
        for (const std::string& behind : {std::string(), padding}) {
            ParserContext ctx;
            AllocationProbe::ResetLargest();
            EXPECT_FALSE(JsonValue::ReadFromMsgPack(Bytes(row.fClaim) + behind, &ctx, nullptr));
            // A page of the node pool is the largest block such a read may take.
            EXPECT_LE(AllocationProbe::LargestRequest(), JsonMemory::kPageSize);
            EXPECT_EQ(ctx.fError, row.fError);
        }
    }

    AllocationProbe::ResetLargest(); // the probe itself sees a real 100000-byte string
    EXPECT_TRUE(JsonValue::ReadFromMsgPack(Bytes("DB 00 01 86 A0") + std::string(100000, 'x'), nullptr, nullptr));
    EXPECT_GE(AllocationProbe::LargestRequest(), 100000u);

    // depth costs no native stack: 200000 nested arrays read and write back unchanged
    const std::string deep = std::string(200000, '\x91') + '\xC0';
    ValuePtr value = JsonValue::ReadFromMsgPack(deep, nullptr, nullptr);
    std::string out;
    EXPECT_TRUE(value && value->WriteToMsgPack(out) && out == deep);
}

TEST(MsgPackReader, CompiledObjects) {
    using Keys = JsonCompiledObjectContext;
    Keys point, keys;
    point.AddKey("x", Keys::kNumber, nullptr);
    keys.AddKey("id", Keys::kNumber, nullptr);
    keys.AddKey("name", Keys::kString | Keys::kNull, nullptr);
    keys.AddKey("at", Keys::kCompiledObject, &point);
    keys.AddKey("any", 0, nullptr);
    keys.AddKey("unset", 0, nullptr);

    // unknown keys are skipped whole; a duplicate replaces without counting twice; the key table
    // reaches nested compiled objects but not plain objects
    const std::string input = Bytes("86 A4 6E 61 6D 65 A1 61  A2 69 64 01  A1 3F 81 A1 78 92 01 02"
                                    "  A2 61 74 81 A1 78 CB 3F B9 99 99 99 99 99 9A"
                                    "  A3 61 6E 79 81 A1 78 A1 79  A2 69 64 02");
    ParserContext ctx;
    JsonAutoRefPtr<JsonCompiledObject> object = JsonCompiledObject::ReadFromMsgPack(input, &keys, &ctx);
    ASSERT_TRUE(object) << ctx.fError << " at " << ctx.fPos;
    EXPECT_EQ(object->GetSetCount(), 4u);
    EXPECT_EQ(Text(object), "{\"id\":2,\"name\":\"a\",\"at\":{\"x\":0.1},\"any\":{\"x\":\"y\"}}");
    EXPECT_EQ(object->Slots()[2]->GetType(), JsonValue::eJsonCompiledObject);
    EXPECT_EQ(object->Slots()[3]->GetType(), JsonValue::eJsonObject);

    // arrays pass the key table on to their elements
    ValuePtr array = JsonValue::ReadFromMsgPack(Bytes("92 81 A1 78 01 80"), &ctx, &point);
    ASSERT_TRUE(array);
    for (const JsonValue* element : static_cast<const JsonArray&>(*array).Elements())
        EXPECT_EQ(element->GetType(), JsonValue::eJsonCompiledObject);

    // the expected-type test: a mismatch fails with the position on the value's first byte
    struct Row { const char* fHex; const char* fError; uint64_t fPos; }; // fError null: accepted
    const Row rows[] = {
        {"81 A2 69 64 A1 31", "value is not of expected type", 4},
        {"82 A2 69 64 01 A4 6E 61 6D 65 92 A1 61 A1 62", "value is not of expected type", 10},
        {"81 A2 61 74 81 A1 78 C3", "value is not of expected type", 7},
        {"81 A4 6E 61 6D 65 C0", nullptr, 7},
        {"81 A4 6C 69 73 74 92 01 A0", nullptr, 9}, // one array bit accepts any array
        {"81 A4 6C 69 73 74 01", "value is not of expected type", 6},
        {"81 A3 61 6E 79 92 C2 C3", nullptr, 8},
    };
    keys.AddKey("list", 0x10, nullptr);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fHex);
        ValuePtr value = JsonValue::ReadFromMsgPack(Bytes(row.fHex), &ctx, &keys);
        EXPECT_EQ(!value, row.fError != nullptr);
        EXPECT_EQ(ctx.fError, row.fError ? row.fError : "");
        EXPECT_EQ(ctx.fPos, row.fPos);
    }
}

TEST(MsgPackReader, TypedEntryPoints) {
    JsonCompiledObjectContext keys;
    keys.AddKey("a", 0, nullptr);
    ParserContext ctx;
    EXPECT_TRUE(JsonObject::ReadFromMsgPack(Bytes("80"), &ctx));
    EXPECT_TRUE(JsonArray::ReadFromMsgPack(Bytes("90"), &ctx, nullptr));
    EXPECT_TRUE(JsonCompiledObject::ReadFromMsgPack(Bytes("81 A1 61 01"), &keys, &ctx));
    // another type is released and gives null, without a message
    EXPECT_FALSE(JsonObject::ReadFromMsgPack(Bytes("90"), &ctx));
    EXPECT_EQ(ctx.fError, "");
    EXPECT_FALSE(JsonArray::ReadFromMsgPack(Bytes("80"), &ctx, nullptr));
    EXPECT_FALSE(JsonCompiledObject::ReadFromMsgPack(Bytes("90"), &keys, &ctx));
    EXPECT_FALSE(JsonCompiledObject::ReadFromMsgPack(Bytes("81 A1 61 01"), nullptr, &ctx));
    EXPECT_EQ(ctx.fError, "");
}

TEST(MsgPackReader, TextParserRoutesMapAndArrayMarkers) {
    struct Row { const char* fHex; bool fAccept; const char* fText; const char* fError = ""; }; // fText "": fails
    const Row rows[] = {
        {"80", true, "{}"},
        {"8F", true, "", "string expected"}, // routed: fails as MessagePack
        {"90", true, "[]"},
        {"91 A1 61", true, "[\"a\"]"},
        {"9F", true, "", "unexpected end of input"},
        {"DC 00 00", true, "[]"},
        {"DD 00 00 00 00", true, "[]"},
        {"DE 00 00", true, "{}"},
        {"DF 00 00 00 00", true, "{}"},
        {"90", false, ""},
        // other leading bytes stay JSON text, even where they would be valid MessagePack
        {"31", true, "1"},
        {"22 61 22", true, "\"a\""},
        {"C0", true, ""},
        {"A0", true, ""},
        {"7B 7D", true, "{}"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.fHex) + (row.fAccept ? " accepted" : ""));
        ParserContext ctx;
        ctx.fAcceptMsgPack = row.fAccept;
        EXPECT_EQ(Text(JsonValue::ReadFromString(Bytes(row.fHex), &ctx, nullptr)), row.fText);
        if (*row.fError) {
            EXPECT_EQ(ctx.fError, row.fError);
        }
    }
    ParserContext ctx; // the key table goes along
    ctx.fAcceptMsgPack = true;
    JsonCompiledObjectContext keys;
    keys.AddKey("a", 0, nullptr);
    ValuePtr value = JsonValue::ReadFromString(Bytes("81 A1 61 01"), &ctx, &keys);
    EXPECT_TRUE(value && value->GetType() == JsonValue::eJsonCompiledObject);
}

} // namespace
