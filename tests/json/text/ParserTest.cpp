// The JSON text parser: every fixed message with its line, number and string decoding, the UTF-8
// modes, duplicate keys, the context, the typed and inner entry points, the JSON_checker corpus.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace json_test;

const std::string kEnd = "unexpected end of input", kNotValue = "not a JSON value",
                  kTrailing = "illegal trailing characters after value", kNaN = "not a number",
                  kDot = "minimum one digit after decimal dot required",
                  kExp = "minimum one digit after exponent required",
                  kRange = "real number out of double range", kQuote = "string quote sign expected",
                  kCtrl = "control character must be quoted", kEsc = "illegally quoted character",
                  kU16 = "incorrect utf16 char quoting", kObj = "illegal object",
                  kPairComma = "expected key value pair in front before comma",
                  kPairSep = "comma separator expected between key value pairs",
                  kObjEnd = "object list must not end with a comma", kColon = "colon expected",
                  kArr = "illegal array", kArrEnd = "array must not end with comma",
                  kValComma = "expected value in front before comma",
                  kValSep = "comma separator expected between values",
                  kV = " while parsing a value", kK = " while parsing a key";

std::string Utf8At(int pos, const std::string& prefix = "") {
    const std::string message = "illegal UTF8 character found at position " + std::to_string(pos);
    return prefix.empty() ? message : message + " in string which starts with \"" + prefix + "\"";
}

struct BadText { const char* fName; std::string fText; std::string fError; uint64_t fLine; };

const BadText sBadTexts[] = {
    // values
    {"empty", "", kEnd, 0},
    {"blanks only", " \t ", kEnd, 0},
    {"line breaks only", "\n\r\n", kEnd, 2},
    {"byte order mark only", "\xEF\xBB\xBF", kEnd, 0},
    {"unknown byte", "x", kNotValue, 0},
    {"single quotes", "['a']", kNotValue, 0},
    {"cut literal", "tru", kNotValue, 0},
    {"misspelt null", "nul1", kNotValue, 0},
    {"capital literal", "True", kNotValue, 0},
    {"MessagePack marker without the flag", "\x91\x01", kNotValue, 0},
    {"byte order mark after a blank", " \xEF\xBB\xBF[1]", kNotValue, 0},
    {"byte order mark inside", std::string("[\xEF\xBB\xBF") + "1]", kNotValue, 0},
    {"two byte order marks", "\xEF\xBB\xBF\xEF\xBB\xBF[1]", kNotValue, 0},
    // trailing characters
    {"leading zero", "01", kTrailing, 0},
    {"literal run on", "truex", kTrailing, 0},
    {"two numbers", "1 2", kTrailing, 0},
    {"two objects", "{}{}", kTrailing, 0},
    {"text on the next line", "[1]\nx", kTrailing, 1},
    // numbers
    {"minus alone", "-", kNaN, 0},
    {"minus letter", "-a", kNaN, 0},
    {"dot at end", "1.", kDot, 0},
    {"dot then exponent", "1.e5", kDot, 0},
    {"e at end", "1e", kExp, 0},
    {"sign at end", "1e+", kExp, 0},
    {"letter after sign", "1E-x", kExp, 0},
    {"1e400", "1e400", kRange, 0},
    {"-1e400", "-1e400", kRange, 0},
    {"-1e999 in an object", "{\"a\":\n-1e999}", kRange + kV, 1},
    // strings
    {"unterminated", "\"abc", kQuote, 0},
    {"backslash last", "\"abc\\", kQuote, 0},
    {"raw tab", "\"a\tb\"", kCtrl, 0},
    {"raw zero byte", std::string("\"a\0\"", 4), kCtrl, 0},
    {"escape x", "\"\\x\"", kEsc, 0},
    {"octal escape", "[\"\\017\"]", kEsc, 0},
    {"escaped line break", "[\"a\\\nb\"]", kEsc, 0},
    {"two hex digits", "\"\\u12\"", kU16, 0},
    {"four hex digits at end", "\"\\u0041", kU16, 0}, // a \u escape needs one more byte
    {"non-hex digit", "\"\\u00G0\"", kU16, 0},
    {"bad second unit", "\"\\uD800\\u00G0\"", "incorrect utf32 char quoting", 0},
    // too short for a second unit: the high surrogate stands alone, then the cut escape fails
    {"cut second unit", "\"\\uD800\\u12\"", kU16, 0},
    {"invalid UTF-8 first", "\"\xC3\"", Utf8At(0), 0},
    {"invalid UTF-8 later", "[\"ok\",\n\"ab\xFF\"]", Utf8At(2, "ab"), 1},
    {"prefix of 20 bytes", "\"" + std::string(25, 'a') + "\xFF\"", Utf8At(25, std::string(20, 'a')), 0},
    // the position and the prefix are those of the decoded text
    {"invalid UTF-8 after an escape", "\"\\n\\u0041\xC3\"", Utf8At(2, "\nA"), 0},
    // objects
    {"open brace", "{", kObj, 0},
    {"open brace and line break", "{ \n", kObj, 1},
    {"member then end", "{\"a\":1", kObj, 0},
    {"comma then end", "{\"a\":1,", kObj, 0},
    {"leading comma", "{,\"a\":1}", kPairComma, 0},
    {"double comma", "{\"a\":1,,\"b\":2}", kPairComma, 0},
    {"missing comma", "{\"a\":1 \"b\":2}", kPairSep, 0},
    {"closed by bracket", "{\"a\":1]", kPairSep, 0},
    {"trailing comma", "{\"a\":1,}", kObjEnd, 0},
    {"number key", "{1:2}", kQuote + kK, 0},
    {"unterminated key", "{\"a", kQuote + kK, 0},
    {"bad escape in key", "{\"a\\x\":1}", kEsc + kK, 0},
    {"invalid UTF-8 key", "{\"\xC3\":1}", Utf8At(0) + kK, 0},
    {"missing colon", "{\"a\" 1}", kColon, 0},
    {"colon at end", "{\"a\"", kColon, 0},
    {"missing value", "{\"a\":}", kNotValue + kV, 0},
    {"value at end", "{\"a\":", kEnd + kV, 0},
    {"bad number value", "{\"a\":-}", kNaN + kV, 0},
    {"bad string value", "{\"a\":\"\\x\"}", kEsc + kV, 0},
    {"invalid UTF-8 value", "{\"a\":\"x\xC3\"}", Utf8At(1, "x") + kV, 0},
    // one suffix per enclosing object; arrays add none
    {"object in object", "{\"a\":{\"b\":}}", kNotValue + kV + kV, 0},
    {"key in object in object", "{\"a\":{1:2}}", kQuote + kK + kV, 0},
    {"object in arrays", "[[{\"a\":x}]]", kNotValue + kV, 0},
    {"object, array, object", "{\"a\":[{\"b\":[-]}]}", kNaN + kV + kV, 0},
    {"trailing comma in inner object", "{\"a\":{\"b\":1,}}", kObjEnd + kV, 0},
    {"inner object cut", "{\"a\":{", kObj + kV, 0},
    {"array in object", "{\"a\":[1,]}", kArrEnd + kV, 0},
    {"three levels", "{\"a\":{\"b\":{\"c\":tru}}}", kNotValue + kV + kV + kV, 0},
    // arrays
    {"open bracket", "[", kArr, 0},
    {"element then end", "[1", kArr, 0},
    {"array comma then end", "[1,", kArr, 0},
    {"array trailing comma", "[1,]", kArrEnd, 0},
    {"array leading comma", "[,1]", kValComma, 0},
    {"array double comma", "[1,,2]", kValComma, 0},
    {"array missing comma", "[1 2]", kValSep, 0},
    {"literal run on in array", "[truex]", kValSep, 0},
    {"leading zero in array", "[01]", kValSep, 0},
    {"colon in array", "[\"a\":1]", kValSep, 0},
    {"array closed by brace", "[\"a\"}", kValSep, 0},
    // line counting: the first line is 0; CR LF and LF CR count once, CR CR and LF LF twice
    {"LF LF", "\n\nx", kNotValue, 2},
    {"CR LF twice", "\r\n\r\nx", kNotValue, 2},
    {"LF CR twice", "\n\r\n\rx", kNotValue, 2},
    {"CR CR", "\r\rx", kNotValue, 2},
    {"LF LF CR", "\n\n\rx", kNotValue, 2},
    {"CR LF, LF CR, CR LF", "\r\n\n\r\r\nx", kNotValue, 3},
    {"tabs and blanks", "\t \t x", kNotValue, 0},
    {"error on the third line", "[1,\n2,\nx]", kNotValue, 2},
    {"breaks between tokens", "[\"a\",\n\"b\"\n\n1]", kValSep, 3},
    {"nested on the fifth line", "{\n\"a\":\n[\n1\n,,]}", kValComma + kV, 4},
    {"byte order mark then line", "\xEF\xBB\xBF\n x", kNotValue, 1},
};

TEST(Parser, RejectsWithFixedMessageAndLine) {
    for (const BadText& c : sBadTexts) {
        SCOPED_TRACE(c.fName);
        ParserContext ctx;
        EXPECT_FALSE(JsonValue::ReadFromString(c.fText, &ctx, nullptr));
        EXPECT_EQ(ctx.fError, c.fError);
        EXPECT_EQ(ctx.fLine, c.fLine);
        EXPECT_FALSE(ctx.fComplete);
        EXPECT_FALSE(JsonValue::ReadFromString(c.fText, nullptr, nullptr)); // no context needed
    }
}

TEST(Parser, ScalarsWhiteSpaceAndByteOrderMark) {
    struct Row { std::string fText; JsonValue::EJsonValueType fType; std::string fCompact; };
    const Row rows[] = {
        {"true", JsonValue::eJsonTrue, "true"},
        {" false ", JsonValue::eJsonFalse, "false"},
        {"\r\n\tnull\n", JsonValue::eJsonNull, "null"},
        {"\"s\"", JsonValue::eJsonString, "\"s\""},
        {"[ 1 , [ ] , { } ]", JsonValue::eJsonArray, "[1,[],{}]"},
        {"{ \"a\" : [ true ] }", JsonValue::eJsonObject, "{\"a\":[true]}"},
        {"\xEF\xBB\xBF[1]", JsonValue::eJsonArray, "[1]"}, // skipped only at the start
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fText);
        ParserContext ctx;
        ValuePtr value = JsonValue::ReadFromString(row.fText, &ctx, nullptr);
        ASSERT_TRUE(value);
        EXPECT_EQ(value->GetType(), row.fType);
        EXPECT_EQ(Text(value), row.fCompact);
        EXPECT_TRUE(ctx.fComplete);
        EXPECT_EQ(ctx.fPos, row.fText.size());
        EXPECT_EQ(ctx.fError, "");
    }
}

TEST(Parser, NumberRules) {
    struct Integer { const char* fText; bool fUnsigned; unsigned long long fBits; };
    const Integer integers[] = {
        {"0", false, 0},
        {"-0", false, 0},
        {"-9223372036854775807", false, 0x8000000000000001ULL},
        {"9223372036854775807", false, 9223372036854775807ULL},
        {"9223372036854775808", true, 9223372036854775808ULL},
        {"18446744073709551615", true, 18446744073709551615ULL},
    };
    for (const Integer& c : integers) {
        SCOPED_TRACE(c.fText);
        ValuePtr value = JsonValue::ReadFromString(c.fText, nullptr, nullptr);
        ASSERT_TRUE(value && value->GetType() == JsonValue::eJsonInteger);
        EXPECT_EQ(static_cast<const JsonInteger&>(*value).IsUnsigned(), c.fUnsigned);
        EXPECT_EQ(static_cast<const JsonInteger&>(*value).Bits(), c.fBits);
    }
    struct Real {
        const char* fText;
        bool fPending; // keeps its text until first use
        double fValue;
        uint32_t fDigits;
    };
    const Real reals[] = {
        // deliberately the smallest 64-bit integer is read as a real
        {"-9223372036854775808", true, -9223372036854775808.0, 19},
        // too large integers are reals that keep their text; the digit count stops at overflow
        {"18446744073709551616", true, 18446744073709551616.0, 19},
        {"100000000000000000000", true, 1e20, 20},
        // one exponent digit and fewer than 18 fraction digits keep the text
        {"1e4", true, 1e4, 1},
        {"1E+5", true, 1e5, 1},
        {"1.50", true, 1.5, 3},
        {"-0.0", true, -0.0, 2},
        {"0.12345678901234567", true, 0.12345678901234567, 18},
        // longer exponents and 18 or more fraction digits are converted at once
        {"1e10", false, 1e10, 1},
        {"1e-400", false, 0.0, 1},
        {"0.123456789012345678", false, 0.123456789012345678, 19},
    };
    for (const Real& c : reals) {
        SCOPED_TRACE(c.fText);
        ValuePtr value = JsonValue::ReadFromString(c.fText, nullptr, nullptr);
        ASSERT_TRUE(value && value->GetType() == JsonValue::eJsonReal);
        const auto& real = static_cast<const JsonReal&>(*value);
        EXPECT_EQ(real.HasPendingText(), c.fPending);
        if (c.fPending) {
            EXPECT_EQ(real.PendingText(), c.fText);
        }
        EXPECT_EQ(real.GetDigitCount(), c.fDigits);
        EXPECT_EQ(real.Get(), c.fValue);
        EXPECT_EQ(std::signbit(real.Get()), std::signbit(c.fValue));
        EXPECT_FALSE(real.HasPendingText());
    }
    // deliberate: a pending text that overflows converts to +infinity, negative ones too
    const std::string digits = "1" + std::string(400, '0');
    for (const std::string& text : {digits, "-" + digits}) {
        ParserContext ctx;
        ValuePtr value = JsonValue::ReadFromString(text, &ctx, nullptr);
        ASSERT_TRUE(value);
        EXPECT_EQ(ctx.fError, "");
        EXPECT_EQ(value->GetAsReal(), JsonReal::sInfinity);
    }
}

TEST(Parser, StringDecoding) {
    struct Row { const char* fName; std::string fJson; std::string fBytes; };
    const Row rows[] = {
        {"empty", "\"\"", ""},
        {"long plain", "\"" + std::string(1000, 'z') + "\"", std::string(1000, 'z')},
        {"raw UTF-8 and DEL", "\"caf\xC3\xA9\x7F\"", "caf\xC3\xA9\x7F"},
        {"simple escapes", "\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"", "\"\\/\b\f\n\r\t"},
        {"escape after text", "\"ab\\ncd\"", "ab\ncd"},
        {"u ASCII", "\"\\u0041\"", "A"},
        {"u two bytes, lower case", "\"\\u00e9\"", "\xC3\xA9"},
        {"u three bytes, upper case", "\"\\u20AC\"", "\xE2\x82\xAC"},
        {"u zero", "\"a\\u0000b\"", std::string("a\0b", 3)},
        {"surrogate pair", "\"\\uD83D\\uDE00\"", "\xF0\x9F\x98\x80"},
        {"first pair", "\"\\uD800\\uDC00\"", "\xF0\x90\x80\x80"},
        // deliberate: a high surrogate with bit 6 set decodes 0x10000 too low
        {"pair D840 DC00", "\"\\uD840\\uDC00\"", "\xF0\x90\x80\x80"},
        {"pair DBFF DFFF", "\"\\uDBFF\\uDFFF\"", "\xF3\xBF\xBF\xBF"},
        // lone surrogates are written as three bytes
        {"lone high", "\"\\uD800\"", "\xED\xA0\x80"},
        {"lone low", "\"\\uDC00x\"", "\xED\xB0\x80x"},
        {"high then non-surrogate", "\"\\uD800\\u0041\"", "\xED\xA0\x80" "A"},
        {"high then high", "\"\\uD800\\uDBFF\"", "\xED\xA0\x80\xED\xAF\xBF"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        ParserContext ctx;
        ValuePtr value = JsonValue::ReadFromString(row.fJson, &ctx, nullptr);
        ASSERT_TRUE(value && value->GetType() == JsonValue::eJsonString) << ctx.fError;
        EXPECT_EQ(static_cast<const JsonString&>(*value).Get(), row.fBytes);
        // keys decode the same way
        JsonAutoRefPtr<JsonObject> object = JsonObject::ReadFromString("{" + row.fJson + ":1}", &ctx);
        ASSERT_TRUE(object && object->Size() == 1) << ctx.fError;
        EXPECT_EQ(object->Members().begin()->Key(), row.fBytes);
    }
}

TEST(Parser, Utf8CheckModes) {
    const std::string invalid = "[\"a\xFF\"]";
    const std::string message = Utf8At(1, "a");
    struct Row {
        const char* fName;
        std::string fText;
        bool fCheck, fTrust;
        std::string fCompact; // "" when the parse fails
        std::string fError;
        bool fInputIsUTF8;
    };
    const Row rows[] = {
        {"per string", invalid, false, false, "", message, false},
        {"whole input, invalid", invalid, true, false, "", message, false},
        {"whole input, valid", "[\"a\xC3\xA9\"]", true, false, "[\"a\xC3\xA9\"]", "", true},
        {"trusted keeps the bytes", invalid, false, true, invalid, "", false},
        {"trusted wins over the whole-input check", invalid, true, true, invalid, "", false},
        {"trusted key", "{\"\xC3\":1}", false, true, "{\"\xC3\":1}", "", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        ParserContext ctx;
        ctx.fCheckUTF8 = row.fCheck;
        ctx.fTrustUTF8 = row.fTrust;
        EXPECT_EQ(Text(JsonValue::ReadFromString(row.fText, &ctx, nullptr)), row.fCompact);
        EXPECT_EQ(ctx.fError, row.fError);
        EXPECT_EQ(ctx.fInputIsUTF8, row.fInputIsUTF8);
    }
    ParserContext stale; // a stale whole-input result is cleared before the next parse
    stale.fInputIsUTF8 = true;
    EXPECT_FALSE(JsonValue::ReadFromString(invalid, &stale, nullptr));
    EXPECT_EQ(stale.fError, message);
}

TEST(Parser, DuplicateKeyLastWinsInFirstPlace) {
    for (const bool strict : {false, true}) { // a replaceable key is not refused
        SCOPED_TRACE(strict);
        ParserContext ctx;
        ctx.fKeepOrder = true;
        ctx.fStrictKeys = strict;
        JsonAutoRefPtr<JsonObject> object =
            JsonObject::ReadFromString("{\"a\":[1,2],\"b\":2,\"a\":3}", &ctx);
        ASSERT_TRUE(object) << ctx.fError;
        EXPECT_EQ(object->GetNextSequence(), 2u);
        EXPECT_EQ(Text(object), "{\"a\":3,\"b\":2}");
    }
}

TEST(Parser, KeepOrderReachesEveryObject) {
    const std::string text = "{\"b\":1,\"a\":{\"d\":1,\"c\":[{\"z\":1,\"y\":2}]}}";
    for (const bool keepOrder : {false, true}) {
        SCOPED_TRACE(keepOrder);
        ParserContext ctx;
        ctx.fKeepOrder = keepOrder;
        JsonAutoRefPtr<JsonObject> object = JsonObject::ReadFromString(text, &ctx);
        ASSERT_TRUE(object);
        JsonAutoRefPtr<JsonObject> inner = object->KeyValAsObject("a");
        EXPECT_EQ(inner->GetKeepOrder(), keepOrder);
        EXPECT_EQ(inner->KeyValAsArray("c")->AtIndexAsObject(0)->GetKeepOrder(), keepOrder);
        if (keepOrder) {
            EXPECT_EQ(Text(object), text);
        }
    }
}

TEST(Parser, ContextIsReusableAndTracksTheLineStart) {
    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true;
    EXPECT_FALSE(JsonValue::ReadFromString("[\n  \r\n   x]", &ctx, nullptr));
    EXPECT_EQ(ctx.fError, kNotValue);
    EXPECT_EQ(ctx.fLine, 2u);
    EXPECT_EQ(ctx.fLineStart, 6u);

    const std::string text = "{\"b\":1,\"a\":2} \n";
    ValuePtr value = JsonValue::ReadFromString(text, &ctx, nullptr);
    ASSERT_TRUE(value);
    EXPECT_EQ(Text(value), "{\"b\":1,\"a\":2}"); // the option flags were kept
    EXPECT_EQ(ctx.fError, "");
    EXPECT_EQ(ctx.fLine, 1u);
    EXPECT_EQ(ctx.fLineStart, text.size());
    EXPECT_EQ(ctx.fPos, text.size());
    EXPECT_TRUE(ctx.fComplete);
    EXPECT_TRUE(ctx.fInputIsUTF8);

    EXPECT_FALSE(JsonValue::ReadFromString("[\"\xFF\"]", &ctx, nullptr));
    EXPECT_FALSE(ctx.fComplete);
    EXPECT_FALSE(ctx.fInputIsUTF8);
    EXPECT_EQ(ctx.fLine, 0u);
    EXPECT_EQ(ctx.fError, Utf8At(0));
    EXPECT_TRUE(ctx.fKeepOrder && ctx.fCheckUTF8);
}

TEST(Parser, TypedReadFromStringFiltersByType) {
    struct Row {
        std::string fText;
        bool fObject, fArray; // which typed reader gives a value
        std::string fError;
    };
    const Row rows[] = {
        {"{\"a\":1}", true, false, ""},
        {"[1]", false, true, ""},
        {"1", false, false, ""}, // a document of another type is no error
        {"{", false, false, kObj},
        {"[", false, false, kArr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fText);
        ParserContext ctx;
        EXPECT_EQ(static_cast<bool>(JsonObject::ReadFromString(row.fText, &ctx)), row.fObject);
        EXPECT_EQ(ctx.fError, row.fError);
        EXPECT_EQ(static_cast<bool>(JsonArray::ReadFromString(row.fText, &ctx, nullptr)), row.fArray);
        EXPECT_EQ(ctx.fError, row.fError);
    }
}

TEST(Parser, InnerEntryPointsStartAtThePosition) {
    enum Reader { kValue, kNumber, kObject, kArray };
    const size_t any = std::string::npos;
    struct Row {
        const char* fName;
        Reader fReader;
        std::string fText;
        size_t fStart;
        std::string fCompact; // "" for no value
        std::string fError;
        size_t fPos; // after the parse; any: not checked
    };
    const Row rows[] = {
        {"no white space skipped", kValue, " 1", 0, "", kNotValue, any},
        {"at the end", kValue, "[1]", 3, "", kEnd, any},
        {"white space after consumed", kValue, "[1] x", 0, "[1]", "", 4},
        {"number inside", kNumber, "[12,", 1, "12", "", 3},
        {"number at the end", kNumber, "", 0, "", kEnd, any},
        {"object reader on an array", kObject, "[]", 0, "", kObj, any},
        {"array reader on an object", kArray, "{}", 0, "", kArr, any},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        ParserContext ctx;
        ctx.fPos = row.fStart;
        ValuePtr value(row.fReader == kValue    ? JsonValue::Parse(row.fText, ctx, nullptr)
                       : row.fReader == kNumber ? JsonValue::ParseNumber(row.fText, ctx)
                       : row.fReader == kObject ? static_cast<JsonValue*>(JsonObject::Parse(row.fText, ctx))
                                                : JsonArray::Parse(row.fText, ctx, nullptr));
        EXPECT_EQ(Text(value), row.fCompact);
        EXPECT_EQ(ctx.fError, row.fError);
        if (row.fPos != any) {
            EXPECT_EQ(ctx.fPos, row.fPos);
        }
    }
    ParserContext ctx;
    std::string out = "old";
    EXPECT_TRUE(JsonValue::ParseString("\"a\\u0041\" tail", out, ctx));
    EXPECT_EQ(out, "aA");
    EXPECT_EQ(ctx.fPos, 9u);
    EXPECT_FALSE(JsonValue::ParseString("abc", out, ctx));
    EXPECT_EQ(out, ""); // cleared on failure
    EXPECT_EQ(ctx.fError, kQuote);
}

TEST(Parser, JsonCheckerCorpus) {
    SKIP_WITHOUT_SHARED_DATA();
    const std::filesystem::path folder = SharedPath("test-data/jsonchecker");
    ASSERT_TRUE(std::filesystem::is_directory(folder)) << folder;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() != ".json") continue;
        SCOPED_TRACE(name);
        ++files;
        // a top-level scalar is a document and depth is unlimited: the two excluded files parse
        const bool parses = name.rfind("pass", 0) == 0 || name.find("_EXCLUDE") != std::string::npos;
        ParserContext ctx;
        EXPECT_EQ(static_cast<bool>(JsonValue::ReadFromString(ReadFile(entry.path()), &ctx, nullptr)), parses);
        EXPECT_EQ(ctx.fError.empty(), parses) << ctx.fError;
    }
    EXPECT_EQ(files, 36);
}

} // namespace
