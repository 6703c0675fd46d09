// Documents nested a million levels deep go through every whole-tree operation on a thread
// whose stack is only 1 MiB, with the same bytes and messages as shallow documents.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonEquality.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>

namespace {

using namespace json_test;

constexpr int kDepth = 1000000;

// Runs `body` on a thread with a 1 MiB stack: a walk that recursed per level would overflow it.
void OnSmallStack(const std::function<void()>& body) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 1 << 20), 0);
    pthread_t thread;
    auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// kDepth containers around `leaf`: arrays, objects with key "k", or both in turn.
std::string Nested(const std::string& kind, const std::string& leaf, int depth = kDepth) {
    std::string text;
    text.reserve(static_cast<size_t>(depth) * 6 + leaf.size());
    for (int i = 0; i < depth; ++i) text += kind == "array" || (kind == "mixed" && i % 2) ? "[" : "{\"k\":";
    text += leaf;
    for (int i = depth - 1; i >= 0; --i) text += kind == "array" || (kind == "mixed" && i % 2) ? "]" : "}";
    return text;
}

} // namespace

TEST(DeepDocument, EveryWholeTreeOperationOnASmallStack) {
    for (const char* kind : {"array", "object", "mixed"}) {
        SCOPED_TRACE(kind);
        OnSmallStack([kind] {
            const std::string text = Nested(kind, "1.50");
            ParserContext ctx;
            ctx.fKeepOrder = true;
            ValuePtr value = JsonValue::ReadFromString(text, &ctx, nullptr);
            ASSERT_TRUE(value) << ctx.fError;
            EXPECT_EQ(Text(value), text);
            std::string pretty;
            value->AppendToStringPretty(pretty, "", "", 0);
            EXPECT_EQ(pretty.size(), std::string(kind) == "array" ? text.size() : text.size() + kDepth / (std::string(kind) == "mixed" ? 2 : 1));
            ValuePtr copy = JsonValue::Copy(*value);
            EXPECT_TRUE(*copy == *value);
            std::string bytes;
            ASSERT_TRUE(value->WriteToMsgPack(bytes));
            ValuePtr decoded = JsonValue::ReadFromMsgPack(bytes, nullptr, nullptr);
            ASSERT_TRUE(decoded);
            EXPECT_TRUE(*decoded == *value);
            std::string again;
            ASSERT_TRUE(decoded->WriteToMsgPack(again));
            EXPECT_EQ(again, bytes);
            std::string path;
            for (int i = 0; i < 1000; ++i) path += std::string(kind) == "array" || (std::string(kind) == "mixed" && i % 2) ? "0/" : "k/";
            EXPECT_TRUE(value->NodeFromPath(path));
        });
    }
}

TEST(DeepDocument, ErrorsKeepTheirShallowMessages) {
    OnSmallStack([] {
        // Arrays add nothing to a nested element's message; each object level adds its suffix.
        std::string text = Nested("array", "1");
        text.pop_back();
        ParserContext ctx;
        EXPECT_FALSE(JsonValue::ReadFromString(text, &ctx, nullptr));
        EXPECT_EQ(ctx.fError, "illegal array");
        std::string expected = "not a JSON value";
        for (int i = 0; i < 1000; ++i) expected += " while parsing a value";
        EXPECT_FALSE(JsonValue::ReadFromString(Nested("object", "x", 1000), &ctx, nullptr));
        EXPECT_EQ(ctx.fError, expected);
        const std::string bytes(kDepth, '\x91'); // a million one-element arrays, cut short
        EXPECT_FALSE(JsonValue::ReadFromMsgPack(bytes, &ctx, nullptr));
        EXPECT_EQ(ctx.fError, "unexpected end of input");
    });
}
