// Creation of the module's IJSON documents and their conversion to and from the value tree, the
// script type "JSON" (this module's and another module's) and other IJSON implementations,
// with the imported host functions and their failure reports.
#include "IjsonFakes.h"

#include "host/ijson/ImportedFunctions.h"
#include "json/JsonObject.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Virelo;
using namespace IjsonFakes;
using JSON::JSONWrapper;

namespace {

/// The root of a script value of this module.
JsonValue* RootOf(const AutoRefPtr<IUserDefinedType>& object) {
    return JSONObj::IsJSONObj(object.Get()) ? static_cast<JSONObj*>(object.Get())->Value().Get()
                                            : nullptr;
}

/// A data buffer without a direct pointer, whose reads may come up short.
class ReadOnlyData final : public InterfaceImpl<IDataRef> {
public:
    ReadOnlyData(std::string bytes, bool shortRead)
        : fBytes(std::move(bytes)), fShortRead(shortRead) {}
    unsigned long long Interface_GetSize() const override { return fBytes.size(); }
    void Interface_Assign(const char*, unsigned long long) override {}
    unsigned long long Interface_Read(char* target, unsigned long long size,
                                      unsigned long long offset) const override {
        if (offset >= fBytes.size()) return 0;
        size_t count = std::min<size_t>(static_cast<size_t>(size),
                                        fBytes.size() - static_cast<size_t>(offset));
        if (fShortRead) --count;
        std::memcpy(target, fBytes.data() + offset, count);
        return count;
    }
    bool Interface_IsEqual(IDataRef*) const override { return false; }
    IDataRef* Interface_Clone() const override { return nullptr; }
    const char* Interface_GetData() const override { return nullptr; }

private:
    std::string fBytes;
    bool fShortRead;
};

} // namespace

TEST(IJSONInterop, FactoriesConstructorsAndAssignment) {
    EXPECT_FALSE(JSONWrapper::Create(""));
    EXPECT_FALSE(JSONWrapper::Create("[1,2"));
    EXPECT_FALSE(JSONWrapper::Create(nullptr));
    EXPECT_EQ(Text(*JSONWrapper::Create()), "{}");
    EXPECT_EQ(Text(*JSONWrapper::CreateEmptyArray()), "[]");
    EXPECT_EQ(Text(*JSONWrapper::CreateNull()), "null");
    EXPECT_EQ(Text(*JSONWrapper::Create(R"({"z":1,"a":2})")), R"({"z":1,"a":2})");
    EXPECT_EQ(JSONWrapper::ToJSONString(JSONWrapper::Create(R"({"a":[1]})"), "  "),
              "{\n  \"a\": [\n    1\n  ]\n}");

    // The text constructor keeps a null document and the parse error.
    JSONWrapper broken(std::string("[1,"));
    // Copies are deep, with the error state; assignment shares document and error state.
    JSONWrapper copy(broken);
    EXPECT_EQ(Outcome(broken), "2:JSON parse error in line 0: illegal array");
    EXPECT_EQ(Outcome(copy), "2:JSON parse error in line 0: illegal array");
    EXPECT_EQ(Text(broken), "null");
    copy.Interface_SetInt("k", 1);
    EXPECT_EQ(Text(broken), "null");
    JSONWrapper view;
    view = broken;
    view.Interface_SetInt("k", 2);
    EXPECT_EQ(Text(broken), R"({"k":2})");
    view.Interface_GetInt("missing", nullptr);
    broken.Interface_SetNull(nullptr);
    EXPECT_EQ(Outcome(view), "2:Can't set key/value pair into JSON");
    AutoRefPtr<IJSON> clone(view.Interface_Clone());
    clone->Interface_SetInt("k", 3);
    EXPECT_EQ(Text(view), R"({"k":2})");
    EXPECT_EQ(Text(*clone), R"({"k":3})");
}

TEST(IJSONInterop, OtherIJSONImplementationsAreRefused) {
    Context context;
    context.ServeJsonFunctions();
    TextJson foreign(R"({"a":1})");
    AutoRefPtr<IJSON> own = Parse(R"({"a":1})");
    EXPECT_EQ(own->Interface_Equals(&foreign), 0);
    EXPECT_EQ(own->Interface_LessThan(&foreign), 0);
    EXPECT_FALSE(JSONWrapper::CloneJSON(&foreign));
    EXPECT_FALSE(JSONWrapper::ToVJson(&foreign));
    EXPECT_FALSE(JSONWrapper::ToVJson(AutoRefPtr<IJSON>()));
    // Deliberate: a foreign document gives the empty script object.
    AutoRefPtr<IUserDefinedType> empty =
        JSONWrapper::ToJSONObj(static_cast<const IJSON*>(&foreign), &context);
    ASSERT_TRUE(RootOf(empty));
    EXPECT_EQ(RootOf(empty)->GetAsString(), "{}");

    // This module's documents: CloneJSON copies, ToVJson shares.
    AutoRefPtr<JSONWrapper> clone = JSONWrapper::CloneJSON(own);
    ASSERT_TRUE(clone);
    clone->Interface_SetInt("a", 2);
    EXPECT_EQ(Text(*own), R"({"a":1})");
    EXPECT_EQ(JSONWrapper::ToVJson(own).Get(), JSONWrapper::ToVJson(own.Get()).Get());
    EXPECT_NE(JSONWrapper::ToVJson(own).Get(), JSONWrapper::ToVJson(clone.Get()).Get());
    EXPECT_TRUE(context.fReports.empty());
}

TEST(IJSONInterop, ThisModulesScriptValuesShareTheTree) {
    Context context;
    context.ServeJsonFunctions();
    AutoRefPtr<IJSON> json = Parse(R"({"a":[1,2]})");
    const JsonValue* root = JSONWrapper::ToVJson(json).Get();

    AutoRefPtr<IUserDefinedType> object = JSONWrapper::ToJSONObj(json.Get(), &context);
    EXPECT_EQ(RootOf(object), root);
    EXPECT_EQ(JSONWrapper::JSONObjToVJson(object, &context).Get(), root);
    AutoRefPtr<JSONWrapper> back = JSONWrapper::FromJSONObj(object, &context);
    EXPECT_EQ(JSONWrapper::ToVJson(back.Get()).Get(), root);
    EXPECT_EQ(RootOf(JSONWrapper::ToJSONObj(JSONWrapper::ToVJson(json), &context)), root);
    EXPECT_FALSE(JSONWrapper::FromJSONObj(AutoRefPtr<IUserDefinedType>(), &context));
    EXPECT_TRUE(context.fLogger.fErrors.empty());
    EXPECT_TRUE(context.fReports.empty());
}

// The only test that takes the text path: the warning is logged once per process.
TEST(IJSONInterop, OtherScriptTypesTravelAsTextWithOneWarning) {
    Context context;
    context.ServeJsonFunctions();
    context.fForeignJsonType = true;
    AutoRefPtr<IUserDefinedType> foreign(new ForeignJson(R"({"x":[1,2]})"));
    AutoRefPtr<JSONWrapper> json = JSONWrapper::FromJSONObj(foreign, &context);
    ASSERT_TRUE(json);
    EXPECT_EQ(Text(*json), R"({"x":[1,2]})");
    EXPECT_EQ(JSONWrapper::JSONObjToVJson(foreign, &context)->GetAsString(), R"({"x":[1,2]})");
    AutoRefPtr<IUserDefinedType> made =
        JSONWrapper::ToJSONObj(Parse(R"([true,"s"])").Get(), &context);
    auto* madeForeign = dynamic_cast<ForeignJson*>(made.Get());
    ASSERT_TRUE(madeForeign);
    EXPECT_EQ(madeForeign->fText, R"([true,"s"])");

    Context another;
    another.ServeJsonFunctions();
    another.fForeignJsonType = true;
    EXPECT_TRUE(JSONWrapper::FromJSONObj(foreign, &another));
    EXPECT_EQ(context.fLogger.fErrors,
              std::vector<std::string>{
                  "JSONWrapper|JSON module implementation is not compatible with "
                  "JSONWrapper implementation, leading to performance inefficiencies."});
    EXPECT_TRUE(another.fLogger.fErrors.empty());
    EXPECT_TRUE(context.fReports.empty());
}

namespace {
unsigned int WrongType(unsigned int, IVariant**, IVariant*, IModuleInfo*, IContext*) {
    return (1u << 16) | kStatusWrongType;
}
unsigned int NoObject(unsigned int, IVariant**, IVariant*, IModuleInfo*, IContext*) {
    return (3u << 16) | kStatusNoObject;
}
unsigned int Missing(unsigned int, IVariant**, IVariant*, IModuleInfo*, IContext*) {
    return (1u << 16) | kStatusMissing;
}
unsigned int LeavesError(unsigned int, IVariant**, IVariant* result, IModuleInfo*,
                         IContext* context) {
    context->TriggerErrorHandler(eSeverityRecoverable, "T", "T.Id", "oops");
    result->Interface_SetString("text", 4);
    return 0;
}
} // namespace

TEST(IJSONInterop, ImportedFunctionFailuresAreReported) {
    Context bare;
    EXPECT_FALSE(JSONWrapper::ToJSONObj(Parse("1").Get(), &bare));
    ASSERT_EQ(bare.fReports.size(), 1u);
    EXPECT_EQ(bare.fReports[0].fSeverity, 2u);
    EXPECT_EQ(bare.fReports[0].fSource, "Virelo");
    EXPECT_EQ(bare.fReports[0].fId, "Error.Virelo.InvalidFunction");
    EXPECT_EQ(bare.fReports[0].fMessage, "Imported Virelo function JSON.CreateEmptyObject "
                                         "(imported as JSON_CreateEmptyObject) doesn't exist!");
    EXPECT_FALSE(JSON::JSON_CreateEmptyObject(nullptr));

    struct Row {
        VireloFunction fFunction;
        const char* fMessage;
    };
    const Row rows[] = {
        {&WrongType, "invalid parameter 1 in function 'ToString'"},
        {&NoObject, "invalid object used for parameter 3 in function 'ToString'"},
        {&Missing, "runtime error from function 'ToString'"},
    };
    AutoRefPtr<IUserDefinedType> object(new ForeignJson("[]"));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fMessage);
        Context context;
        context.fFunctions["ToString"] = row.fFunction;
        EXPECT_EQ(JSON::JSON_ToString(object, &context), "");
        ASSERT_EQ(context.fReports.size(), 1u);
        EXPECT_EQ(context.fReports[0].fSeverity, 2u);
        EXPECT_EQ(context.fReports[0].fId, "Error.Virelo.InvalidArgument");
        EXPECT_EQ(context.fReports[0].fMessage, row.fMessage);
    }

    // A context left with an error is written to the debug log; the result still counts.
    Context troubled;
    troubled.fFunctions["ToString"] = &LeavesError;
    EXPECT_EQ(JSON::JSON_ToString(object, &troubled), "text");
    EXPECT_EQ(troubled.fLogger.fDebug,
              std::vector<std::string>{
                  "Virelo|Error calling imported Virelo function ToString (imported as "
                  "JSON_ToString), context has error \"oops\", backtrace: stack"});
}

TEST(IJSONInterop, MessagePackRoundTripAndFailures) {
    AutoRefPtr<JSONWrapper> json = JSONWrapper::Create(R"({"a":[1,-2,"s",true,null]})");
    AutoRefPtr<IDataRef> bytes = JSONWrapper::ToMsgPack(*json);
    ASSERT_TRUE(bytes);
    JSONWrapper back;
    EXPECT_TRUE(back.FromMsgPack(bytes));
    EXPECT_EQ(back.Interface_Equals(json.Get()), 1);
    const std::string copy(bytes->Interface_GetData(),
                           static_cast<size_t>(bytes->Interface_GetSize()));
    JSONWrapper read;
    EXPECT_TRUE(read.FromMsgPack(AutoRefPtr<IDataRef>(new ReadOnlyData(copy, false))));
    EXPECT_EQ(read.Interface_Equals(json.Get()), 1);

    JSONWrapper shortRead;
    EXPECT_FALSE(shortRead.FromMsgPack(AutoRefPtr<IDataRef>(new ReadOnlyData(copy, true))));
    EXPECT_EQ(Outcome(shortRead), "2:reading from MsgPack failed");
    EXPECT_EQ(Text(shortRead), "null"); // a read that fails keeps the document
    EXPECT_FALSE(shortRead.FromMsgPack(AutoRefPtr<IDataRef>()));
    EXPECT_EQ(Outcome(shortRead), "2:reading from MsgPack failed");

    // Deliberate: a failed decode leaves no document at all; every operation then gives 0.
    JSONWrapper garbage;
    EXPECT_FALSE(garbage.FromMsgPack(AutoRefPtr<IDataRef>(new ReadOnlyData("\xC1", false))));
    EXPECT_EQ(Outcome(garbage), "2:reading from MsgPack failed");
    EXPECT_EQ(garbage.Interface_ToString(nullptr, nullptr, 0), 0u);
    EXPECT_EQ(garbage.Interface_IsNull(), 0);
    EXPECT_EQ(garbage.Interface_Empty(), 1);
    EXPECT_EQ(garbage.Interface_SerializedSize(), 0u);
    EXPECT_EQ(garbage.Interface_SetInt("k", 1), 0);
    EXPECT_EQ(Outcome(garbage), "2:Can't set key/value pair into JSON");
    EXPECT_FALSE(JSONWrapper::ToMsgPack(garbage));
    EXPECT_EQ(garbage.Interface_Parse("[]"), 1);
    EXPECT_EQ(Text(garbage), "[]");
}
