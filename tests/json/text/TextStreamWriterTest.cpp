// The streaming text writer: the same bytes as TextWriter in every layout, profile and piece
// size; pieces bounded by the piece size; keys sorted byte by byte; encoded surrogates written
// back as escapes in the standard profile; a throwing sink stops the writing.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"
#include "json/text/TextStreamWriter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

using namespace json_test;

// Parsed as jsonfmt reads: members in order, the standard profile unless asked otherwise.
ValuePtr ParseStandard(const std::string& text, bool standard = true) {
    return Parse(text, true, standard);
}

// The pieces the writer hands on, and the text they make.
struct Pieces {
    std::vector<std::string> fPieces;
    std::string Joined() const {
        std::string all;
        for (const std::string& piece : fPieces) all += piece;
        return all;
    }
};

Pieces Stream(const JsonValue& value, const TextStreamOptions& options, size_t pieceBytes) {
    Pieces pieces;
    ChunkedOutput out([&](std::string_view piece) { pieces.fPieces.emplace_back(piece); }, pieceBytes);
    TextStreamWriter::Write(value, out, options);
    EXPECT_TRUE(out.Buffer().empty()); // flushed
    return pieces;
}

TextStreamOptions Options(bool pretty, const std::string& indent, bool standard, bool sortKeys = false) {
    TextStreamOptions options;
    options.fPretty = pretty;
    options.fIndent = indent;
    options.fWriter.fStandard = standard;
    options.fSortKeys = sortKeys;
    return options;
}

TEST(TextStreamWriter, SameBytesAsTextWriter) {
    JsonCompiledObjectContext keys;
    keys.AddKey("x", 0, nullptr);
    keys.AddKey("y", 0, nullptr);
    JsonCompiledObject compiled(&keys);
    compiled.PutSlot(1, new JsonInteger(2LL));
    compiled.PutSlot(0, new JsonString("a\"b", nullptr, nullptr));
    JsonArray holder; // a compiled object inside a plain container
    holder.AddValue(compiled);
    holder.AddValue(*ParseStandard("{\"k\":[]}"));

    const std::string deep = std::string(300, '[') + "{\"a\":1}" + std::string(300, ']');
    std::vector<ValuePtr> documents = {
        ParseStandard("{\"b\":[1,2.50,{\"c\":null}],\"a\":\"x\\u00e9\\ty\",\"e\":{},\"d\":[]}"),
        ParseStandard("[9999999999999999,-9223372036854775807,18446744073709551615,1.5e300,-0.0]", false),
        ParseStandard("[9999999999999999,1e400,0.1234567890123456789]"),
        ParseStandard("\"\\u0001\\\"\\\\/\""),
        ParseStandard("true"), ParseStandard("{}"), ParseStandard("[]"), ParseStandard("[[],{},[[{}]]]"), ParseStandard(deep),
        ValuePtr::Share(&holder),
    };
    for (const ValuePtr& document : documents) {
        for (const bool standard : {false, true}) {
            TextWriterOptions writer;
            writer.fStandard = standard;
            std::string compact, twoBlanks, tabs, none;
            TextWriter::WriteCompact(*document, compact, writer);
            TextWriter::WritePretty(*document, twoBlanks, "  ", "\n", 0, writer);
            TextWriter::WritePretty(*document, tabs, "\t", "\n", 0, writer);
            TextWriter::WritePretty(*document, none, "", "\n", 0, writer);
            for (const size_t pieceBytes : {size_t{1}, size_t{7}, ChunkedOutput::kDefaultPieceBytes}) {
                SCOPED_TRACE(compact + (standard ? " standard" : " designed") + ", pieces of " +
                             std::to_string(pieceBytes));
                EXPECT_EQ(Stream(*document, Options(false, "", standard), pieceBytes).Joined(), compact);
                EXPECT_EQ(Stream(*document, Options(true, "  ", standard), pieceBytes).Joined(), twoBlanks);
                EXPECT_EQ(Stream(*document, Options(true, "\t", standard), pieceBytes).Joined(), tabs);
                EXPECT_EQ(Stream(*document, Options(true, "", standard), pieceBytes).Joined(), none);
            }
        }
    }
}

TEST(TextStreamWriter, PiecesAreBoundedByThePieceSize) {
    std::string text = "[";
    for (int i = 0; i < 2000; ++i) text += (i ? ",\"" : "\"") + std::string(i % 40, 'x') + "\"";
    text += ",\"" + std::string(500, 'y') + "\"]"; // one item longer than a piece
    const ValuePtr document = ParseStandard(text);
    const Pieces pieces = Stream(*document, Options(false, "", true), 100);
    EXPECT_EQ(pieces.Joined(), text);
    ASSERT_GT(pieces.fPieces.size(), 10u);
    for (size_t i = 0; i + 1 < pieces.fPieces.size(); ++i) {
        EXPECT_GE(pieces.fPieces[i].size(), 100u);
        EXPECT_LE(pieces.fPieces[i].size(), 100u + 503u); // the piece size plus one item
    }
}

TEST(TextStreamWriter, SortsKeysByteByByte) {
    struct Row { const char* fName; std::string fText; std::string fSorted; };
    const Row rows[] = {
        {"flat", R"({"b":1,"a":2,"c":3})", R"({"a":2,"b":1,"c":3})"},
        {"nested and in arrays", R"({"z":{"y":1,"x":2},"a":[{"d":1,"c":2}]})",
         R"({"a":[{"c":2,"d":1}],"z":{"x":2,"y":1}})"},
        {"case, prefixes, empty key", R"({"b":1,"aa":2,"a":3,"B":4,"":5})",
         R"({"":5,"B":4,"a":3,"aa":2,"b":1})"},
        {"non-ASCII after ASCII, by code point", "{\"\xC3\xA9\":1,\"z\":2,\"\xE2\x82\xAC\":3}",
         "{\"z\":2,\"\xC3\xA9\":1,\"\xE2\x82\xAC\":3}"},
        {"duplicates were merged by the parser", R"({"b":1,"a":2,"b":3})", R"({"a":2,"b":3})"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        EXPECT_EQ(Stream(*ParseStandard(row.fText), Options(false, "", true, true), 3).Joined(), row.fSorted);
    }
    EXPECT_EQ(Stream(*ParseStandard(R"({"b":1,"a":2})"), Options(true, "  ", true, true), 3).Joined(),
              "{\n  \"a\": 2,\n  \"b\": 1\n}");
}

TEST(TextStreamWriter, StandardProfileWritesEncodedSurrogatesAsEscapes) {
    struct Row { const char* fName; std::string fText; std::string fStandard; std::string fDesigned; };
    const Row rows[] = {
        {"lone high surrogate", R"(["\uD800"])", R"(["\uD800"])", "[\"\xED\xA0\x80\"]"},
        {"lone low surrogate between text", R"(["a\udfffb\n"])", R"(["a\uDFFFb\n"])",
         "[\"a\xED\xBF\xBF" "b\\n\"]"},
        {"reversed pair stays two escapes", R"(["\uDC00\uD800"])", R"(["\uDC00\uD800"])",
         "[\"\xED\xB0\x80\xED\xA0\x80\"]"},
        {"a pair is one character", R"(["\uD840\uDC00"])", "[\"\xF0\xA0\x80\x80\"]",
         "[\"\xF0\x90\x80\x80\"]"},
        {"other ED sequences stay", "[\"\xED\x9F\xBF\"]", "[\"\xED\x9F\xBF\"]", "[\"\xED\x9F\xBF\"]"},
        {"keys too", R"({"\uD800":1})", R"({"\uD800":1})", "{\"\xED\xA0\x80\":1}"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        const std::string standard = Stream(*ParseStandard(row.fText), Options(false, "", true), 2).Joined();
        EXPECT_EQ(standard, row.fStandard);
        EXPECT_EQ(Stream(*ParseStandard(row.fText, false), Options(false, "", false), 2).Joined(), row.fDesigned);
        // What the standard profile writes reads back to the same strings.
        EXPECT_EQ(Stream(*ParseStandard(standard), Options(false, "", true), 2).Joined(), standard);
    }
}

TEST(TextStreamWriter, StandardProfileWritesDoublesInTheirShortestText) {
    struct Row { double fValue; std::string fText; };
    const Row rows[] = {
        {0.1, "0.1"}, {-0.0, "-0.0"}, {2.0, "2.0"}, {123.25, "123.25"}, {1e19, "1e+19"},
        {1e300, "1e+300"}, {1.5e-7, "1.5e-07"}, {5e-324, "5e-324"},
        {static_cast<double>(0.1f), "0.10000000149011612"},
        {-1.7976931348623157e308, "-1.7976931348623157e+308"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fText);
        const JsonReal real(row.fValue);
        const std::string text = Stream(real, Options(false, "", true), 64).Joined();
        EXPECT_EQ(text, row.fText);
        const ValuePtr back = ParseStandard(text);
        ASSERT_TRUE(back);
        const double value = static_cast<const JsonReal&>(*back).Get();
        EXPECT_EQ(std::memcmp(&value, &row.fValue, sizeof value), 0); // the same bits
        // The designed profile is TextWriter's.
        std::string designed;
        TextWriter::WriteCompact(real, designed);
        EXPECT_EQ(Stream(real, Options(false, "", false), 64).Joined(), designed);
    }
    // Reals that hold their text, or were converted from it, are TextWriter's in both profiles.
    const ValuePtr parsed = ParseStandard("[1.50,-0.0]");
    EXPECT_EQ(Stream(*parsed, Options(false, "", true), 64).Joined(), "[1.50,-0.0]");
}

TEST(TextStreamWriter, AThrowingSinkStopsTheWriting) {
    const ValuePtr document = ParseStandard("[\"" + std::string(100, 'x') + "\",2,3]");
    int calls = 0;
    ChunkedOutput out([&](std::string_view) {
        ++calls;
        throw std::runtime_error("disk full");
    }, 10);
    EXPECT_THROW(TextStreamWriter::Write(*document, out, Options(false, "", true)), std::runtime_error);
    EXPECT_EQ(calls, 1);
}

} // namespace
