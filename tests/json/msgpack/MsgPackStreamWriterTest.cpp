// The streaming MessagePack writer: members in member order or sorted by key, every item
// encoded as WriteToMsgPack encodes it (compiled objects included), any piece size, and the
// failure flag.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonCompiledObject.h"
#include "json/JsonEquality.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"
#include "json/msgpack/MsgPackStreamWriter.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace json_test;

std::string Stream(const JsonValue& value, bool sortKeys, size_t pieceBytes, size_t* pieceCount = nullptr) {
    std::string bytes;
    size_t pieces = 0;
    ChunkedOutput out([&](std::string_view piece) {
        bytes += piece;
        ++pieces;
    }, pieceBytes);
    EXPECT_TRUE(MsgPackStreamWriter::Write(value, out, sortKeys));
    if (pieceCount) *pieceCount = pieces;
    return bytes;
}

TEST(MsgPackStreamWriter, KeepsMemberOrderOrSortsKeys) {
    const ValuePtr document = Parse(R"({"b":1,"a":2,"c":{"z":true,"y":null}})");
    EXPECT_EQ(Hex(Stream(*document, false, 4)),
              "83 A1 62 01 A1 61 02 A1 63 82 A1 7A C3 A1 79 C0");
    EXPECT_EQ(Hex(Stream(*document, true, 4)),
              "83 A1 61 02 A1 62 01 A1 63 82 A1 79 C0 A1 7A C3");
}

TEST(MsgPackStreamWriter, EncodesItemsAsWriteToMsgPack) {
    std::string wide = "[";
    for (int i = 0; i < 70000; ++i) wide += i ? ",1" : "1"; // an array 32 header
    wide += "]";
    JsonCompiledObjectContext keys;
    keys.AddKey("x", 0, nullptr);
    keys.AddKey("y", 0, nullptr);
    JsonCompiledObject compiled(&keys);
    compiled.PutSlot(1, new JsonInteger(-200LL));

    std::vector<ValuePtr> documents = {
        Parse("[0,127,128,-32,-33,-129,65536,-2147483649,18446744073709551615,0.5,1.1,1e300]"),
        Parse("[\"\",\"" + std::string(31, 's') + "\",\"" + std::string(32, 's') + "\",\"" +
              std::string(70000, 'l') + "\"]"),
        Parse("[true,false,null,[],{},[[{\"k\":[1]}]]]"),
        Parse(wide),
        ValuePtr::Share(&compiled),
    };
    for (const ValuePtr& document : documents) {
        std::string expected;
        ASSERT_TRUE(document->WriteToMsgPack(expected));
        for (const size_t pieceBytes : {size_t{1}, size_t{100}, ChunkedOutput::kDefaultPieceBytes}) {
            SCOPED_TRACE(Text(document).substr(0, 60) + ", pieces of " + std::to_string(pieceBytes));
            EXPECT_EQ(Stream(*document, false, pieceBytes), expected);
        }
    }
}

TEST(MsgPackStreamWriter, ReadsBackEqualInPiecesOfBoundedSize) {
    std::string text = "{";
    for (int i = 0; i < 3000; ++i) text += (i ? ",\"k" : "\"k") + std::to_string(i) + "\":[" + std::to_string(i) + ",\"v\"]";
    text += "}";
    const ValuePtr document = Parse(text, false);
    size_t pieces = 0;
    const std::string bytes = Stream(*document, false, 1000, &pieces);
    EXPECT_GE(pieces, bytes.size() / 1100); // pieces of about the piece size
    ParserContext ctx;
    const ValuePtr back = JsonValue::ReadFromMsgPack(bytes, &ctx, nullptr);
    ASSERT_TRUE(back) << ctx.fError;
    EXPECT_TRUE(*back == *document);
}

} // namespace
