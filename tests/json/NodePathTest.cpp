// Node paths: slash-separated steps through objects, arrays and compiled objects.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace json_test;

ValuePtr Read(const std::string& text, const JsonCompiledObjectContext* keys = nullptr) {
    ValuePtr value = JsonValue::ReadFromString(text, nullptr, keys);
    EXPECT_TRUE(value) << text;
    return value;
}

// The compact text of the node a path names, or "<none>".
std::string At(const JsonValue& root, const std::string& path) {
    ValuePtr node = root.NodeFromPath(path);
    return node ? node->GetAsString() : "<none>";
}

struct PathRow { const char* fPath; const char* fNode; };

TEST(NodePath, StepsThroughObjectsAndArrays) {
    ValuePtr doc = Read(
        R"({"a":{"b":[10,20],"":{"c":1},"s":"text","n":3},"arr":[5,[6,7]],"d":[0,1,2,3,4,5,6,7,8,9]})");
    const PathRow rows[] = {
        {"a/b/1", "20"},
        {"/a/b/1", "20"},    // one leading slash is dropped
        {"a/b/1/", "20"},    // a trailing slash is ignored
        {"a/b/2", "<none>"}, // past the end
        {"a/b/x", "<none>"},
        {"a//c", "1"},      // an empty step is the empty key in an object
        {"//a", "<none>"},  // only one leading slash goes: the first step is empty
        {"A", "<none>"},    // keys compare byte for byte
        {"a /b", "<none>"}, // no trimming
        {"arr/0abc", "5"},  // the leading digits make the index
        {"d/007", "7"},     // decimal, whatever the leading zeros
        {"d/010", "<none>"},
        {"d/0x9", "0"},
        {"arr/001/01", "7"},
        {"arr/-0", "<none>"}, // a sign in front fails
        {"arr/ 0", "<none>"},
        {"arr//0", "<none>"}, // an empty step in an array
        {"arr/", "[5,[6,7]]"},
        {"a/s/0", "<none>"}, // steps into scalars find nothing
        {"a/b/1/c", "<none>"},
        {"arr/2147483647", "<none>"}, // the largest index that converts
    };
    for (const PathRow& r : rows) {
        SCOPED_TRACE(r.fPath);
        EXPECT_EQ(At(*doc, r.fPath), r.fNode);
    }
}

TEST(NodePath, EmptyPathNamesTheStartWithANewReference) {
    ValuePtr doc = Read(R"({"a":[1]})");
    for (const char* path : {"", "/"}) {
        ValuePtr node = doc->NodeFromPath(path);
        EXPECT_EQ(node.Get(), doc.Get()) << path;
        EXPECT_EQ(doc->GetUseCount(), 2u);
    }
    JsonValue* inner = doc->GetSubNode("a"); // adds no reference, unlike NodeFromPath
    EXPECT_EQ(inner->GetUseCount(), 1u);
    ValuePtr node = doc->NodeFromPath("a");
    EXPECT_EQ(node.Get(), inner);
    EXPECT_EQ(inner->GetUseCount(), 2u);
    ValuePtr scalar = Read("true");
    EXPECT_EQ(scalar->NodeFromPath("").Get(), scalar.Get());
    EXPECT_FALSE(scalar->NodeFromPath("x"));
}

TEST(NodePath, CompiledObjectsAreSteppedByKey) {
    JsonCompiledObjectContext point;
    point.AddKey("x", 0, nullptr);
    JsonCompiledObjectContext keys;
    keys.AddKey("pos", JsonCompiledObjectContext::kCompiledObject, &point);
    keys.AddKey("list", JsonCompiledObjectContext::kArray, &point);
    keys.AddKey("unset", 0, nullptr);
    ValuePtr doc = Read(R"({"pos":{"x":1},"list":[{"x":2}],"zz":3})", &keys);
    keys.AddKey("late", 0, nullptr); // no slot in objects made before
    const PathRow rows[] = {
        {"pos/x", "1"},      {"/list/0/x", "2"}, {"list/0", R"({"x":2})"}, {"zz", "<none>"},
        {"unset", "<none>"}, {"late", "<none>"}, {"0", "<none>"},          {"pos/y", "<none>"},
    };
    for (const PathRow& r : rows) {
        SCOPED_TRACE(r.fPath);
        EXPECT_EQ(At(*doc, r.fPath), r.fNode);
    }
}

TEST(NodePath, ArrayIndexBeyondIntRangeThrows) {
    ValuePtr doc = Read(R"({"arr":[1],"99999999999":2})");
    for (const char* path : {"arr/99999999999", "arr/2147483648", "arr/99999999999abc"}) {
        SCOPED_TRACE(path);
        EXPECT_THROW(doc->NodeFromPath(path), std::out_of_range);
    }
    // Only array steps convert: an object takes the digits as a key.
    EXPECT_EQ(At(*doc, "99999999999"), "2");
}

} // namespace
