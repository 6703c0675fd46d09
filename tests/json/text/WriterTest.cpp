// The JSON text writer: exact bytes of escaping, integers and reals, the compact and pretty
// layouts, and round trips through the parser (data files and benchmark corpora).
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"
#include "json/text/TextWriter.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace json_test;

TEST(Writer, Escaping) {
    struct Row { const char* fName; std::string fText; std::string fEscaped; };
    const Row rows[] = {
        {"empty", "", ""},
        {"quote", "\"", "\\\""},
        {"backslash", "\\", "\\\\"},
        {"named controls", "\b\f\n\r\t", "\\b\\f\\n\\r\\t"},
        {"byte 01", "\x01", "\\u0001"},
        {"byte 0B", "\x0B", "\\u000B"},
        {"byte 1F", "\x1F", "\\u001F"},
        {"byte 00", std::string("\0", 1), "\\u0000"},
        {"slash and DEL stay", "/\x7F", "/\x7F"},
        {"UTF-8", "\xC3\xA9\xF0\x9F\x98\x80", "\xC3\xA9\xF0\x9F\x98\x80"},
        {"clean prefix", "ab\"c\x1E" "d", "ab\\\"c\\u001Ed"},
        {"mixed", "\"\\\t\x01", "\\\"\\\\\\t\\u0001"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        std::string out = "<";
        AppendQuotedString(row.fText, out);
        EXPECT_EQ(out, "<" + row.fEscaped);
        bool trusted = true;
        EXPECT_EQ(Text(JsonString(row.fText, &trusted, nullptr)), "\"" + row.fEscaped + "\"");
        JsonObject object; // keys are escaped the same way
        object.InsertNull(row.fText, true);
        EXPECT_EQ(Text(object), "{\"" + row.fEscaped + "\":null}");
    }
}

TEST(Writer, Integers) {
    struct Row { JsonInteger fNode; std::string fText; };
    const Row rows[] = {
        {JsonInteger(0LL), "0"},
        {JsonInteger(-1LL), "-1"},
        {JsonInteger(9LL), "9"},
        {JsonInteger(10LL), "10"},
        {JsonInteger(99LL), "99"},
        {JsonInteger(100LL), "100"},
        {JsonInteger(-123456LL), "-123456"},
        {JsonInteger(99999999999999LL), "99999999999999"},
        {JsonInteger(JsonInteger::sMaxInt64), "9223372036854775807"},
        {JsonInteger(JsonInteger::sMinInt64), "-9223372036854775808"},
        {JsonInteger(9223372036854775808ULL, false), "9223372036854775808"},
        {JsonInteger(JsonInteger::sMaxUInt64, false), "18446744073709551615"},
        // deliberate: the digit count is floor(log10(double(magnitude))) + 1, so numbers just
        // below a power of ten whose double or whose log10 rounds up get a leading zero
        {JsonInteger(999999999999999LL), "0999999999999999"},
        {JsonInteger(9999999999999998LL), "09999999999999998"},
        {JsonInteger(9999999999999999LL), "09999999999999999"},
        {JsonInteger(-9999999999999999LL), "-09999999999999999"},
        {JsonInteger(99999999999999999LL), "099999999999999999"},
        {JsonInteger(999999999999999999LL), "0999999999999999999"},
        {JsonInteger(9999999999999999999ULL, false), "09999999999999999999"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fText);
        EXPECT_EQ(Text(row.fNode), row.fText);
    }
}

TEST(Writer, RealsMadeFromDoubles) {
    const double inf = std::numeric_limits<double>::infinity();
    struct Row { double fValue; std::string fText; };
    const Row rows[] = {
        {0.1, "0.1"},
        {-2.5, "-2.5"},
        {123456.789, "123456.789"},
        {0.30000000000000004, "0.30000000000000004"},
        // whole numbers in the 64-bit range get ".0"
        {2.0, "2.0"},
        {-0.0, "0.0"},
        {1e18, "1000000000000000000.0"},
        {-9223372036854775808.0, "-9223372036854775808.0"},
        // shortest fixed text
        {-1e-7, "-0.0000001"},
        {1e-253, "0." + std::string(252, '0') + "1"}, // 255 bytes: still fits
        // longer than 255 bytes: six decimals, trailing zeros cut to one
        {1e-254, "0.0"},
        {-1e-300, "-0.0"},
        {5e-324, "0.0"},
        {1e300,
         "1000000000000000052504760255204420248704468581108159154915854115511802457988908195786371"
         "3750804478640437044438328838781769425232353604305756447921847867069828483872009265758037"
         "3783023379478809005936895323497079994508111903896764088007465274278014249457925878882005"
         "6842838115669472196386865459400540160.0"},
        // deliberate: whole numbers beyond the 64-bit range get no ".0"
        {1e19, "10000000000000000000"},
        {-1e22, "-10000000000000000000000"},
        // not JSON, on purpose
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {inf, "inf"},
        {-inf, "-inf"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fText);
        EXPECT_EQ(Text(JsonReal(row.fValue)), row.fText);
    }
}

TEST(Writer, ParsedRealsVerbatimThenByDigitCount) {
    struct Row {
        std::string fText;
        std::string fVerbatim;  // written before the first use of the value
        std::string fConverted; // written after GetAsReal
    };
    const Row rows[] = {
        {"1.50", "1.50", "1.5"},
        {"3.0", "3.0", "3.0"},
        {"-0.0", "-0.0", "-0.0"},
        {"2.5e-3", "2.5e-3", "0.0025"},
        {"1E5", "1E5", "1e+05"},
        {"-9223372036854775808", "-9223372036854775808", "-9223372036854775808.0"},
        {"18446744073709551616", "18446744073709551616", "1.844674407370955162e+19"},
        // converted while reading: written by digit count at once
        {"1.5e10", "1.5e+10", "1.5e+10"},
        {"1e-400", "0.0", "0.0"},
        {"5e-324", "5e-324", "5e-324"},
        {"1.7976931348623157e308", "1.7976931348623157e+308", "1.7976931348623157e+308"},
        {"0.123456789012345678", "0.1234567890123456774", "0.1234567890123456774"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fText);
        ValuePtr array = Parse("[" + row.fText + "]");
        ASSERT_TRUE(array);
        EXPECT_EQ(Text(array), "[" + row.fVerbatim + "]");
        static_cast<const JsonArray&>(*array).AtIndexAsReal(0);
        EXPECT_EQ(Text(array), "[" + row.fConverted + "]");
    }
}

TEST(Writer, DeliberateNonRoundTrips) {
    // nan and leading-zero integers do not read back; 1e19 reads back as an integer
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(JsonValue::ReadFromString(Text(JsonReal(nan)), nullptr, nullptr));
    EXPECT_FALSE(JsonValue::ReadFromString(Text(JsonInteger(9999999999999999LL)), nullptr, nullptr));
    ValuePtr big = Parse(Text(JsonReal(1e19)));
    ASSERT_TRUE(big);
    EXPECT_EQ(big->GetType(), JsonValue::eJsonInteger);
}

// The standard profile (for tools; the module never uses it) changes exactly the deliberate
// departures from the JSON standard, and nothing else.
TEST(Writer, StandardProfileKeepsWhatDocumentsMean) {
    struct Row {
        const char* fName;
        std::string fText;
        std::string fDesigned; // what the module reads and writes back, or "error: ..."
        std::string fStandard;
    };
    const Row rows[] = {
        {"surrogate pair with bit 6 set", R"("\uD840\uDC00")", "\"\xF0\x90\x80\x80\"",
         "\"\xF0\xA0\x80\x80\""},
        {"surrogate pair with bit 6 clear", R"("\uD83D\uDE00")", "\"\xF0\x9F\x98\x80\"",
         "\"\xF0\x9F\x98\x80\""},
        {"integer just below a power of ten", "9999999999999999", "09999999999999999",
         "9999999999999999"},
        {"largest unsigned integer", "18446744073709551615", "18446744073709551615",
         "18446744073709551615"},
        {"real beyond the double range", "1e400", "error: real number out of double range", "1e400"},
        {"real with a long fraction", "0.1234567890123456789", "0.12345678901234567737",
         "0.1234567890123456789"},
        {"real with a two-digit exponent", "1.5e10", "1.5e+10", "1.5e10"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        for (const bool standard : {false, true}) {
            ParserContext ctx;
            ctx.fStandard = standard;
            const ValuePtr value = JsonValue::ReadFromString(row.fText, &ctx, nullptr);
            std::string out = "error: " + ctx.fError;
            if (value) {
                out.clear();
                TextWriterOptions options;
                options.fStandard = standard;
                TextWriter::WriteCompact(*value, out, options);
            }
            EXPECT_EQ(out, standard ? row.fStandard : row.fDesigned);
        }
    }
}

TEST(Writer, CompactAndPrettyLayout) {
    const ValuePtr example = Parse("{\"a\":1,\"b\":[true,null]}");
    const ValuePtr empties = Parse("{\"a\":{},\"b\":[]}");
    const ValuePtr topArray = Parse("[1,[2],{\"k\\\"\":\"v\"}]");
    const ValuePtr emptyObject = Parse("{}"), emptyArray = Parse("[]"), tab = Parse("\"a\\tb\"");
    std::string out = "<";
    TextWriter::WriteCompact(*topArray, out);
    EXPECT_EQ(out, "<[1,[2],{\"k\\\"\":\"v\"}]");

    struct Row {
        const char* fName;
        const JsonValue& fValue;
        std::string fIndent, fNewLine;
        int fLevel;
        std::string fText;
    };
    const Row rows[] = {
        {"example", *example, "  ", "\n", 0, "{\n  \"a\": 1,\n  \"b\": [\n    true,\n    null\n  ]\n}"},
        {"level 1", *example, "  ", "\n", 1, "{\n    \"a\": 1,\n    \"b\": [\n      true,\n      null\n    ]\n  }"},
        {"level -1", *example, "  ", "\n", -1, "{\n\"a\": 1,\n\"b\": [\n  true,\n  null\n]\n}"},
        {"level -2", *example, "  ", "\n", -2, "{\n\"a\": 1,\n\"b\": [\ntrue,\nnull\n]\n}"},
        {"tab and CR LF", *example, "\t", "\r\n", 0, "{\r\n\t\"a\": 1,\r\n\t\"b\": [\r\n\t\ttrue,\r\n\t\tnull\r\n\t]\r\n}"},
        {"empty members", *empties, "  ", "\n", 0, "{\n  \"a\": {},\n  \"b\": []\n}"},
        {"array at the top", *topArray, "  ", "\n", 0, "[\n  1,\n  [\n    2\n  ],\n  {\n    \"k\\\"\": \"v\"\n  }\n]"},
        {"empty object", *emptyObject, "  ", "\n", 3, "{}"},
        {"empty array", *emptyArray, "  ", "\n", -1, "[]"},
        {"string", *tab, "  ", "\n", 2, "\"a\\tb\""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        out = "<";
        row.fValue.AppendToStringPretty(out, row.fIndent, row.fNewLine, row.fLevel);
        EXPECT_EQ(out, "<" + row.fText);
        out = "<";
        TextWriter::WritePretty(row.fValue, out, row.fIndent, row.fNewLine, row.fLevel);
        EXPECT_EQ(out, "<" + row.fText);
    }
    for (const auto& [level, text] : {std::pair{-1, "<\r\n"}, {0, "<\r\n"}, {3, "<\r\n->->->"}}) {
        out = "<";
        PrettyPrintStartNewLine(out, "->", "\r\n", level);
        EXPECT_EQ(out, text) << level;
    }
}

TEST(Writer, RoundTripFilesWriteBackByteForByte) {
    SKIP_WITHOUT_SHARED_DATA();
    const std::filesystem::path folder = SharedPath("test-data/roundtrip");
    ASSERT_TRUE(std::filesystem::is_directory(folder)) << folder;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".json") continue;
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        ++files;
        const std::string text = ReadFile(entry.path());
        ValuePtr value = Parse(text);
        // a real with a multi-digit exponent is converted while reading and then written by its
        // digit count, with the exponent's sign
        EXPECT_EQ(Text(value), name == "roundtrip27.json" ? "[1.7976931348623157e+308]" : text);
    }
    EXPECT_EQ(files, 27);
}

TEST(Writer, BenchCorporaSurviveCompactAndPrettyRoundTrips) {
    SKIP_WITHOUT_SHARED_DATA();
    for (const char* name : {"canada.json", "citm_catalog.json", "twitter.json"}) {
        SCOPED_TRACE(name);
        const std::string text = ReadFile(SharedPath("bench-data") / name);
        ValuePtr original = Parse(text);
        ASSERT_TRUE(original && original->GetType() == JsonValue::eJsonObject);
        const std::string compact = Text(original);
        ValuePtr fromCompact = Parse(compact);
        ASSERT_TRUE(fromCompact);
        EXPECT_EQ(Text(fromCompact), compact);

        std::string pretty, prettyAgain;
        original->AppendToStringPretty(pretty, "  ", "\n", 0);
        ValuePtr fromPretty = Parse(pretty);
        ASSERT_TRUE(fromPretty);
        EXPECT_EQ(Text(fromPretty), compact);
        fromPretty->AppendToStringPretty(prettyAgain, "  ", "\n", 0);
        EXPECT_EQ(prettyAgain, pretty);

        // deep equality ignores order, so an unordered parse compares equal as well
        const auto& object = static_cast<const JsonObject&>(*original);
        for (const ValuePtr& other : {fromCompact, fromPretty, Parse(text, false)})
            EXPECT_TRUE(object.IsEqual(static_cast<const JsonObject&>(*other)));
    }
}

} // namespace
