// The reading operations of the module's IJSON, driven through the interface pointer: getters
// with their results, messages and statuses, root conversions and type tests, the path walk,
// lookups, comparison and the four caller-buffer conventions (run under AddressSanitizer to
// check that no operation writes past a buffer).
#include "IjsonFakes.h"

#include "json/JsonCompiledObject.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>

using namespace Virelo;
using namespace IjsonFakes;

namespace {

using Call = std::function<std::string(const IJSON&)>;

template <class T> std::string ToText(T value) {
    std::ostringstream text;
    text << +value;
    return text.str();
}

/// A member getter called with an output that starts as 77, giving "result/output".
template <class T>
Call Getter(unsigned char (IJSON::*getter)(const char*, T*) const, const char* key) {
    return [getter, key](const IJSON& json) {
        T out = T(77);
        const unsigned char result = (json.*getter)(key, &out);
        return ToText(result) + "/" + ToText(out);
    };
}

Call GetString(const char* key) {
    return [key](const IJSON& json) {
        char buffer[64] = {};
        unsigned char found = 9;
        const unsigned long long result = json.Interface_GetString(key, buffer, 63, &found);
        return ToText(result) + "/" + buffer + "/" + ToText(found);
    };
}

Call Get(const char* key) {
    return [key](const IJSON& json) {
        AutoRefPtr<IJSON> member(json.Interface_Get(key));
        return member ? Text(*member) : "null";
    };
}

struct GetterRow {
    const char* fName;
    const char* fDocument;
    Call fCall;
    std::string fResult;
    std::string fOutcome; // "status:message"
};

const char* const kMembers = R"({"i":5,"big":3000000000,"neg":-1,"s":"x","n":"42","r":2.5,)"
                             R"("u":18446744073709551615,"t":true,"nul":null})";

} // namespace

TEST(IJSONRead, GettersReportTheirOwnMessagesAndStatuses) {
    const GetterRow rows[] = {
        // GetInt: the "32 bit" text is for no integer at all, "no integer" for out of range
        {"int", kMembers, Getter(&IJSON::Interface_GetInt, "i"), "1/5", "0:"},
        {"int out of range", kMembers, Getter(&IJSON::Interface_GetInt, "big"), "0/0",
         "1:Member 'big' is no integer"},
        {"int of text", kMembers, Getter(&IJSON::Interface_GetInt, "s"), "0/77",
         "1:Member 's' is no 32 bit integer"},
        {"int missing", kMembers, Getter(&IJSON::Interface_GetInt, "missing"), "0/77",
         "1:Could not find member 'missing'"},
        {"int on array", "[1]", Getter(&IJSON::Interface_GetInt, "i"), "0/77",
         "2:Error while searching member 'i'. Type is Array but should be Object."},
        // GetUInt: one text for both failures
        {"uint big", kMembers, Getter(&IJSON::Interface_GetUInt, "big"), "1/3000000000", "0:"},
        {"uint negative", kMembers, Getter(&IJSON::Interface_GetUInt, "neg"), "0/0",
         "1:Member 'neg' is no 32 bit unsigned integer"},
        // GetInt64 uses the signed conversion; GetUInt64 takes an unsigned integer's own value
        {"int64 of real", kMembers, Getter(&IJSON::Interface_GetInt64, "r"), "1/2", "0:"},
        {"int64 of unsigned", kMembers, Getter(&IJSON::Interface_GetInt64, "u"), "0/77",
         "1:Member 'u' is no integer"},
        {"uint64 of unsigned", kMembers, Getter(&IJSON::Interface_GetUInt64, "u"),
         "1/18446744073709551615", "0:"},
        {"uint64 negative", kMembers, Getter(&IJSON::Interface_GetUInt64, "neg"), "0/0",
         "1:Member 'neg' is no unsigned integer"},
        {"uint64 of text", kMembers, Getter(&IJSON::Interface_GetUInt64, "s"), "0/77",
         "1:Member 's' is no unsigned integer"},
        // GetDouble reports with status Error, even for a missing member
        {"double", kMembers, Getter(&IJSON::Interface_GetDouble, "r"), "1/2.5", "0:"},
        {"double of text", kMembers, Getter(&IJSON::Interface_GetDouble, "s"), "0/77",
         "2:Member 's' is no double"},
        {"double missing", kMembers, Getter(&IJSON::Interface_GetDouble, "missing"), "0/77",
         "2:Could not find member 'missing'"},
        // GetBoolean: any non-empty text is true
        {"boolean of text", kMembers, Getter(&IJSON::Interface_GetBoolean, "s"), "1/1", "0:"},
        {"boolean of null", kMembers, Getter(&IJSON::Interface_GetBoolean, "nul"), "0/77",
         "1:Member 'nul' is no boolean"},
        // GetString: any member has a string form; the missing text ends with a full stop
        {"string", kMembers, GetString("s"), "2/x/1", "0:"},
        {"string missing", kMembers, GetString("missing"), "0//0",
         "1:Could not find member 'missing'."},
        {"string on null", "null", GetString("s"), "0//0",
         "2:Error while searching member 's'. Type is Null but should be Object."},
        // Get: a missing member is no failure
        {"get", kMembers, Get("t"), "true", "0:"},
        {"get missing", kMembers, Get("missing"), "null", "0:"},
        {"get on integer", "5", Get("k"), "null",
         "2:Error while searching member 'k'. Type is Integer but should be Object."},
    };
    for (const GetterRow& row : rows) {
        SCOPED_TRACE(row.fName);
        AutoRefPtr<IJSON> json = Parse(row.fDocument);
        json->Interface_SetInt(nullptr, 0); // leaves an error behind: the getter must clear it
        EXPECT_EQ(row.fCall(*json), row.fResult);
        EXPECT_EQ(Outcome(*json), row.fOutcome);
    }
}

TEST(IJSONRead, RootConversionsAndTypeTests) {
    struct Row {
        const char* fDocument;
        const char* fTests; // IsNull Bool Number Double Int UInt Int64 UInt64 String Array Object
        std::string fAsInt, fAsUInt64, fAsString, fSizeEmpty;
    };
    const Row rows[] = {
        {"null", "10000000000", "0/0", "0/0", "null", "0/1"},
        {"true", "01000000000", "1/1", "1/1", "true", "0/0"},
        {"-1", "00101010000", "1/-1", "0/0", "-1", "0/0"},
        {"3000000000", "00100111000", "0/0", "1/3000000000", "3000000000", "0/0"},
        // AsUInt64 goes through the signed conversion: an unsigned integer above 2^63 - 1 fails
        {"18446744073709551615", "00100011000", "0/0", "0/0", "18446744073709551615", "0/0"},
        {"2.5", "00110000000", "1/2", "1/2", "2.5", "0/0"},
        {R"("")", "00000000100", "0/0", "0/0", "", "0/1"},
        {"[1,2]", "00000000010", "0/0", "0/0", "[1,2]", "2/0"},
        {"{}", "00000000001", "0/0", "0/0", "{}", "0/1"},
    };
    using Test = unsigned char (IJSON::*)() const;
    const Test tests[] = {
        &IJSON::Interface_IsNull,   &IJSON::Interface_IsBool,   &IJSON::Interface_IsNumber,
        &IJSON::Interface_IsDouble, &IJSON::Interface_IsInt,    &IJSON::Interface_IsUInt,
        &IJSON::Interface_IsInt64,  &IJSON::Interface_IsUInt64, &IJSON::Interface_IsString,
        &IJSON::Interface_IsArray,  &IJSON::Interface_IsObject};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fDocument);
        AutoRefPtr<IJSON> json = Parse(row.fDocument);
        std::string results;
        for (Test test : tests)
            results += ToText((json.Get()->*test)());
        EXPECT_EQ(results, row.fTests);
        int asInt = 77;
        unsigned long long asUInt64 = 77;
        const std::string intResult = ToText(json->Interface_AsInt(&asInt));
        const std::string uint64Result = ToText(json->Interface_AsUInt64(&asUInt64));
        EXPECT_EQ(intResult + "/" + ToText(asInt), row.fAsInt);
        EXPECT_EQ(uint64Result + "/" + ToText(asUInt64), row.fAsUInt64);
        char text[64];
        unsigned char copied = 0;
        EXPECT_EQ(json->Interface_AsString(text, sizeof text, &copied), row.fAsString.size() + 1);
        EXPECT_EQ(text, row.fAsString);
        const std::string size = ToText(json->Interface_Size());
        EXPECT_EQ(size + "/" + ToText(json->Interface_Empty()), row.fSizeEmpty);
        EXPECT_EQ(Outcome(*json), "0:");
    }
}

TEST(IJSONRead, FindNodePathWalksObjectsAndArraysOnly) {
    struct Row {
        const char* fPath;
        const char* fFound; // "null" when nothing is found
        const char* fOutcome;
    };
    const Row rows[] = {
        {"", R"({"a":[10,20],"c":{"d":true}})", "0:"},
        {"/", R"({"a":[10,20],"c":{"d":true}})", "0:"},
        {"/a/1", "20", "0:"},
        {"a//1", "20", "0:"}, // an empty step stays on the array
        {"c/d/", "true", "0:"},
        {"a/1abc", "20", "0:"},       // deliberate: only the leading digits count
        {"a/4294967296", "10", "0:"}, // deliberate: the index is taken as 32 bits
        {"a/2", "null", "1:Couldn't find JSON node, array index out of bounds"},
        {"a/99999999999999999999", "null", "1:Couldn't find JSON node, array index out of bounds"},
        {"a/x", "null", "1:Couldn't find JSON node, array index is not a number"},
        {"a/-1", "null", "1:Couldn't find JSON node, array index is not a number"},
        {"b", "null", "2:Error while fetching subnode"},
        {"a/1/c", "null", "1:Couldn't find JSON node, JSON subnode not found"},
    };
    AutoRefPtr<IJSON> json = Parse(R"({"a":[10,20],"c":{"d":true}})");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fPath);
        AutoRefPtr<IJSON> found(json->Interface_FindNodePath(row.fPath));
        EXPECT_EQ(found ? Text(*found) : "null", row.fFound);
        EXPECT_EQ(Outcome(*json), row.fOutcome);
    }
    // A node found is the node inside the document: a change through it shows in the parent.
    AutoRefPtr<IJSON> inner(json->Interface_FindNodePath("c"));
    ASSERT_TRUE(inner);
    inner->Interface_SetInt("e", 1);
    EXPECT_EQ(Text(*json), R"({"a":[10,20],"c":{"d":true,"e":1}})");
}

TEST(IJSONRead, CompiledObjectsAreFoundButNotReportedAsObjects) {
    JsonCompiledObjectContext keys;
    keys.AddKey("a", JsonCompiledObjectContext::kNumber, nullptr);
    keys.AddKey("b", JsonCompiledObjectContext::kString, nullptr);
    AutoRefPtr<IJSON> json(JSON::JSONWrapper::FromVJson(
                               JsonCompiledObject::ReadFromString(R"({"a":1})", &keys, nullptr))
                               .Detach());
    ASSERT_TRUE(json);
    EXPECT_EQ(json->Interface_IsObject(), 0);
    int a = 0;
    EXPECT_EQ(json->Interface_GetInt("a", &a), 1);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(json->Interface_Has("a"), 1);
    EXPECT_EQ(json->Interface_Has("b"), 0); // a known key whose slot is empty
    EXPECT_EQ(json->Interface_Size(), 1u);
    AutoRefPtr<IJSON> none(json->Interface_FindNodePath("a"));
    EXPECT_FALSE(none);
    EXPECT_EQ(Outcome(*json), "1:Couldn't find JSON node, JSON subnode not found");
}

TEST(IJSONRead, LookupsComparisonAndParse) {
    AutoRefPtr<IJSON> list = Parse(R"([{"id":"a","n":"42 apples"},{"id":"b","n":7},5])");
    AutoRefPtr<IJSON> match(list->Interface_ElementMatchingString("id", "b"));
    ASSERT_TRUE(match);
    EXPECT_EQ(Text(*match), R"({"id":"b","n":7})");
    AutoRefPtr<IJSON> byNumber(
        list->Interface_ElementMatchingDouble("n", 42.0)); // deliberate: strtol
    ASSERT_TRUE(byNumber);
    EXPECT_EQ(Text(*byNumber), R"({"id":"a","n":"42 apples"})");
    EXPECT_FALSE(AutoRefPtr<IJSON>(list->Interface_ElementMatchingDouble("n", 8.0)));
    EXPECT_EQ(Outcome(*list), "0:");
    AutoRefPtr<IJSON> object = Parse(R"({"id":"b"})");
    EXPECT_FALSE(AutoRefPtr<IJSON>(object->Interface_ElementMatchingString("id", "b")));
    EXPECT_EQ(Outcome(*object), "1:JSON object is not an array");

    // Has on an array tests element values, not keys.
    AutoRefPtr<IJSON> values = Parse(R"(["a",1])");
    EXPECT_EQ(values->Interface_Has("a"), 1);
    EXPECT_EQ(values->Interface_Has("1"), 1);
    EXPECT_EQ(values->Interface_Has("0"), 0);
    AutoRefPtr<IJSON> second(values->Interface_At(1));
    ASSERT_TRUE(second);
    EXPECT_EQ(Text(*second), "1");
    EXPECT_FALSE(AutoRefPtr<IJSON>(values->Interface_At(2)));
    EXPECT_EQ(Outcome(*values), "2:Index is out of bounds");

    // Equality is structural; LessThan orders the string forms byte-wise, not numbers.
    AutoRefPtr<IJSON> ten = Parse("10");
    AutoRefPtr<IJSON> nine = Parse("9");
    EXPECT_EQ(ten->Interface_LessThan(nine.Get()), 1);
    EXPECT_EQ(nine->Interface_LessThan(ten.Get()), 0);
    EXPECT_EQ(Parse(R"({"a":1,"b":[2]})")->Interface_Equals(Parse(R"({"b":[2],"a":1})").Get()), 1);
    EXPECT_EQ(Parse("1")->Interface_Equals(Parse("1.0").Get()), 0);

    // A failed parse keeps the document; the first line is line 0.
    AutoRefPtr<IJSON> kept = Parse("[1]");
    EXPECT_EQ(kept->Interface_Parse("[1,"), 0);
    EXPECT_EQ(Outcome(*kept), "2:JSON parse error in line 0: illegal array");
    EXPECT_EQ(Text(*kept), "[1]");
    EXPECT_EQ(kept->Interface_Parse("\n\n[1,]"), 0);
    EXPECT_EQ(Outcome(*kept), "2:JSON parse error in line 2: array must not end with comma");
    EXPECT_EQ(kept->Interface_Parse(nullptr), 1);
    EXPECT_EQ(Outcome(*kept), "0:");
    // Objects parsed through the interface keep their member order.
    EXPECT_EQ(Text(*Parse(R"({"z":1,"a":2,"m":3})")), R"({"z":1,"a":2,"m":3})");
}

TEST(IJSONRead, CallerBuffersAreWrittenOnlyWithinTheirConventions) {
    // Exact-size heap buffers, so that AddressSanitizer reports any write past them.
    const auto buffer = [](size_t size) {
        std::unique_ptr<char[]> bytes(new char[size ? size : 1]);
        std::memset(bytes.get(), '#', size ? size : 1);
        return bytes;
    };
    AutoRefPtr<IJSON> object = Parse(R"({"a":1})"); // text length 7
    auto seven = buffer(7);
    EXPECT_EQ(object->Interface_ToString(nullptr, seven.get(), 7), 8u);
    EXPECT_EQ(seven[0], '#');
    auto eight = buffer(8);
    EXPECT_EQ(object->Interface_ToString(nullptr, eight.get(), 8), 8u);
    EXPECT_STREQ(eight.get(), R"({"a":1})");
    EXPECT_EQ(object->Interface_ToString(nullptr, nullptr, 100), 8u);
    EXPECT_EQ(object->Interface_ToString("\t", nullptr, 0), 12u); // "{\n\t\"a\": 1\n}"

    AutoRefPtr<IJSON> text = Parse(R"("abc")");
    unsigned char copied = 9;
    auto three = buffer(3);
    EXPECT_EQ(text->Interface_AsString(three.get(), 3, &copied), 4u);
    EXPECT_EQ(copied, 0);
    EXPECT_EQ(three[0], '#');
    auto four = buffer(4);
    EXPECT_EQ(text->Interface_AsString(four.get(), 4, &copied), 4u);
    EXPECT_EQ(copied, 1);
    EXPECT_STREQ(four.get(), "abc");

    // GetString copies when length <= size and then writes length + 1 bytes (deliberate).
    AutoRefPtr<IJSON> member = Parse(R"({"k":"abc"})");
    unsigned char found = 9;
    auto two = buffer(2);
    EXPECT_EQ(member->Interface_GetString("k", two.get(), 2, &found), 4u);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(two[0], '#');
    auto spare = buffer(4);
    EXPECT_EQ(member->Interface_GetString("k", spare.get(), 3, &found), 4u);
    EXPECT_STREQ(spare.get(), "abc");
    EXPECT_EQ(member->Interface_GetString("k", spare.get(), 3, nullptr), 4u); // found is optional

    // A null output pointer is a null argument: 0 at once, no size reported, no message.
    found = 9;
    EXPECT_EQ(member->Interface_GetString("k", nullptr, 0, &found), 0u);
    EXPECT_EQ(found, 0);
    copied = 9;
    EXPECT_EQ(text->Interface_AsString(nullptr, 0, &copied), 0u);
    EXPECT_EQ(copied, 0);
    EXPECT_EQ(text->Interface_AsString(four.get(), 4, nullptr), 0u);
    EXPECT_EQ(Outcome(*text), "0:");

    // GetErrorMessage copies when length + 1 <= size.
    member->Interface_GetInt("missing", nullptr); // a null output: 0, no message
    EXPECT_EQ(Outcome(*member), "0:");
    int out = 0;
    member->Interface_GetInt("x", &out);
    const std::string message = "Could not find member 'x'";
    auto exact = buffer(message.size());
    EXPECT_EQ(member->Interface_GetErrorMessage(exact.get(), message.size(), &copied),
              message.size() + 1);
    EXPECT_EQ(copied, 0);
    EXPECT_EQ(exact[0], '#');
    auto fits = buffer(message.size() + 1);
    EXPECT_EQ(member->Interface_GetErrorMessage(fits.get(), message.size() + 1, &copied),
              message.size() + 1);
    EXPECT_EQ(copied, 1);
    EXPECT_EQ(fits.get(), message);
    EXPECT_EQ(member->Interface_GetErrorStatus(), 1u); // reading the error does not clear it
}
