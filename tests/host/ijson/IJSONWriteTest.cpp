// The changing operations of the module's IJSON through the interface pointer: setters,
// appends, replacement and removal, the three iteration forms, and the serialized form.
#include "IjsonFakes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>

using namespace Virelo;
using namespace IjsonFakes;

TEST(IJSONWrite, SettersChangeOnlyObjectsAndReportRefusals) {
    struct Row {
        const char* fName;
        const char* fDocument;
        std::function<unsigned char(IJSON&)> fSet;
        unsigned char fResult;
        const char* fText;
        const char* fOutcome;
    };
    const Row rows[] = {
        {"null becomes object", "null", [](IJSON& j) { return j.Interface_SetInt("k", -5); }, 1,
         R"({"k":-5})", "0:"},
        {"replace keeps place", R"({"k":1,"z":2})",
         [](IJSON& j) { return j.Interface_SetBool("k", 7); }, 1, R"({"k":true,"z":2})", "0:"},
        {"uint zero-extended", "{}", [](IJSON& j) { return j.Interface_SetUInt("k", 4294967295u); },
         1, R"({"k":4294967295})", "0:"},
        {"uint64 unsigned", "{}", [](IJSON& j) { return j.Interface_SetUInt64("k", ~0ULL); }, 1,
         R"({"k":18446744073709551615})", "0:"},
        {"string", "{}", [](IJSON& j) { return j.Interface_SetString("k", "v"); }, 1,
         R"({"k":"v"})", "0:"},
        {"key is no path", "{}", [](IJSON& j) { return j.Interface_SetInt("a/b", 1); }, 1,
         R"({"a/b":1})", "0:"},
        {"on array", "[]", [](IJSON& j) { return j.Interface_SetInt("k", 1); }, 0, "[]",
         "2:Can't set key/value pair into JSON, JSON element is not a JSON object"},
        {"null key", "{}", [](IJSON& j) { return j.Interface_SetNull(nullptr); }, 0, "{}",
         "2:Can't set key/value pair into JSON"},
        {"bad key", "{}", [](IJSON& j) { return j.Interface_SetDouble("\xC3", 1); }, 0, "{}",
         "2:Can't set key/value pair into JSON, JSON key is not a valid UTF8-string"},
        {"bad value", "{}", [](IJSON& j) { return j.Interface_SetString("k", "\xC3"); }, 0, "{}",
         "2:Can't set key/value pair into JSON, value for key \"k\" is not a valid UTF8-string"},
        {"bad key for string", "{}", [](IJSON& j) { return j.Interface_SetString("\xC3", "v"); }, 0,
         "{}", "2:Can't set key/value pair into JSON, key and/or value is not a valid UTF8-string"},
        {"null document", "{}", [](IJSON& j) { return j.Interface_SetJSON("k", nullptr); }, 0, "{}",
         "2:Can't set key/value pair into JSON"},
        {"foreign document", "{}",
         [](IJSON& j) {
             TextJson other("[1]");
             return j.Interface_SetJSON("k", &other);
         },
         0, "{}", "0:"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        AutoRefPtr<IJSON> json = Parse(row.fDocument);
        EXPECT_EQ(row.fSet(*json), row.fResult);
        EXPECT_EQ(Outcome(*json), row.fOutcome);
        EXPECT_EQ(Text(*json), row.fText);
    }
}

TEST(IJSONWrite, InsertedDocumentsAreCopiedReplacedOnesShared) {
    AutoRefPtr<IJSON> target = Parse(R"({"list":[0,1]})");
    AutoRefPtr<IJSON> list(target->Interface_Get("list"));
    AutoRefPtr<IJSON> source = Parse(R"({"x":1})");
    EXPECT_EQ(target->Interface_SetJSON("copy", source.Get()), 1);
    EXPECT_EQ(list->Interface_PushBackJSON(source.Get()), 1);
    EXPECT_EQ(list->Interface_ReplaceIndex(0, source.Get()), 1);
    EXPECT_EQ(list->Interface_ReplaceIndex(9, source.Get()), 1); // beyond the end: nothing
    source->Interface_SetInt("x", 2);
    EXPECT_EQ(Text(*target), R"({"list":[{"x":2},1,{"x":1}],"copy":{"x":1}})");

    // A document replaced into itself is copied: the tree must never contain itself.
    EXPECT_EQ(list->Interface_ReplaceIndex(1, list.Get()), 1);
    EXPECT_EQ(Text(*list), R"([{"x":2},[{"x":2},1,{"x":1}],{"x":1}])");
    TextJson foreign("[1]");
    EXPECT_EQ(list->Interface_ReplaceIndex(0, &foreign), 0);
    EXPECT_EQ(list->Interface_PushBackJSON(&foreign), 0);
    EXPECT_EQ(Outcome(*list), "0:");
    EXPECT_EQ(target->Interface_ReplaceIndex(0, source.Get()), 0);
    EXPECT_EQ(Outcome(*target), "1:JSON object is not an array");
    EXPECT_EQ(target->Interface_PushBackJSON(source.Get()), 0);
    EXPECT_EQ(Outcome(*target), "1:JSON object is not an array");
}

TEST(IJSONWrite, PushBacksAndRemovals) {
    AutoRefPtr<IJSON> array = Parse("[]");
    EXPECT_EQ(array->Interface_PushBackBool(2), 1);
    EXPECT_EQ(array->Interface_PushBackDouble(1.5), 1);
    EXPECT_EQ(array->Interface_PushBackString("s"), 1);
    EXPECT_EQ(array->Interface_PushBackString(nullptr), 0);
    EXPECT_EQ(Outcome(*array), "1:Couldn't push back invalid value to JSON array");
    EXPECT_EQ(Text(*array), R"([true,1.5,"s"])");
    AutoRefPtr<IJSON> object = Parse("{}");
    EXPECT_EQ(object->Interface_PushBackBool(1), 0);
    EXPECT_EQ(Outcome(*object), "1:Couldn't push back to JSON array, JSON object is not an array");

    EXPECT_FALSE(AutoRefPtr<IJSON>(array->Interface_RemoveIndex(5)));
    EXPECT_EQ(Outcome(*array), "1:Couldn't remove element at position 5");
    AutoRefPtr<IJSON> first(array->Interface_RemoveIndex(0));
    ASSERT_TRUE(first);
    array.Reset(); // the removed element outlives its document
    EXPECT_EQ(Text(*first), "true");
    EXPECT_FALSE(AutoRefPtr<IJSON>(object->Interface_RemoveIndex(0)));
    EXPECT_EQ(Outcome(*object),
              "1:Couldn't remove element at position 0, JSON object is not an array");

    AutoRefPtr<IJSON> members = Parse(R"({"a":[1],"b":2})");
    AutoRefPtr<IJSON> a(members->Interface_RemoveKey("a"));
    ASSERT_TRUE(a);
    EXPECT_EQ(Text(*a), "[1]");
    EXPECT_EQ(Text(*members), R"({"b":2})");
    EXPECT_FALSE(AutoRefPtr<IJSON>(members->Interface_RemoveKey("a")));
    EXPECT_EQ(Outcome(*members), "1:Couldn't remove element with key a");
    EXPECT_FALSE(AutoRefPtr<IJSON>(first->Interface_RemoveKey("a")));
    EXPECT_EQ(Outcome(*first),
              "1:Couldn't remove element with key a, JSON object is not an object");
}

namespace {

struct Visit {
    std::string fNames;
    int fFailAt = -1; // index whose callback fails
    int fCalls = 0;
};

/// "[0,0,...]" with `count` elements.
std::string Zeros(int count) {
    std::string text = "[0";
    for (int i = 1; i < count; ++i)
        text += ",0";
    return text + "]";
}

unsigned char Plain(const char* name, const IJSON* child, void* user) {
    auto& visit = *static_cast<Visit*>(user);
    visit.fNames += std::string(name) + "=" + Text(*child) + ";";
    return visit.fCalls++ == visit.fFailAt ? 0 : 1;
}

unsigned char AlwaysFailsWithText(const char* name, const IJSON*, void* user, char* error,
                                  unsigned int size) {
    ++static_cast<Visit*>(user)->fCalls;
    std::snprintf(error, size, "bad %s", name);
    return 0;
}

unsigned char FailsWithoutText(const char*, const IJSON*, void* user, char*, unsigned int) {
    ++static_cast<Visit*>(user)->fCalls;
    return 0;
}

/// Fails for odd values; reports an error on the context except for the value 5.
unsigned char FailsOnOdd(const char* name, const IJSON* child, void* user, IContext* context) {
    ++static_cast<Visit*>(user)->fCalls;
    int value = 0;
    child->Interface_AsInt(&value);
    if (value % 2 == 0) return 1;
    if (value != 5)
        context->TriggerErrorHandler(eSeverityRecoverable, "T", "T.Id", std::string("bad ") + name);
    return 0;
}

unsigned char AlwaysFailsOnContext(const char* name, const IJSON*, void* user, IContext* context) {
    ++static_cast<Visit*>(user)->fCalls;
    context->TriggerErrorHandler(eSeverityRecoverable, "T", "T.Id", std::string("bad ") + name);
    return 0;
}

} // namespace

TEST(IJSONWrite, PlainIterationVisitsInOrderAndStopsOnFailure) {
    AutoRefPtr<IJSON> array = Parse(R"([1,"a",[2]])");
    array->Interface_SetInt(nullptr, 0); // an error state that iteration must leave alone
    Visit all;
    EXPECT_EQ(array->Interface_ForEach(&Plain, &all), 1);
    EXPECT_EQ(all.fNames, R"(0=1;1="a";2=[2];)");
    Visit stop;
    stop.fFailAt = 1;
    EXPECT_EQ(array->Interface_ForEach(&Plain, &stop), 0);
    EXPECT_EQ(stop.fCalls, 2);
    EXPECT_EQ(Outcome(*array), "2:Can't set key/value pair into JSON");

    Visit members;
    EXPECT_EQ(Parse(R"({"k":true})")->Interface_ForEach(&Plain, &members), 1);
    EXPECT_EQ(members.fNames, "k=true;");
    Visit none;
    EXPECT_EQ(Parse("[]")->Interface_ForEach(&Plain, &none), 1);
    EXPECT_EQ(Parse("5")->Interface_ForEach(&Plain, &none), 0);
    EXPECT_EQ(none.fCalls, 0);
}

TEST(IJSONWrite, ErrorBufferIterationCollectsAtMostTwentyTexts) {
    AutoRefPtr<IJSON> array = Parse(Zeros(30).c_str());
    char errors[4096] = {};
    Visit visit;
    EXPECT_EQ(array->Interface_ForEach(&AlwaysFailsWithText, &visit, errors, sizeof errors), 0);
    EXPECT_EQ(visit.fCalls, 20);
    const std::string collected = errors;
    EXPECT_EQ(collected.rfind("Item '1' has error 'bad 0', Item '2' has error 'bad 1', ", 0), 0u);
    EXPECT_NE(collected.find("Item '20' has error 'bad 19'"), std::string::npos);
    EXPECT_EQ(collected.find("Item '21'"), std::string::npos);

    Visit silent;
    EXPECT_EQ(array->Interface_ForEach(&FailsWithoutText, &silent, errors, sizeof errors), 0);
    EXPECT_EQ(silent.fCalls, 1);
    Visit unbuffered;
    EXPECT_EQ(array->Interface_ForEach(&AlwaysFailsWithText, &unbuffered, nullptr, 0), 0);
    EXPECT_EQ(unbuffered.fCalls, 1);
}

TEST(IJSONWrite, ContextIterationReportsCollectedErrorsOnce) {
    Context context;
    AutoRefPtr<IJSON> array = Parse("[0,1,2,3,4]");
    Visit visit;
    EXPECT_EQ(array->Interface_ForEach(&FailsOnOdd, &visit, &context), 0);
    EXPECT_EQ(visit.fCalls, 5);
    ASSERT_EQ(context.fReports.size(), 3u); // two from the callback, then the collected one
    const Report& report = context.fReports.back();
    EXPECT_EQ(report.fSeverity, 2u);
    EXPECT_EQ(report.fSource, "Virelo");
    EXPECT_EQ(report.fId, "Error.Virelo.FunctionError");
    EXPECT_EQ(report.fMessage, "Item '1' has error 'bad 1', Item '3' has error 'bad 3'");

    // A failure that leaves no error on the context ends the walk; so does a missing context.
    Context quiet;
    Visit stopped;
    EXPECT_EQ(Parse("[0,5,1,7]")->Interface_ForEach(&FailsOnOdd, &stopped, &quiet), 0);
    EXPECT_EQ(stopped.fCalls, 2);
    EXPECT_TRUE(quiet.fReports.empty());

    // At most 20 entries are collected.
    Context busy;
    Visit capped;
    EXPECT_EQ(Parse(Zeros(30).c_str())->Interface_ForEach(&AlwaysFailsOnContext, &capped, &busy),
              0);
    EXPECT_EQ(capped.fCalls, 20);
    ASSERT_FALSE(busy.fReports.empty());
    const std::string& entries = busy.fReports.back().fMessage;
    EXPECT_EQ(std::count(entries.begin(), entries.end(), '\''), 20 * 4);
}

TEST(IJSONWrite, SerializedFormIsLengthThenCompactText) {
    AutoRefPtr<IJSON> json = Parse(R"({ "a" : 1 })");
    EXPECT_EQ(json->Interface_SerializedSize(), 15u);
    char bytes[15];
    std::memset(bytes, '#', sizeof bytes);
    EXPECT_EQ(json->Interface_Serialize(bytes, 14), ~0ULL);
    EXPECT_EQ(bytes[0], '#');
    EXPECT_EQ(json->Interface_Serialize(nullptr, 100), ~0ULL);
    EXPECT_EQ(json->Interface_Serialize(bytes, 15), 15u);
    EXPECT_EQ(std::string(bytes, 15), std::string("\x07\0\0\0\0\0\0\0", 8) + R"({"a":1})");

    AutoRefPtr<IJSON> copy = Parse("null");
    EXPECT_EQ(copy->Interface_Deserialize(bytes, 15), 15u);
    EXPECT_EQ(Text(*copy), R"({"a":1})");
    std::string longer(bytes, 15);
    longer += "trailing";
    EXPECT_EQ(copy->Interface_Deserialize(longer.data(), longer.size()), 15u);
    EXPECT_EQ(copy->Interface_Deserialize(bytes, 14), ~0ULL); // the text is cut
    EXPECT_EQ(copy->Interface_Deserialize(bytes, 7), ~0ULL);  // the length is cut
    EXPECT_EQ(copy->Interface_Deserialize(nullptr, 15), ~0ULL);
    std::string huge(bytes, 15);
    huge.replace(0, 8, std::string(8, '\xFF')); // a length that overflows when 8 is added
    EXPECT_EQ(copy->Interface_Deserialize(huge.data(), huge.size()), ~0ULL);
    std::string broken(bytes, 15);
    broken[14] = ',';
    EXPECT_EQ(copy->Interface_Deserialize(broken.data(), broken.size()), ~0ULL);
    EXPECT_EQ(Outcome(*copy).rfind("2:JSON parse error in line 0: ", 0), 0u);
    EXPECT_EQ(Text(*copy), R"({"a":1})");
}

TEST(IJSONWrite, BenchDocumentsSurviveTheSerializedForm) {
    for (const char* name : {"canada.json", "citm_catalog.json", "twitter.json"}) {
        SCOPED_TRACE(name);
        std::ifstream file(std::string(VIRELO_JSON_SHARED_DATA) + "/bench-data/" + name,
                           std::ios::binary);
        if (!file) GTEST_SKIP() << "bench data not found at " << VIRELO_JSON_SHARED_DATA;
        std::ostringstream text;
        text << file.rdbuf();
        AutoRefPtr<IJSON> json = Parse(text.str().c_str());
        ASSERT_EQ(json->Interface_GetErrorStatus(), 0u);
        const unsigned long long size = json->Interface_SerializedSize();
        std::string bytes(static_cast<size_t>(size), '\0');
        ASSERT_EQ(json->Interface_Serialize(bytes.data(), size), size);
        uint64_t length = 0;
        std::memcpy(&length, bytes.data(), sizeof length);
        EXPECT_EQ(length + 8, size);
        AutoRefPtr<IJSON> back = Parse("null");
        EXPECT_EQ(back->Interface_Deserialize(bytes.data(), size), size);
        EXPECT_EQ(Text(*back), bytes.substr(8)); // before Equals, which converts pending reals
        EXPECT_EQ(back->Interface_Equals(json.Get()), 1);
    }
}
