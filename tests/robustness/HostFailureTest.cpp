// Allocation failure behind the host faces. IJSON operations never throw: they give their
// undisturbed result, or their failure value with status Error and "std::bad_alloc". The JSON
// type's own operations (clone, order, deserialize) let std::bad_alloc through, as designed.
// Script functions never throw across their export: whatever a failure costs them, they
// return status 0, free everything and report nothing but "Error.JSON.Exception".
#include "tests/robustness/FailureInjection.h"

#include "tests/host/FakeHost.h"
#include "tests/support/ModuleExports.h"

#include "host/Data.h"
#include "host/JSONObj.h"
#include "host/ijson/JSONWrapper.h"
#include "json/JsonValue.h"

#include <functional>
#include <new>
#include <string>
#include <vector>


namespace {

using FailureInjection::FailEachAllocation;
using Virelo::AutoRefPtr;
using Virelo::IVariant;
using Virelo::JSONObj;
using Virelo::IJSON;
using Virelo::JSON::JSONWrapper;

const std::string kDocument =
    R"({"list":[1,2.50,"a text longer than any small-string buffer",true,null,{"b":{}}],)"
    R"("a key longer than any small-string buffer":{"k":[0.5,-1e5]}})";
const std::string kPath = "a key longer than any small-string buffer/k/0";

// MARK: - IJSON

/// An IJSON operation's outcome: its undisturbed result, or (only when an allocation failed)
/// `failure` with status Error and the exception's text.
void ExpectResultOrRecorded(const std::string& expected, const std::string& failure,
                            const std::function<std::string(std::string& message)>& run) {
    FailEachAllocation([&] {
        std::string message;
        const std::string result = run(message);
        if (result == expected) return;
        EXPECT_TRUE(AllocationProbe::Fired()) << result;
        EXPECT_EQ(result, failure);
        EXPECT_EQ(message, "2:std::bad_alloc");
    });
}

std::string Status(const IJSON& json) {
    AllocationProbe::Pause pause; // reading the status is the test's part, not the operation's
    char buffer[64] = {};
    unsigned char copied = 0;
    json.Interface_GetErrorMessage(buffer, sizeof buffer, &copied);
    return std::to_string(json.Interface_GetErrorStatus()) + ":" + buffer;
}

/// A fresh document, made outside the failures (the factories give null when out of memory).
AutoRefPtr<JSONWrapper> NewDocument() {
    AllocationProbe::Pause pause;
    return JSONWrapper::CreateNull();
}

std::string Text(const IJSON& json) {
    AllocationProbe::Pause pause;
    std::string text(json.Interface_ToString(nullptr, nullptr, 0), '\0');
    json.Interface_ToString(nullptr, text.data(), text.size());
    text.pop_back();
    return text;
}

TEST(HostAllocationFailure, IjsonOperations) {
    const AutoRefPtr<JSONWrapper> source = JSONWrapper::Create(kDocument.c_str());
    const std::string compact = Text(*source);
    std::string serialized(source->Interface_SerializedSize(), '\0');
    ASSERT_EQ(source->Interface_Serialize(serialized.data(), serialized.size()), serialized.size());

    ExpectResultOrRecorded("1 " + compact, "0 null", [&](std::string& message) {
        AutoRefPtr<JSONWrapper> json = NewDocument();
        const unsigned char parsed = json->Interface_Parse(kDocument.c_str());
        AllocationProbe::Pause pause;
        message = Status(*json);
        return std::to_string(parsed) + " " + Text(*json);
    });
    ExpectResultOrRecorded(std::to_string(serialized.size()) + " " + compact, "all ones null",
                           [&](std::string& message) {
        AutoRefPtr<JSONWrapper> json = NewDocument();
        const unsigned long long read = json->Interface_Deserialize(serialized.data(), serialized.size());
        AllocationProbe::Pause pause;
        message = Status(*json);
        return (read == ~0ULL ? std::string("all ones") : std::to_string(read)) + " " + Text(*json);
    });
    ExpectResultOrRecorded("0.5", "none", [&](std::string& message) {
        AutoRefPtr<IJSON> node(source->Interface_FindNodePath(kPath.c_str()));
        AllocationProbe::Pause pause;
        message = Status(*source);
        return node ? Text(*node) : "none";
    });
    ExpectResultOrRecorded(compact, "none", [&](std::string& message) {
        AutoRefPtr<IJSON> clone(source->Interface_Clone());
        AllocationProbe::Pause pause;
        message = Status(*source);
        return clone ? Text(*clone) : "none";
    });
    ExpectResultOrRecorded(serialized, "all ones", [&](std::string& message) {
        std::string out;
        {
            AllocationProbe::Pause pause;
            out.assign(serialized.size(), '\0');
        }
        const unsigned long long written = source->Interface_Serialize(out.data(), out.size());
        AllocationProbe::Pause pause;
        message = Status(*source);
        return written == ~0ULL ? "all ones" : out.substr(0, written);
    });
}

// MARK: - The JSON type

TEST(HostAllocationFailure, JsonTypeOperationsPassTheFailureOn) {
    JSONObj original(1, nullptr);
    original.SetValue(JsonValue::ReadFromString(kDocument, nullptr, nullptr));
    JSONObj smaller(1, nullptr);
    const AutoRefPtr<JSONWrapper> document = JSONWrapper::Create(kDocument.c_str());
    const std::string compact = original.Value()->GetAsString();
    const std::string documentText = Text(*document);
    const auto resultOrBadAlloc = [&](const std::function<std::string()>& run, const std::string& expected) {
        FailEachAllocation([&] {
            try {
                EXPECT_EQ(run(), expected);
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(AllocationProbe::Fired());
            }
        });
    };
    resultOrBadAlloc([&] {
        AutoRefPtr<Virelo::IUserDefinedType> clone(original.Interface_Clone());
        AllocationProbe::Pause pause;
        return static_cast<JSONObj&>(*clone).Value()->GetAsString();
    }, compact);
    resultOrBadAlloc([&] { return original.Interface_LessThan(&smaller) ? "less" : "not less"; }, "not less");
    resultOrBadAlloc([&] {
        JSONObj target(1, nullptr);
        const bool taken = target.Interface_Deserialize(document.Get(), nullptr);
        AllocationProbe::Pause pause;
        return (taken ? "taken " : "refused ") + target.Value()->GetAsString();
    }, "taken " + documentText);
}

// MARK: - Script functions

using FakeHost::Context;
using FakeHost::Variant;

/// Calls a script function under every allocation failure. `describe` turns its result into
/// text; an undisturbed call gives `expected`.
void ExpectCallSurvives(ExportedFunction function, std::vector<Virelo::IVariant*> arguments,
                        const std::function<std::string(Variant&, Context&)>& describe) {
    std::string expected;
    FailEachAllocation([&] {
        Context context;
        AutoRefPtr<Variant> result;
        {
            AllocationProbe::Pause pause;
            context.fReports.reserve(4);
            result = AutoRefPtr<Variant>(new Variant(Context::kJsonTypeId, nullptr));
        }
        const unsigned int status = function(static_cast<unsigned int>(arguments.size()),
                                             arguments.data(), result.Get(), nullptr, &context);
        AllocationProbe::Pause pause;
        EXPECT_EQ(status, 0u);
        for (const FakeHost::Report& report : context.fReports) {
            EXPECT_TRUE(AllocationProbe::Fired()) << report.fMessage;
            EXPECT_EQ(report.fSeverity, 2u);
            EXPECT_EQ(report.fId, "Error.JSON.Exception");
        }
        const std::string outcome = describe(*result, context);
        if (expected.empty()) expected = outcome; // the warm-up run is undisturbed
        if (!AllocationProbe::Fired()) {
            EXPECT_EQ(outcome, expected);
        }
    });
}

std::string JsonText(Variant& json, Context& context) {
    if (!json.Object()) return "<none>";
    Variant result;
    IVariant* arguments[] = {&json};
    virelo_module_JsonToString(1, arguments, &result, nullptr, &context);
    return result.Text();
}

TEST(HostAllocationFailure, ScriptFunctions) {
    Context setup;
    Variant text(kDocument), path(kPath), value(std::string("a text longer than any small-string buffer"));
    Variant key(std::string("n")), number(2.5);
    AutoRefPtr<Variant> json(new Variant(Context::kJsonTypeId, nullptr));
    {
        IVariant* arguments[] = {&text};
        ASSERT_EQ(virelo_module_StringToJson(1, arguments, json.Get(), nullptr, &setup), 0u);
    }
    Variant bytes;
    {
        IVariant* arguments[] = {json.Get()};
        ASSERT_EQ(virelo_module_JsonToMsgPack(1, arguments, &bytes, nullptr, &setup), 0u);
        ASSERT_TRUE(bytes.Data());
    }
    ExpectCallSurvives(virelo_module_StringToJson, {&text}, JsonText);
    ExpectCallSurvives(virelo_module_MsgPackToJson, {&bytes}, JsonText);
    ExpectCallSurvives(virelo_module_JsonToString, {json.Get()},
                       [](Variant& result, Context&) { return result.Text(); });
    ExpectCallSurvives(virelo_module_JsonToMsgPack, {json.Get()}, [](Variant& result, Context&) {
        return result.Data() ? std::to_string(result.Data()->Interface_GetSize()) : "<none>";
    });
    ExpectCallSurvives(virelo_module_GetFromNodePath, {json.Get(), &path}, JsonText);
    ExpectCallSurvives(virelo_module_SetNodePathString, {json.Get(), &path, &value}, JsonText);
    ExpectCallSurvives(virelo_module_SetNumber, {json.Get(), &key, &number}, JsonText);
    ExpectCallSurvives(virelo_module_Equals, {json.Get(), json.Get()},
                       [](Variant& result, Context&) { return std::to_string(result.Boolean()); });
}

} // namespace
