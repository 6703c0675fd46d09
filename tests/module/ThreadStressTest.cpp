// Many host threads use one module at once, as the THREADSAFE type allows: eight threads run
// reading calls on shared documents (whose reals still hold their text, so the first reads
// convert them concurrently) and changing calls on copies of their own. Run under
// ThreadSanitizer in CI; every thread must see the same results as a lone thread.
#include "tests/host/FakeHost.h"
#include "tests/support/ModuleExports.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using FakeHost::Context;
using FakeHost::Variant;
using Virelo::AutoRefPtr;
using Virelo::IVariant;

AutoRefPtr<Variant> Call(ExportedFunction function, std::vector<IVariant*> arguments, Context& context) {
    AutoRefPtr<Variant> result(new Variant(Context::kJsonTypeId, nullptr));
    EXPECT_EQ(function(static_cast<unsigned int>(arguments.size()), arguments.data(), result.Get(),
                       nullptr, &context),
              0u);
    return result;
}

AutoRefPtr<Variant> Parse(const std::string& text, Context& context) {
    Variant source(text);
    return Call(virelo_module_StringToJson, {&source}, context);
}

std::string Text(Variant& json, Context& context) {
    return Call(virelo_module_JsonToString, {&json}, context)->Text();
}

} // namespace

TEST(ThreadStress, SharedReadsAndPrivateChanges) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 300;
    const std::string document =
        R"({"a":[1.50,2.25,{"r":3.125,"s":"text"}],"r":0.1,"n":-7,"deep":{"x":[[1.5e1]]}})";
    Context setup;
    AutoRefPtr<Variant> shared = Parse(document, setup);
    AutoRefPtr<Variant> twin = Parse(document, setup);
    ASSERT_TRUE(shared->Object() && twin->Object());

    std::vector<std::thread> threads;
    std::vector<int> failures(kThreads, 0);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            Context context;
            Variant key(std::string("r")), path(std::string("a/2/r")), number(static_cast<double>(t));
            Variant newPath(std::string("deep/y")), text(std::string("mine"));
            for (int round = 0; round < kRounds; ++round) {
                // Reads share the documents: the first ones convert the reals' texts.
                // A real prints its text until converted, then by its digit count: either way
                // the text reads back as the same document.
                AutoRefPtr<Variant> reread = Parse(Text(*shared, context), context);
                const bool sameText = Call(virelo_module_Equals, {reread.Get(), twin.Get()}, context)->Interface_GetBoolean();
                const bool sameNumber =
                    Call(virelo_module_GetAsNumber, {shared.Get(), &key}, context)->Interface_GetNumber() == 0.1;
                const bool sameNode =
                    Text(*Call(virelo_module_FindNodePath, {shared.Get(), &path}, context), context) == "3.125";
                const bool equal = Call(virelo_module_Equals, {shared.Get(), twin.Get()}, context)->Interface_GetBoolean();
                const bool encoded = Call(virelo_module_JsonToMsgPack, {shared.Get()}, context)->Data() != nullptr;
                // Changes work on copies of their own.
                AutoRefPtr<Variant> mine = Call(virelo_module_SetNumber, {shared.Get(), &key, &number}, context);
                mine = Call(virelo_module_SetNodePathString, {mine.Get(), &newPath, &text}, context);
                const bool changed = Text(*mine, context).find("\"y\":\"mine\"") != std::string::npos;
                if (!(sameText && sameNumber && sameNode && equal && encoded && changed)) ++failures[t];
            }
            if (!context.fReports.empty()) ++failures[t];
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
    EXPECT_EQ(Text(*shared, setup), R"({"a":[1.5,2.25,{"r":3.125,"s":"text"}],"r":0.1,"n":-7,"deep":{"x":[[15.0]]}})");
}
