// JsonArray: appends and their ownership, changes by index, reads, iteration with and without
// error collection, equality and deep copies.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

using namespace json_test;

JsonArray Numbers(int count) {
    JsonArray array;
    for (int i = 0; i < count; ++i)
        array.AddInteger(i);
    return array;
}

ValuePtr Nine() { return ValuePtr(new JsonInteger(9LL)); }

TEST(JsonArray, AppendsAndOwnership) {
    JsonArray array;
    const ValuePtr shared(new JsonInteger(1LL));
    array.AddValue(shared); // adds a reference
    EXPECT_EQ(shared->GetUseCount(), 2u);
    ValuePtr given(new JsonInteger(2LL));
    JsonValue* raw = given.Get();
    array.AddValue(std::move(given)); // takes it over
    EXPECT_EQ(raw->GetUseCount(), 1u);
    const JsonInteger local(3LL);
    array.AddValue(local); // deep copy
    EXPECT_NE(array.Elements().back(), &local);
    array.AddValueInternal(new JsonInteger(4LL));
    array.AddString("s", nullptr, false);
    array.AddReal(0.5);
    array.AddBool(false);
    array.AddNull();
    array.AddValue(ValuePtr()); // null pointers append nothing
    array.AddValueInternal(nullptr);
    EXPECT_EQ(Text(array), "[1,2,3,4,\"s\",0.5,false,null]");

    // AddString checks the text unless trusted; refused text appends nothing
    bool ok = true;
    array.AddString("ab\xC3", &ok, false);
    EXPECT_FALSE(ok);
    array.AddString("ab\xC3", &ok, true);
    EXPECT_TRUE(ok);
    EXPECT_EQ(array.Size(), 9u);
    EXPECT_EQ(array.AtIndexAsString(8), "ab\xC3");
}

TEST(JsonArray, AppendGrowthRule) {
    // Two elements are held in place; the third raises the room to ten at once, then it
    // doubles.
    const size_t expected[] = {2, 2, 10, 10, 10, 10, 10, 10, 10, 10, 20};
    JsonArray array;
    for (size_t capacity : expected) {
        array.AddInteger(1);
        EXPECT_EQ(array.Elements().capacity(), capacity) << array.Size();
    }
}

TEST(JsonArray, ChangesByIndex) {
    struct Row {
        const char* fName;
        int fSize; // of the array 0, 1, 2, ...
        std::function<void(JsonArray&)> fChange;
        std::string fResult;
    };
    const Row rows[] = {
        // InsertValueAtIndex inserts before an existing index and never appends
        {"insert at 0", 3, [](JsonArray& a) { a.InsertValueAtIndex(0, Nine()); }, "[9,0,1,2]"},
        {"insert at 2", 3, [](JsonArray& a) { a.InsertValueAtIndex(2, Nine()); }, "[0,1,9,2]"},
        {"insert at size", 3, [](JsonArray& a) { a.InsertValueAtIndex(3, Nine()); }, "[0,1,2]"},
        {"insert into empty", 0, [](JsonArray& a) { a.InsertValueAtIndex(0, Nine()); }, "[]"},
        {"insert null", 3, [](JsonArray& a) { a.InsertValueAtIndex(0, ValuePtr()); }, "[0,1,2]"},
        // SetValueAtIndex replaces; null removes only the last element, elsewhere it puts a null
        {"set 1", 3, [](JsonArray& a) { a.SetValueAtIndex(1, Nine()); }, "[0,9,2]"},
        {"set 1 null", 3, [](JsonArray& a) { a.SetValueAtIndex(1, ValuePtr()); }, "[0,null,2]"},
        {"set last null", 3, [](JsonArray& a) { a.SetValueAtIndex(2, ValuePtr()); }, "[0,1]"},
        {"set only null", 1, [](JsonArray& a) { a.SetValueAtIndexInternal(0, nullptr); }, "[]"},
        {"set at size", 3, [](JsonArray& a) { a.SetValueAtIndex(3, Nine()); }, "[0,1,2]"},
        {"erase at 0", 3, [](JsonArray& a) { a.EraseAtIndex(0); }, "[1,2]"},
        {"erase at size", 3, [](JsonArray& a) { a.EraseAtIndex(3); }, "[0,1,2]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        JsonArray array = Numbers(row.fSize);
        row.fChange(array);
        EXPECT_EQ(Text(array), row.fResult);
    }

    JsonArray array = Numbers(3); // references: replacing and erasing release
    const ValuePtr value(new JsonNull());
    array.InsertValueAtIndex(0, value);
    array.SetValueAtIndex(1, value);
    EXPECT_EQ(value->GetUseCount(), 3u);
    array.SetValueAtIndex(0, Nine());
    EXPECT_EQ(value->GetUseCount(), 2u);
    value->AddRef(); // an Internal set outside the array releases what it was given
    array.SetValueAtIndexInternal(10, value.Get());
    EXPECT_EQ(value->GetUseCount(), 2u);
    array.EraseAtIndex(1);
    EXPECT_EQ(value->GetUseCount(), 1u);
}

TEST(JsonArray, EraseRange) {
    struct Row { unsigned long fFirst, fCount, fRemoved; std::string fResult; };
    const Row rows[] = {
        {1, 100, 2, "[0]"},
        {3, 1, 0, "[0,1,2]"},
        {0, 0, 0, "[0,1,2]"},
        {1, 1, 1, "[0,2]"},
        {0, JsonArray::npos, 3, "[]"},
        {JsonArray::npos, 1, 0, "[0,1,2]"},
        {static_cast<unsigned long>(JsonInteger::sMaxInt64), 1, 0, "[0,1,2]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.fFirst << ", " << row.fCount);
        JsonArray array = Numbers(3);
        EXPECT_EQ(array.Erase(row.fFirst, row.fCount), row.fRemoved);
        EXPECT_EQ(Text(array), row.fResult);
    }
}

TEST(JsonArray, ReadsByIndex) {
    ValuePtr value = JsonValue::ReadFromString(R"(["7",-2.5,true,{},[],null])", nullptr, nullptr);
    const auto& array = static_cast<const JsonArray&>(*value);
    // the scalar reads convert like GetAs*; past the end everything is empty
    struct Row { unsigned long fIndex; std::string fString; long long fInteger; double fReal; bool fBool, fIsObject, fIsArray; };
    const Row rows[] = {
        {0, "7", 7, 7.0, true, false, false},
        {3, "{}", 0, 0.0, false, true, false},
        {4, "[]", 0, 0.0, false, false, true},
        {5, "null", 0, 0.0, false, false, false},
        {6, "", 0, 0.0, false, false, false},
        {JsonArray::npos, "", 0, 0.0, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fIndex);
        EXPECT_EQ(array.AtIndexAsString(row.fIndex), row.fString);
        EXPECT_EQ(array.AtIndexAsInteger(row.fIndex), row.fInteger);
        EXPECT_EQ(array.AtIndexAsReal(row.fIndex), row.fReal);
        EXPECT_EQ(array.AtIndexAsBool(row.fIndex), row.fBool);
        EXPECT_EQ(static_cast<bool>(array.AtIndexAsObject(row.fIndex)), row.fIsObject);
        EXPECT_EQ(static_cast<bool>(array.AtIndexAsArray(row.fIndex)), row.fIsArray);
        EXPECT_EQ(static_cast<bool>(array.AtIndex(row.fIndex)), row.fIndex < 6);
    }
    EXPECT_EQ(array.AtIndex(3)->GetUseCount(), 2u);
}

TEST(JsonArray, ForEachRereadsTheSize) {
    JsonArray array = Numbers(4);
    std::vector<unsigned long> visited;
    array.ForEach([&](unsigned long index, const ValuePtr& element) {
        visited.push_back(index);
        EXPECT_EQ(element->GetAsInteger(), static_cast<long long>(index));
        if (index == 0) array.Erase(2, 2); // shortening is tolerated
    });
    EXPECT_EQ(visited, (std::vector<unsigned long>{0, 1}));
    visited.clear();
    array.ForEach([&](unsigned long index, const ValuePtr&) {
        visited.push_back(index);
        if (array.Size() < 4) array.AddInteger(static_cast<long long>(array.Size()));
    });
    EXPECT_EQ(visited, (std::vector<unsigned long>{0, 1, 2, 3}));
    array.ForEach(nullptr);
}

TEST(JsonArray, ForEachWithUserDataCollectsUpToTwentyErrors) {
    using Callback = std::function<void(unsigned long, const JsonValue*, void*, bool&, std::string*)>;
    // item i fails (flag) when i is in fFlag, reports "bad i" when i is in fMessage
    auto fail = [](std::vector<unsigned long> flag, std::vector<unsigned long> message) {
        return Callback([=](unsigned long i, const JsonValue* element, void* user, bool& ok, std::string* e) {
            ++*static_cast<int*>(user);
            EXPECT_EQ(element->GetAsInteger(), static_cast<long long>(i));
            for (unsigned long f : flag) if (f == i) ok = false;
            for (unsigned long m : message) if (m == i) *e = "bad " + std::to_string(i);
        });
    };
    std::vector<unsigned long> all(25);
    for (unsigned long i = 0; i < 25; ++i)
        all[i] = i;
    std::string twenty; // items are numbered from 1 in messages
    for (int i = 1; i <= 20; ++i)
        twenty += (i > 1 ? ", Item '" : "Item '") + std::to_string(i) + "' has error 'bad " + std::to_string(i - 1) + "'";
    struct Row {
        const char* fName;
        int fSize;
        Callback fCallback;
        std::string fErrorsBefore;
        bool fResult;
        std::string fErrorsAfter;
    };
    const Row rows[] = {
        {"all fine", 3, fail({}, {}), "", true, ""},
        {"flag only", 3, fail({1}, {}), "", false, ""},
        {"message only", 3, fail({}, {2}), "", true, "Item '3' has error 'bad 2'"},
        {"appended to earlier text", 3, fail({}, {0}), "earlier", true, "earlier, Item '1' has error 'bad 0'"},
        {"a flag once cleared stays cleared", 3, fail({0}, {}), "", false, ""},
        {"twenty messages, every item called", 25, fail(all, all), "", false, twenty},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        int calls = 0;
        std::string errors = row.fErrorsBefore;
        EXPECT_EQ(Numbers(row.fSize).ForEachWithUserData(row.fCallback, &calls, &errors), row.fResult);
        EXPECT_EQ(errors, row.fErrorsAfter);
        EXPECT_EQ(calls, row.fSize); // never stops early
        EXPECT_EQ(Numbers(row.fSize).ForEachWithUserData(row.fCallback, &calls, nullptr), row.fResult);
    }
    std::string errors;
    EXPECT_TRUE(JsonArray().ForEachWithUserData(nullptr, nullptr, &errors));
    EXPECT_THROW(Numbers(1).ForEachWithUserData(nullptr, nullptr, &errors), std::bad_function_call);
}

TEST(JsonArray, CopiesAreDeepAndIndependent) {
    JsonArray original = Numbers(2);
    original.AddValueInternal(new JsonArray(Numbers(1)));
    JsonArray copy(original);
    EXPECT_TRUE(copy.IsEqual(original));
    copy.AtIndexAsArray(2)->AddInteger(5);
    copy.AddNull();
    JsonArray assigned = Numbers(5);
    assigned = original;
    assigned.AtIndexAsArray(2)->EraseAtIndex(0);
    EXPECT_EQ(Text(original), "[0,1,[0]]");
    EXPECT_EQ(Text(copy), "[0,1,[0,5],null]");
    EXPECT_EQ(Text(assigned), "[0,1,[]]");
    JsonArray moved;
    moved = std::move(copy);
    EXPECT_EQ(Text(moved), "[0,1,[0,5],null]");
}

} // namespace
