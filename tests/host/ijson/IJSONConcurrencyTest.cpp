// Threads reading one document through their own wrappers while error states change, and
// threads sharing one wrapper's error state; plus concurrent first use of the imported-function
// cache. Meant to run clean under ThreadSanitizer. The document holds no reals: a real that
// still holds its source text is converted in place on first use, which is a write.
#include "IjsonFakes.h"

#include "host/ijson/ImportedFunctions.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace Virelo;
using namespace IjsonFakes;
using JSON::JSONWrapper;

TEST(IJSONConcurrency, ReadersShareATreeButNotTheirErrorStates) {
    const char* const text =
        R"({"n":1,"s":"text","list":[1,2,3,{"deep":[true,null]}],"o":{"k":"v"}})";
    const JsonAutoRefPtr<JsonValue> root = JSONWrapper::ToVJson(JSONWrapper::Create(text).Get());
    ASSERT_TRUE(root);
    const AutoRefPtr<IJSON> shared(JSONWrapper::FromVJson(root).Detach());
    constexpr int kThreads = 8;
    constexpr int kRounds = 300;
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            AutoRefPtr<IJSON> own(JSONWrapper::FromVJson(root).Detach());
            int& failed = failures[t];
            for (int round = 0; round < kRounds; ++round) {
                int n = 0;
                failed += own->Interface_GetInt("n", &n) != 1 || n != 1 ||
                          own->Interface_GetErrorStatus() != 0;
                failed += own->Interface_GetInt("missing", &n) != 0 ||
                          Outcome(*own) != "1:Could not find member 'missing'";
                AutoRefPtr<IJSON> deep(own->Interface_FindNodePath("list/3/deep/0"));
                failed += !deep || deep->Interface_IsBool() != 1;
                failed += Text(*own) != text;
                failed += own->Interface_Equals(shared.Get()) != 1;
                // The shared wrapper's state changes under everyone; each read is whole.
                if (t % 2) {
                    shared->Interface_At(99);
                } else {
                    shared->Interface_GetString("s", nullptr, 0, nullptr);
                }
                const std::string outcome = Outcome(*shared);
                failed += outcome != "0:" && outcome != "2:Index is out of bounds";
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (int t = 0; t < kThreads; ++t)
        EXPECT_EQ(failures[t], 0) << "thread " << t;
}

TEST(IJSONConcurrency, ImportedFunctionCacheServesConcurrentContexts) {
    constexpr int kThreads = 4;
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&failures, t] {
            // Each context has its own host interface id, so the cached handle keeps changing.
            Context first, second;
            first.ServeJsonFunctions();
            second.ServeJsonFunctions();
            for (int round = 0; round < 100; ++round) {
                Context& context = round % 2 ? first : second;
                AutoRefPtr<IUserDefinedType> object = JSON::JSON_CreateEmptyObject(&context);
                failures[t] += !JSONObj::IsJSONObj(object.Get()) || !context.fReports.empty();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (int t = 0; t < kThreads; ++t)
        EXPECT_EQ(failures[t], 0) << "thread " << t;
}
