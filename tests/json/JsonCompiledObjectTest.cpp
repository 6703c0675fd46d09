// Compiled objects: the key table, slot inserts and reads, required keys, copies, and reading
// and writing them as JSON text.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <stdexcept>
#include <vector>

namespace {

using namespace json_test;
using Keys = JsonCompiledObjectContext;
using CompiledPtr = JsonAutoRefPtr<JsonCompiledObject>;

std::string Pretty(const JsonValue& value, int level) {
    std::string out;
    value.AppendToStringPretty(out, "  ", "\n", level);
    return out;
}

// The document table of the text tests; `point` is the key table of nested objects.
struct Tables {
    Keys point, doc;
    Tables() {
        point.AddKey("x", Keys::kNumber, nullptr);
        point.AddKey("y", Keys::kNumber | Keys::kRequired, nullptr);
        doc.AddKey("id", Keys::kNumber, nullptr);                    // 0
        doc.AddKey("name", Keys::kString, nullptr);                  // 1
        doc.AddKey("pos", Keys::kCompiledObject, &point);            // 2
        doc.AddKey("path", Keys::kArray, &point);                    // 3: compiled elements
        doc.AddKey("meta", Keys::kObject, nullptr);                  // 4
        doc.AddKey("tags", Keys::kArray, nullptr);                   // 5: plain elements
        doc.AddKey("any", 0, nullptr);                               // 6
        doc.AddKey("either", Keys::kObject | Keys::kArray, nullptr); // 7
    }
};

TEST(JsonCompiledObjectContext, AddKeyIndexesMasksAndSubTables) {
    Keys sub, keys;
    struct Row { const char* fKey; unsigned short fMask; Keys* fSub; unsigned long fIndex; unsigned short fStoredMask; const Keys* fStoredSub; };
    const Row rows[] = {
        {"a", 0x001, nullptr, 0, 0x001, nullptr},
        // a compiled-object key without a table for its value expects a plain object
        {"b", 0x200, nullptr, 1, 0x100, nullptr},
        {"c", 0x600, nullptr, 2, 0x500, nullptr}, // the required bit survives
        {"e", 0x200, &sub, 3, 0x200, &sub},
        // an existing key keeps its index, mask and sub-table
        {"a", 0x300, &sub, 0, 0x001, nullptr},
        {"e", 0x001, nullptr, 3, 0x200, &sub},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.fKey) + " mask " + std::to_string(r.fMask));
        EXPECT_EQ(keys.AddKey(r.fKey, r.fMask, r.fSub), r.fIndex);
        EXPECT_EQ(keys.TypeMask(r.fIndex), r.fStoredMask);
        EXPECT_EQ(keys.SubContext(r.fIndex), r.fStoredSub);
        EXPECT_EQ(keys.Key(r.fIndex), r.fKey);
    }
    EXPECT_EQ(keys.KeyCount(), 4u);
    EXPECT_EQ(keys.IndexOf("c"), 2u);
    EXPECT_EQ(keys.IndexOf("A"), Keys::sMaxIndex);
}

TEST(JsonCompiledObject, SlotsAreFixedWhenTheObjectIsMade) {
    Keys keys;
    keys.AddKey("a", 0, nullptr);
    CompiledPtr early(new JsonCompiledObject(&keys));
    const unsigned long late = keys.AddKey("late", 0, nullptr);
    CompiledPtr fresh(new JsonCompiledObject(&keys));
    EXPECT_EQ(early->SlotCount(), 1u);
    EXPECT_FALSE(early->InsertInteger(late, 1LL));
    EXPECT_TRUE(fresh->InsertInteger(late, 1LL));
    EXPECT_EQ(early->GetSubNode("late"), nullptr);
    EXPECT_NE(fresh->GetSubNode("late"), nullptr);

    JsonCompiledObject none(nullptr);
    EXPECT_EQ(none.SlotCount(), 0u);
    EXPECT_FALSE(none.InsertNull(0));
    EXPECT_TRUE(none.Completed());
    EXPECT_EQ(Pretty(none, 1), "{}");
}

TEST(JsonCompiledObject, InsertsAndEraseKeepTheSetCount) {
    Keys keys;
    for (const char* k : {"a", "b", "c"})
        keys.AddKey(k, 0, nullptr);
    CompiledPtr object(new JsonCompiledObject(&keys));
    ValuePtr shared(new JsonTrue());
    struct Row { const char* fName; std::function<bool(JsonCompiledObject&)> fOp; bool fResult; unsigned long fCount; const char* fText; };
    const Row rows[] = {
        {"integer", [](auto& o) { return o.InsertInteger(0, 1LL); }, true, 1, R"({"a":1})"},
        {"replace", [](auto& o) { return o.InsertString(0, "x"); }, true, 1, R"({"a":"x"})"},
        {"JSON null is a value", [](auto& o) { return o.InsertNull(1); }, true, 2, R"({"a":"x","b":null})"},
        {"null pointer empties", [](auto& o) { return o.InsertValue(1, ValuePtr()); }, true, 1, R"({"a":"x"})"},
        {"null pointer into empty slot", [](auto& o) { return o.InsertValue(1, ValuePtr()); }, true, 1, R"({"a":"x"})"},
        {"bad UTF-8 text", [](auto& o) { return o.InsertString(2, "\xFF"); }, false, 1, R"({"a":"x"})"},
        {"out of range", [](auto& o) { return o.InsertReal(3, 1.5); }, false, 1, R"({"a":"x"})"},
        {"internal out of range releases", [](auto& o) { return o.InsertValueInternal(3, new JsonArray()); }, false, 1, R"({"a":"x"})"},
        {"shared value", [&](auto& o) { return o.InsertValue(2, shared); }, true, 2, R"({"a":"x","c":true})"},
        {"unsigned", [](auto& o) { return o.InsertInteger(1, ULLONG_MAX); }, true, 3, R"({"a":"x","b":18446744073709551615,"c":true})"},
        {"erase", [](auto& o) { return o.Erase(0); }, true, 2, R"({"b":18446744073709551615,"c":true})"},
        {"erase empty slot", [](auto& o) { return o.Erase(0); }, false, 2, R"({"b":18446744073709551615,"c":true})"},
        {"copy insert", [](auto& o) { return o.InsertValue(0, *o.At(2)); }, true, 3, R"({"a":true,"b":18446744073709551615,"c":true})"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        EXPECT_EQ(r.fOp(*object), r.fResult);
        EXPECT_EQ(object->GetSetCount(), r.fCount);
        unsigned long set = 0;
        for (const JsonValue* slot : object->Slots())
            set += slot != nullptr;
        EXPECT_EQ(set, r.fCount);
        EXPECT_EQ(Text(object), r.fText);
    }
    EXPECT_EQ(object->At(2).Get(), shared.Get()); // shared, not copied
    EXPECT_NE(object->At(0).Get(), shared.Get()); // the const& form copies
}

TEST(JsonCompiledObject, KeyValReadsPerSlotType) {
    Keys sub, table;
    sub.AddKey("x", 0, nullptr);
    table.AddKey("s", 0, nullptr);
    table.AddKey("i", 0, nullptr);
    table.AddKey("c", Keys::kCompiledObject, &sub);
    for (const char* k : {"a", "o", "u", "r", "f"})
        table.AddKey(k, 0, nullptr);
    CompiledPtr object = JsonCompiledObject::ReadFromString(
        R"({"s":"12","i":-5,"c":{"x":1},"a":[],"o":{"k":1},"u":18446744073709551615,"r":2.50,"f":false})", &table, nullptr);
    ASSERT_TRUE(object);
    struct Row { unsigned long fIndex; const char* fString; long long fInteger; double fReal; bool fBool; };
    const Row rows[] = {
        {0, "12", 12, 12.0, true}, // a string converts by the number rules
        {1, "-5", -5, -5.0, true},
        {2, R"({"x":1})", 0, 0.0, false},
        {3, "[]", 0, 0.0, false},
        {5, "18446744073709551615", 0, 18446744073709551615.0, true}, // unsigned reads as 0
        {6, "2.50", 2, 2.5, true}, // the pending text until a numeric read converts it
        {7, "false", 0, 0.0, false},
        {9, "", 0, 0.0, false}, // out of range
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fIndex);
        EXPECT_EQ(object->KeyValAsString(r.fIndex), r.fString);
        EXPECT_EQ(object->KeyValAsInteger(r.fIndex), r.fInteger);
        EXPECT_EQ(object->KeyValAsReal(r.fIndex), r.fReal);
        EXPECT_EQ(object->KeyValAsBool(r.fIndex), r.fBool);
    }
    EXPECT_EQ(object->KeyValAsString(6), "2.5");
    object->Erase(1);
    EXPECT_EQ(object->KeyValAsString(1), "");
    EXPECT_FALSE(object->KeyValAsBool(1));
    // The typed reads give a node only for their own container type.
    EXPECT_TRUE(object->KeyValAsCompObject(2) && object->KeyValAsArray(3) && object->KeyValAsObject(4));
    EXPECT_FALSE(object->KeyValAsObject(2) || object->KeyValAsCompObject(3) || object->KeyValAsArray(4));
    EXPECT_FALSE(object->KeyValAsObject(1) || object->KeyValAsArray(99));
}

TEST(JsonCompiledObject, CompletedNeedsEveryRequiredKey) {
    Keys keys, empty;
    keys.AddKey("opt", Keys::kNumber, nullptr);
    keys.AddKey("req", Keys::kNumber | Keys::kRequired, nullptr);
    JsonCompiledObject object(&keys);
    object.InsertInteger(0, 1LL);
    EXPECT_FALSE(object.Completed());
    object.InsertNull(1); // a JSON null is a value
    EXPECT_TRUE(object.Completed());
    object.Erase(1);
    EXPECT_FALSE(object.Completed());
    EXPECT_TRUE(JsonCompiledObject(&empty).Completed());
}

TEST(JsonCompiledObject, CopyIsDeepAndSharesTheKeyTable) {
    Tables t;
    CompiledPtr original = JsonCompiledObject::ReadFromString(R"({"pos":{"x":1,"y":2},"tags":[1]})", &t.doc, nullptr);
    ASSERT_TRUE(original);
    CompiledPtr copy(new JsonCompiledObject(*original));
    EXPECT_EQ(copy->GetContext(), &t.doc);
    EXPECT_EQ(copy->GetSetCount(), 2u);
    EXPECT_EQ(copy->KeyValAsCompObject(2)->GetContext(), &t.point);
    copy->KeyValAsArray(5)->AddInteger(2);
    copy->KeyValAsCompObject(2)->Erase(0);
    EXPECT_EQ(Text(original), R"({"pos":{"x":1,"y":2},"tags":[1]})");
    EXPECT_EQ(Text(copy), R"({"pos":{"y":2},"tags":[1,2]})");

    // Assignment replaces what the target held (released, see ASan) and keeps the count.
    JsonCompiledObject target(&t.doc);
    target.InsertString(1, "old");
    target = *copy;
    JsonCompiledObject& alias = target;
    target = alias;
    EXPECT_EQ(Text(target), R"({"pos":{"y":2},"tags":[1,2]})");
    EXPECT_EQ(target.GetSetCount(), 2u);
}

TEST(JsonCompiledObject, ForEachVisitsSetSlotsInIndexOrder) {
    Keys keys;
    for (const char* k : {"a", "b", "c"})
        keys.AddKey(k, 0, nullptr);
    JsonCompiledObject object(&keys);
    object.InsertInteger(2, 3LL);
    object.InsertInteger(0, 1LL);
    std::vector<unsigned long> seen;
    object.ForEach([&](unsigned long i, const ValuePtr&) { seen.push_back(i); });
    EXPECT_EQ(seen, (std::vector<unsigned long>{0, 2}));
    object.ForEach({}); // an empty function visits nothing
    EXPECT_THROW(object.ForEach([](unsigned long, const ValuePtr&) { throw std::runtime_error("x"); }), std::runtime_error);
    EXPECT_EQ(object.Slots()[0]->GetUseCount(), 1u); // the visit's reference was given back
}

TEST(JsonCompiledObjectText, ReadsInKeyTableOrderAndSkipsUnknownKeys) {
    Tables t;
    struct Row { const char* fName; const char* fText; const char* fCompact; };
    const Row rows[] = {
        {"white space", " {\r\n\t} ", "{}"},
        {"key-table order", R"({"name":"n","id":1})", R"({"id":1,"name":"n"})"},
        {"unknown keys with nested values", R"({"zz":[1,{"a":[2]}],"id":1,"yy":{"b":{}},"xx":"s"})", R"({"id":1})"},
        {"scalar masks are not checked", R"({"id":"text","name":5})", R"({"id":"text","name":5})"},
        {"repeated key replaces", R"({"id":1,"id":2})", R"({"id":2})"},
        {"nested table", R"({"pos":{"q":0,"y":2,"x":1}})", R"({"pos":{"x":1,"y":2}})"},
        {"array of compiled objects", R"({"path":[{"y":1,"z":0},{"x":2}]})", R"({"path":[{"y":1},{"x":2}]})"},
        {"empty arrays", R"({"path":[],"tags":[]})", R"({"path":[],"tags":[]})"},
        {"mask 0 takes anything", R"({"any":[{"q":1}]})", R"({"any":[{"q":1}]})"},
        {"spaces around separators", "{ \"id\" :\n1 , \"name\" : \"n\" }", R"({"id":1,"name":"n"})"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        ParserContext ctx;
        ValuePtr value = JsonValue::ReadFromString(r.fText, &ctx, &t.doc);
        ASSERT_TRUE(value) << ctx.fError;
        EXPECT_EQ(value->GetType(), JsonValue::eJsonCompiledObject);
        EXPECT_EQ(Text(value), r.fCompact);
    }
}

TEST(JsonCompiledObjectText, ContainerKindsFollowTheKeyMask) {
    Tables t;
    CompiledPtr object = JsonCompiledObject::ReadFromString(
        R"({"pos":{"x":1},"path":[{"x":2}],"meta":{"pos":{"x":3}},"tags":[{"x":4}],"any":{"x":5}})", &t.doc, nullptr);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->KeyValAsCompObject(2)->GetContext(), &t.point);
    EXPECT_EQ(object->KeyValAsArray(3)->AtIndex(0)->GetType(), JsonValue::eJsonCompiledObject);
    // Plain objects stay plain all the way down, whatever their keys are.
    EXPECT_EQ(object->KeyValAsObject(4)->At("pos")->GetType(), JsonValue::eJsonObject);
    EXPECT_EQ(object->KeyValAsArray(5)->AtIndex(0)->GetType(), JsonValue::eJsonObject);
    EXPECT_EQ(object->At(6)->GetType(), JsonValue::eJsonObject);

    // A top-level array read with a key table holds compiled objects, but is not one itself.
    ValuePtr list = JsonValue::ReadFromString(R"([{"y":1},{"x":2}])", nullptr, &t.point);
    ASSERT_TRUE(list);
    EXPECT_EQ(static_cast<JsonArray&>(*list).AtIndex(1)->GetType(), JsonValue::eJsonCompiledObject);
    ParserContext ctx;
    EXPECT_FALSE(JsonCompiledObject::ReadFromString(R"([{"y":1}])", &t.point, &ctx));
    EXPECT_EQ(ctx.fError, "");
}

TEST(JsonCompiledObjectText, RejectsWithFixedMessageAndLine) {
    const std::string kPairSep = "comma separator expected between key value pairs",
                      kKey = " while parsing a key", kV = " while parsing value",
                      kType = "value is not of expected type", kNotValue = "not a JSON value",
                      kEnd = "object list must not end with comma", kIllegal = "illegal compiled object",
                      kQuote = "string quote sign expected";
    Tables t;
    struct Row { const char* fName; const char* fText; std::string fError; uint64_t fLine; };
    const Row rows[] = {
        {"array element not an object", "[1]", kIllegal, 0},
        {"leading comma", "{ ,\"id\":1}", "expected key value pair in front before comma", 0},
        {"trailing comma", R"({"id":1,})", kEnd, 0}, // no article, unlike the plain object's
        {"trailing comma before blank", "{\"id\":1,\n }", kEnd, 1},
        {"missing comma", R"({"id":1 "name":"n"})", kPairSep, 0},
        {"end after member", R"({"id":1)", kPairSep, 0},
        {"missing colon", R"({"id" 1})", "colon expected", 0},
        {"end after key", R"({"id")", "colon expected", 0},
        {"key not a string", "{1:2}", kQuote + kKey, 0},
        {"end after brace", "{", kQuote + kKey, 0},
        {"double comma", R"({"id":1,,"name":"n"})", kQuote + kKey, 0},
        {"bad key escape", R"({"\x":1})", "illegally quoted character" + kKey, 0},
        {"missing value", R"({"id":})", kNotValue + kV, 0},
        {"bad value of unknown key", R"({"zz":tru})", kNotValue + kV, 0},
        {"bad string value", R"({"name":"\x"})", "illegally quoted character" + kV, 0},
        // container kinds are checked
        {"object expected", R"({"meta":"text"})", kType, 0},
        {"array expected", R"({"tags":{}})", kType, 0},
        {"compiled object expected", R"({"pos":5})", kType, 0},
        {"object wins over array", R"({"either":[1]})", kType, 0},
        {"nested compiled", R"({"pos":{"x":}})", kNotValue + kV + kV, 0},
        {"nested plain object", R"({"meta":{"a":}})", kNotValue + " while parsing a value" + kV, 0},
        {"array element of table", R"({"path":[1]})", kIllegal + kV, 0},
        {"array trailing comma", R"({"tags":[1,]})", "array must not end with comma" + kV, 0},
        {"later array element", "{\"path\":[\n{\"x\":1},\n5]}", kIllegal + kV, 2},
        {"trailing characters", "{} x", "illegal trailing characters after value", 0},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        ParserContext ctx;
        EXPECT_FALSE(JsonValue::ReadFromString(r.fText, &ctx, &t.doc));
        EXPECT_EQ(ctx.fError, r.fError);
        EXPECT_EQ(ctx.fLine, r.fLine);
    }
    // Parse needs a key table and a brace at the position.
    for (const auto& [text, keys] : {std::pair{"{}", (const Keys*)nullptr}, {"[]", &t.doc}, {"", &t.doc}, {" {}", &t.doc}}) {
        ParserContext ctx;
        EXPECT_EQ(JsonCompiledObject::Parse(text, ctx, keys), nullptr) << text;
        EXPECT_EQ(ctx.fError, kIllegal);
    }
}

TEST(JsonCompiledObjectText, WritesSetSlotsInKeyTableOrder) {
    Tables t;
    Keys quoted;
    quoted.AddKey("a\"b\n", 0, nullptr);
    CompiledPtr doc = JsonCompiledObject::ReadFromString(R"({"tags":[1,2],"meta":{"k":true},"pos":{"y":2,"x":1},"id":7})", &t.doc, nullptr);
    CompiledPtr small = JsonCompiledObject::ReadFromString(R"({"id":7})", &t.doc, nullptr);
    CompiledPtr escaped = JsonCompiledObject::ReadFromString(R"({"a\"b\n":1})", &quoted, nullptr);
    ASSERT_TRUE(doc && small && escaped);
    EXPECT_EQ(Text(doc), R"({"id":7,"pos":{"x":1,"y":2},"meta":{"k":true},"tags":[1,2]})");
    EXPECT_EQ(Text(escaped), R"({"a\"b\n":1})");
    EXPECT_EQ(Text(JsonCompiledObject(&t.doc)), "{}");

    struct Row { const char* fName; const JsonValue& fValue; int fLevel; const char* fPretty; };
    const Row rows[] = {
        // "\":" without a blank for compiled objects, "\": " for the plain object inside
        {"nested", *doc, 0, "{\n  \"id\":7,\n  \"pos\":{\n    \"x\":1,\n    \"y\":2\n  },\n  \"meta\":{\n    \"k\": true\n  },\n  \"tags\":[\n    1,\n    2\n  ]\n}"},
        {"level 2", *small, 2, "{\n      \"id\":7\n    }"},
        {"negative level", *small, -1, "{\n\"id\":7\n}"},
        {"escaped key", *escaped, 0, "{\n  \"a\\\"b\\n\":1\n}"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        EXPECT_EQ(Pretty(r.fValue, r.fLevel), r.fPretty);
    }
}

} // namespace
