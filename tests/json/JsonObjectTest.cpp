// JsonObject: inserts and their key/text checks, ownership of inserted values, member order,
// reads, iteration, equality and deep copies.
#include "tests/json/JsonTestHelpers.h"
#include "tests/support/CollidingKeys.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <functional>
#include <unordered_map>
#include <vector>

namespace {

using namespace json_test;

const std::string kBadUtf8 = "k\xC3";

std::vector<std::string> KeysByForEach(const JsonObject& object) {
    std::vector<std::string> keys;
    object.ForEach([&](const std::string& key, const ValuePtr&) { keys.push_back(key); });
    return keys;
}

std::vector<std::string> KeysOfMap(const JsonObject& object) {
    std::vector<std::string> keys;
    for (const JsonObject::Member& member : object.Members())
        keys.emplace_back(member.Key());
    return keys;
}

std::string CompactIn(const JsonObject& object, const std::vector<std::string>& keys) {
    std::string text = "{";
    for (const std::string& key : keys)
        text += (text.size() > 1 ? ",\"" : "\"") + key + "\":" + Text(object.At(key));
    return text + "}";
}

// One row per key-check rule; the other overloads forward to these.
enum KeyCheck { kUnlessTrusted, kAlways, kNever };
struct Insert {
    const char* fName;
    std::function<bool(JsonObject&, const std::string&, bool)> fInsert;
    std::string fText; // compact text of the inserted member
    KeyCheck fKeyCheck;
};
using O = JsonObject;
using K = const std::string;
const Insert sInserts[] = {
    {"InsertValue", [](O& o, K& k, bool t) { return o.InsertValue(k, ValuePtr(new JsonNull()), t); }, "null", kUnlessTrusted},
    {"InsertValueInternal", [](O& o, K& k, bool t) { return o.InsertValueInternal(k, new JsonTrue(), t); }, "true", kUnlessTrusted},
    {"InsertString", [](O& o, K& k, bool t) { return o.InsertString(k, "s\"", t, false); }, "\"s\\\"\"", kUnlessTrusted},
    {"InsertInteger unsigned", [](O& o, K& k, bool t) { return o.InsertInteger(k, 18446744073709551615ULL, t); }, "18446744073709551615", kUnlessTrusted},
    {"NonUTF8Key", [](O& o, K& k, bool) { return o.InsertValueWithNonUTF8Key(k, ValuePtr(new JsonInteger(7LL))); }, "7", kNever},
    // deliberately checks the key despite its name
    {"NonUTF8Key deep copy", [](O& o, K& k, bool) { return o.InsertValueWithNonUTF8Key(k, JsonInteger(3LL)); }, "3", kAlways},
};

TEST(JsonObject, InsertChecksKeyUnlessTrusted) {
    for (const Insert& row : sInserts) {
        SCOPED_TRACE(row.fName);
        JsonObject object;
        EXPECT_TRUE(row.fInsert(object, "key", false));
        EXPECT_EQ(Text(object), "{\"key\":" + row.fText + "}");

        const bool refusedUntrusted = row.fKeyCheck != kNever; // a refused key changes nothing
        JsonObject untrusted;
        untrusted.InsertInteger("old", 1LL, false);
        EXPECT_EQ(row.fInsert(untrusted, kBadUtf8, false), !refusedUntrusted);
        EXPECT_EQ(untrusted.Size(), refusedUntrusted ? 1u : 2u);
        EXPECT_EQ(untrusted.GetNextSequence(), refusedUntrusted ? 1u : 2u);

        const bool refusedTrusted = row.fKeyCheck == kAlways;
        JsonObject trusted;
        EXPECT_EQ(row.fInsert(trusted, kBadUtf8, true), !refusedTrusted);
        EXPECT_EQ(trusted.Size(), refusedTrusted ? 0u : 1u);
    }
}

TEST(JsonObject, InsertReplacesInPlaceAndReleasesOldValue) {
    for (const Insert& row : sInserts) {
        SCOPED_TRACE(row.fName);
        JsonObject object(true);
        ValuePtr old(new JsonArray());
        object.InsertValue("a", old, false);
        object.InsertInteger("b", 2LL, false);
        EXPECT_TRUE(row.fInsert(object, "a", false));
        EXPECT_EQ(old->GetUseCount(), 1u);
        EXPECT_EQ(object.GetNextSequence(), 2u);
        EXPECT_EQ(Text(object), "{\"a\":" + row.fText + ",\"b\":2}");
    }
}

TEST(JsonObject, InsertStringRefusesInvalidTextWithoutChange) {
    JsonObject object;
    object.InsertString("a", "old", false, false);
    EXPECT_FALSE(object.InsertString("a", "bad\xC3", false, false));
    EXPECT_FALSE(object.InsertString("b", std::string("bad\xC3"), false, false));
    EXPECT_EQ(Text(object), "{\"a\":\"old\"}");
    EXPECT_EQ(object.GetNextSequence(), 1u);
    EXPECT_TRUE(object.InsertString("a", "bad\xC3", false, true)); // trusted text
    EXPECT_EQ(object.KeyValAsString("a"), "bad\xC3");
}

TEST(JsonObject, InsertedValueOwnershipAndNullErases) {
    JsonObject object;
    ValuePtr shared(new JsonInteger(1LL));
    object.InsertValue("shared", shared, false); // adds a reference
    EXPECT_EQ(object.Find("shared"), shared.Get());
    ValuePtr given(new JsonInteger(2LL));
    JsonValue* raw = given.Get();
    object.InsertValue("given", std::move(given), false); // takes the reference over
    EXPECT_FALSE(given);
    EXPECT_EQ(raw->GetUseCount(), 1u);
    JsonInteger local(3LL);
    object.InsertValue("copied", local, false); // stores a deep copy
    EXPECT_NE(object.Find("copied"), &local);
    EXPECT_EQ(local.GetUseCount(), 1u);

    // An Internal insert with a refused key releases the value it was handed.
    JsonValue* refused = new JsonNull();
    refused->AddRef();
    EXPECT_FALSE(object.InsertValueInternal(kBadUtf8, refused, false));
    EXPECT_TRUE(refused->Release());

    ValuePtr again = object.At("shared"); // At adds a reference for the caller
    EXPECT_EQ(shared->GetUseCount(), 3u);
    EXPECT_TRUE(object.InsertValue("shared", ValuePtr(), false)); // a null value erases
    EXPECT_EQ(shared->GetUseCount(), 2u);
    EXPECT_TRUE(object.InsertValueWithNonUTF8KeyInternal("given", nullptr));
    EXPECT_TRUE(object.InsertValue("missing", ValuePtr(), false));
    EXPECT_EQ(Text(object), "{\"copied\":3}");
    EXPECT_TRUE(object.Erase("copied"));
    EXPECT_FALSE(object.Erase("copied"));
    EXPECT_TRUE(object.Empty());
}

TEST(JsonObject, OrderedObjectKeepsFirstInsertionPlace) {
    JsonObject object(true);
    for (const char* key : {"a", "b", "c"})
        object.InsertInteger(key, 1LL, false);
    object.InsertString("b", "x", false, false);
    EXPECT_EQ(Text(object), "{\"a\":1,\"b\":\"x\",\"c\":1}");
    object.Erase("b");
    object.InsertInteger("d", 4LL, false);
    EXPECT_EQ(KeysByForEach(object), (std::vector<std::string>{"a", "c", "d"}));
    object.InsertInteger("b", 5LL, false); // re-inserting an erased key puts it at the end
    EXPECT_EQ(Text(object), "{\"a\":1,\"c\":1,\"d\":4,\"b\":5}");
}

TEST(JsonObject, TooManyGapsFallBackToMapOrder) {
    // Of ten members k0..k9 the first `erased` go; the counter stays at 10, and the object
    // keeps its order while 10 <= 2 * size. Unordered objects always follow the map.
    for (int erased : {0, 5, 6, 9}) {
        SCOPED_TRACE(erased);
        JsonObject object(true);
        std::vector<std::string> inserted;
        for (int i = 0; i < 10; ++i) {
            inserted.push_back("k" + std::to_string(i));
            object.InsertInteger(inserted.back(), static_cast<long long>(i), false);
        }
        for (int i = 0; i < erased; ++i)
            object.Erase(inserted[i]);
        inserted.erase(inserted.begin(), inserted.begin() + erased);
        EXPECT_EQ(object.GetNextSequence(), 10u);
        const std::vector<std::string> expected = erased <= 5 ? inserted : KeysOfMap(object);
        EXPECT_EQ(KeysByForEach(object), expected);
        EXPECT_EQ(Text(object), CompactIn(object, expected));
    }
    JsonObject unordered;
    for (const char* key : {"a", "b", "c", "d", "e"})
        unordered.InsertBool(key, true, false);
    EXPECT_EQ(KeysByForEach(unordered), KeysOfMap(unordered));
    EXPECT_EQ(Text(unordered), CompactIn(unordered, KeysOfMap(unordered)));
}

// The order members print in (without the keep-order flag), and MessagePack always writes in,
// is a std::unordered_map's with std::hash for the same history; keys that all share one hash
// value, as a flooding attacker would send, keep it too.
TEST(JsonObject, MapOrderIsTheStandardMapsForAnyKeys) {
    struct Case {
        const char* fName;
        std::vector<std::string> fKeys;
    };
    std::vector<std::string> plain;
    for (int i = 0; i < 300; ++i) plain.push_back("key" + std::to_string(i * 7919 % 1000));
    const Case cases[] = {{"plain keys", plain},
                          {"keys with one std::hash value", json_test::MakeCollidingKeys(300, 3)}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fName);
        std::unordered_map<std::string, int> map;
        std::string text = "{";
        for (size_t i = 0; i < c.fKeys.size(); ++i) {
            map.emplace(c.fKeys[i], 0);
            text += (i ? ",\"" : "\"") + c.fKeys[i] + "\":0";
        }
        text += "}";
        std::vector<std::string> expected;
        for (const auto& member : map) expected.push_back(member.first);
        ParserContext ctx;
        const JsonAutoRefPtr<JsonObject> object = JsonObject::ReadFromString(text, &ctx);
        ASSERT_TRUE(object) << ctx.fError;
        EXPECT_EQ(KeysByForEach(*object), expected);
        EXPECT_EQ(Text(*object), CompactIn(*object, expected));
        // Erasing every other key, in order, leaves the map's order of the rest.
        for (size_t i = 0; i < c.fKeys.size(); i += 2) {
            object->Erase(c.fKeys[i]);
            map.erase(c.fKeys[i]);
        }
        expected.clear();
        for (const auto& member : map) expected.push_back(member.first);
        EXPECT_EQ(KeysByForEach(*object), expected);
        const ValuePtr copy = JsonValue::Copy(*object); // copies keep the order too
        EXPECT_EQ(KeysByForEach(static_cast<const JsonObject&>(*copy)), expected);
    }
}

TEST(JsonObject, ReadsByKey) {
    ValuePtr value = JsonValue::ReadFromString(R"({"s":"text","i":42,"r":2.5,"t":true,"o":{},"a":[]})", nullptr, nullptr);
    const auto& object = static_cast<const JsonObject&>(*value);
    // the scalar reads convert like GetAs*; a missing key reads as empty
    struct Row { const char* fKey; std::string fString; long long fInteger; double fReal; bool fBool, fIsObject, fIsArray; };
    const Row rows[] = {
        {"r", "2.5", 2, 2.5, true, false, false},
        {"o", "{}", 0, 0.0, false, true, false},
        {"a", "[]", 0, 0.0, false, false, true},
        {"missing", "", 0, 0.0, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fKey);
        EXPECT_EQ(object.KeyValAsString(row.fKey), row.fString);
        EXPECT_EQ(object.KeyValAsInteger(row.fKey), row.fInteger);
        EXPECT_EQ(object.KeyValAsReal(row.fKey), row.fReal);
        EXPECT_EQ(object.KeyValAsBool(row.fKey), row.fBool);
        EXPECT_EQ(static_cast<bool>(object.KeyValAsObject(row.fKey)), row.fIsObject);
        EXPECT_EQ(static_cast<bool>(object.KeyValAsArray(row.fKey)), row.fIsArray);
        EXPECT_EQ(static_cast<bool>(object.At(row.fKey)), std::string(row.fKey) != "missing");
    }
    EXPECT_EQ(object.KeyValAsObject("o")->GetUseCount(), 2u);
    object.ForEach(nullptr); // an empty callback is ignored
}

TEST(JsonObject, CopiesAreDeepAndIndependent) {
    JsonObject original(true);
    original.InsertInteger("a", 1LL, false);
    original.InsertInteger("gone", 0LL, false);
    original.InsertValueInternal("inner", new JsonObject(), false);
    original.Erase("gone");
    original.KeyValAsObject("inner")->InsertInteger("x", 1LL, false);

    JsonObject copy(original);
    EXPECT_TRUE(copy.GetKeepOrder());
    EXPECT_EQ(copy.GetNextSequence(), 3u);
    copy.KeyValAsObject("inner")->InsertInteger("x", 2LL, false);
    copy.InsertInteger("b", 2LL, false);
    EXPECT_EQ(Text(original), "{\"a\":1,\"inner\":{\"x\":1}}");
    EXPECT_EQ(Text(copy), "{\"a\":1,\"inner\":{\"x\":2},\"b\":2}");

    JsonObject assigned;
    assigned.InsertInteger("z", 0LL, false);
    assigned = original;
    assigned.KeyValAsObject("inner")->Erase("x");
    EXPECT_EQ(Text(original), "{\"a\":1,\"inner\":{\"x\":1}}");
    JsonObject& self = assigned;
    assigned = self;
    EXPECT_EQ(Text(assigned), "{\"a\":1,\"inner\":{}}");

    JsonObject moved;
    moved = std::move(assigned);
    EXPECT_TRUE(moved.GetKeepOrder());
    EXPECT_EQ(moved.GetNextSequence(), 3u);
    EXPECT_EQ(Text(moved), "{\"a\":1,\"inner\":{}}");
}

} // namespace
