// ObjectRef, ArrayRef and CompObjectRef: assignments through container[index].
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonRefs.h"
#include "json/JsonScalar.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>

namespace {

using namespace json_test;
using ArrayPtr = JsonAutoRefPtr<JsonArray>;
using ObjectPtr = JsonAutoRefPtr<JsonObject>;
using CompiledPtr = JsonAutoRefPtr<JsonCompiledObject>;

ArrayPtr ReadArray(const std::string& text) { return JsonArray::ReadFromString(text, nullptr, nullptr); }

TEST(ArrayRef, AssignmentsNeverGrowAndNullRemovesOnlyTheLast) {
    using A = JsonArray;
    struct Row { const char* fName; std::function<void(A&)> fOp; const char* fResult; };
    const Row rows[] = {
        {"null at the last index removes it", [](A& a) { a[2] = ValuePtr(); }, "[1,2]"},
        {"null inside becomes JSON null", [](A& a) { a[0] = ValuePtr(); }, "[null,2,3]"},
        {"null past the end", [](A& a) { a[3] = ValuePtr(); }, "[1,2,3]"},
        {"number past the end", [](A& a) { a[3] = 9LL; }, "[1,2,3]"},
        {"string past the end", [](A& a) { a[7] = std::string("x"); }, "[1,2,3]"},
        {"long long", [](A& a) { a[1] = -9LL; }, "[1,-9,3]"},
        {"double", [](A& a) { a[1] = 2.0; }, "[1,2.0,3]"},
        {"string", [](A& a) { a[1] = std::string("x"); }, R"([1,"x",3])"},
        {"bad UTF-8 stores empty", [](A& a) { a[1] = std::string("a\xFF"); }, R"([1,"",3])"},
        {"move from another element", [](A& a) { a[0] = a[2]; }, "[3,2,3]"},
        {"copy from another element", [](A& a) { ArrayRef from = a[1]; a[0] = from; }, "[2,2,3]"},
        {"copy of a missing element removes the last", [](A& a) { ArrayRef none = a[5]; a[2] = none; }, "[1,2]"},
        // self assignment does not store the remembered 3
        {"self assignment", [](A& a) { ArrayRef ref = a[2]; a[2] = 9LL; ArrayRef& alias = ref; ref = alias; }, "[1,2,9]"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        ArrayPtr array = ReadArray("[1,2,3]");
        r.fOp(*array);
        EXPECT_EQ(Text(array), r.fResult);
    }
}

TEST(ArrayRef, SharesValuesAndHoldsItsArray) {
    ValuePtr shared(new JsonTrue());
    ArrayPtr array = ReadArray("[1,2]");
    JsonArray* raw = array.Get();
    ArrayRef ref = (*array)[0];
    array = nullptr; // the reference keeps the array alive
    EXPECT_EQ(raw->GetUseCount(), 1u);
    ref = shared;
    EXPECT_EQ(raw->AtIndex(0).Get(), shared.Get());
    EXPECT_EQ(shared->GetUseCount(), 2u);
    EXPECT_EQ(Text(ref.Current()), "1"); // not updated by the assignment
    ArrayRef none(nullptr, 0);
    none = 5LL; // nothing to store into; the made value is released
    EXPECT_FALSE(none.Current());
}

TEST(ObjectRef, AssignmentsInsertReplaceAndErase) {
    using O = JsonObject;
    struct Row { const char* fName; std::function<void(O&)> fOp; const char* fResult; };
    const Row rows[] = {
        {"replace keeps the place", [](O& o) { o["a"] = 5LL; }, R"({"a":5,"b":2})"},
        {"new key goes last", [](O& o) { o["c"] = 3; }, R"({"a":1,"b":2,"c":3})"},
        {"null erases", [](O& o) { o["a"] = ValuePtr(); }, R"({"b":2})"},
        {"null for an absent key", [](O& o) { o["zz"] = ValuePtr(); }, R"({"a":1,"b":2})"},
        {"string", [](O& o) { o["a"] = std::string("x"); }, R"({"a":"x","b":2})"},
        {"bad UTF-8 text", [](O& o) { o["a"] = std::string("\xFF"); }, R"({"a":1,"b":2})"},
        // a key that is not valid UTF-8 makes every form a no-op
        {"bad key, number", [](O& o) { o["\xC3"] = 5LL; }, R"({"a":1,"b":2})"},
        {"bad key, string", [](O& o) { o["\xC3"] = std::string("x"); }, R"({"a":1,"b":2})"},
        {"move from another member", [](O& o) { o["c"] = o["b"]; }, R"({"a":1,"b":2,"c":2})"},
        {"copy of an absent member erases", [](O& o) { ObjectRef none = o["zz"]; o["a"] = none; }, R"({"b":2})"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        ObjectPtr object(new JsonObject(true));
        object->InsertInteger("a", 1LL, false);
        object->InsertInteger("b", 2LL, false);
        r.fOp(*object);
        EXPECT_EQ(Text(object), r.fResult);
        EXPECT_EQ(object->GetNextSequence(), std::string(r.fResult).find("\"c\"") != std::string::npos ? 3u : 2u);
    }
    ObjectRef none(nullptr, "a");
    none = 1LL;
    EXPECT_FALSE(none.Current());
}

TEST(ElementRefs, UnsignedFlagOnlyAboveTheSignedRange) {
    struct Row { unsigned long long fValue; bool fUnsigned; };
    const Row rows[] = {{5, false}, {LLONG_MAX, false}, {1ULL << 63, true}, {ULLONG_MAX, true}};
    JsonCompiledObjectContext keys;
    keys.AddKey("k", 0, nullptr);
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fValue);
        ObjectPtr object(new JsonObject());
        ArrayPtr array = ReadArray("[0]");
        CompiledPtr compiled(new JsonCompiledObject(&keys));
        (*object)["k"] = r.fValue;
        (*array)[0] = r.fValue;
        (*compiled)[0] = r.fValue;
        for (const ValuePtr& v : {object->At("k"), array->AtIndex(0), compiled->At(0)}) {
            ASSERT_TRUE(v && v->GetType() == JsonValue::eJsonInteger);
            EXPECT_EQ(static_cast<const JsonInteger&>(*v).IsUnsigned(), r.fUnsigned);
            EXPECT_EQ(static_cast<const JsonInteger&>(*v).Bits(), r.fValue);
        }
    }
    ArrayPtr array = ReadArray("[0,0]"); // signed forms never set the flag; int is sign-extended
    (*array)[0] = -1;
    (*array)[1] = -1LL;
    for (unsigned long i = 0; i < 2; ++i) {
        const auto& integer = static_cast<const JsonInteger&>(*array->AtIndex(i));
        EXPECT_FALSE(integer.IsUnsigned());
        EXPECT_EQ(integer.Bits(), ULLONG_MAX);
    }
}

TEST(CompObjectRef, AssignmentsKeepTheSetCount) {
    JsonCompiledObjectContext keys;
    for (const char* k : {"a", "b", "c"})
        keys.AddKey(k, 0, nullptr);
    CompiledPtr object(new JsonCompiledObject(&keys));
    using C = JsonCompiledObject;
    struct Row { const char* fName; std::function<void(C&)> fOp; unsigned long fCount; const char* fResult; };
    const Row rows[] = {
        {"first value", [](C& o) { o[0] = 1LL; }, 1, R"({"a":1})"},
        {"replace", [](C& o) { o[0] = 2.5; }, 1, R"({"a":2.5})"},
        {"null into empty slot", [](C& o) { o[1] = ValuePtr(); }, 1, R"({"a":2.5})"},
        {"string", [](C& o) { o[1] = std::string("x"); }, 2, R"({"a":2.5,"b":"x"})"},
        {"bad UTF-8 text stores nothing", [](C& o) { o[1] = std::string("\xFF"); }, 2, R"({"a":2.5,"b":"x"})"},
        {"out of range", [](C& o) { o[3] = 7LL; }, 2, R"({"a":2.5,"b":"x"})"},
        {"out of range string", [](C& o) { o[3] = std::string("y"); }, 2, R"({"a":2.5,"b":"x"})"},
        {"null empties", [](C& o) { o[0] = ValuePtr(); }, 1, R"({"b":"x"})"},
        {"move from another slot", [](C& o) { o[2] = o[1]; }, 2, R"({"b":"x","c":"x"})"},
        {"copy of an empty slot empties", [](C& o) { CompObjectRef none = o[0]; o[1] = none; }, 1, R"({"c":"x"})"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fName);
        r.fOp(*object);
        EXPECT_EQ(object->GetSetCount(), r.fCount);
        EXPECT_EQ(Text(object), r.fResult);
    }
    CompObjectRef none(nullptr, 0);
    none = 1LL;
    EXPECT_FALSE(none.Current());
}

} // namespace
