// The call glue (status words, results, exceptions), JSONObj's host operations, Virelo::Data
// and the string helpers, driven through the host interfaces with a fake host.
#include "FakeHost.h"

#include "host/CallForwarding.h"
#include "host/Data.h"
#include "host/JSONObj.h"
#include "host/StringHelpers.h"
#include "json/JsonScalar.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

using namespace Virelo;
using FakeHost::Context;
using FakeHost::Variant;

namespace {

std::string TextOf(const JSONObjPtr& json) {
    return json->Value() ? json->Value()->GetAsString() : "<none>";
}
std::string Describe(const JSONObjPtr& json, const std::string& key) {
    return TextOf(json) + "/" + key;
}
unsigned long long Echo(unsigned long long number) {
    return number;
}
std::string Fails(const std::string&) {
    throw std::runtime_error("boom");
}
JSONObjPtr Same(const JSONObjPtr& json, IContext*) {
    return json;
}

JSONObj* NewJson(JsonValue* value) {
    auto* json = new JSONObj(Context::kJsonTypeId, nullptr);
    json->SetValue(JsonAutoRefPtr<JsonValue>(value));
    return json;
}

// Another module's user-defined type.
class ForeignType final : public CustomType<ForeignType> {
public:
    ForeignType() : CustomType(22, "Other") {}
    bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
};

template <class R, class... P>
unsigned int CallWith(R (*worker)(P...), std::vector<IVariant*> arguments, IVariant* result, Context& context) {
    return CPPNameFunctionForward<R>::Call(worker, static_cast<unsigned int>(arguments.size()),
                                           arguments.data(), result, nullptr, &context);
}

} // namespace

TEST(CallForwarding, StatusWordNamesFirstBadArgument) {
    AutoRefPtr<JSONObj> json(NewJson(new JsonInteger(5LL)));
    AutoRefPtr<ForeignType> foreign(new ForeignType());
    Variant good(Context::kJsonTypeId, json.Get()), none(Context::kJsonTypeId, nullptr);
    Variant other(22, foreign.Get()), number(1.0), text(std::string("k"));
    struct Row {
        const char* fName;
        std::vector<IVariant*> fArguments;
        unsigned int fStatus;
    } rows[] = {
        {"no arguments", {}, 0x10001},
        {"second missing", {&good}, 0x20001},
        {"number for JSON", {&number, &text}, 0x10002},
        {"null slot", {nullptr, &text}, 0x10002},
        {"JSON without object", {&none, &text}, 0x10004},
        {"another type's object", {&other, &text}, 0x10002},
        {"number for string", {&good, &number}, 0x20002},
        {"all fit", {&good, &text}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        Context context;
        Variant result(std::string("untouched"));
        EXPECT_EQ(CallWith(&Describe, row.fArguments, &result, context), row.fStatus);
        EXPECT_EQ(result.Text(), row.fStatus ? "" : "5/k"); // a string result is emptied on failure
        EXPECT_TRUE(context.fReports.empty());
    }
}

TEST(CallForwarding, JsonResultIsLeftAloneOnFailure) {
    Context context;
    AutoRefPtr<JSONObj> kept(NewJson(new JsonNull()));
    Variant result(Context::kJsonTypeId, kept.Get());
    Variant number(1.0);
    EXPECT_EQ(CallWith(&Same, {&number}, &result, context), 0x10002u);
    EXPECT_EQ(result.Object(), kept.Get());
}

TEST(CallForwarding, NumbersBecomeUnsignedIndexes) {
    const struct {
        double fIn;
        unsigned long long fOut;
    } rows[] = {{3.9, 3}, {0.0, 0}, {-1.0, ~0ULL}, {-2.5, ~0ULL - 1}, {1e300, ~0ULL}, {9223372036854775808.0, 1ULL << 63}};
    for (const auto& row : rows) {
        Context context;
        Variant in(row.fIn), result;
        EXPECT_EQ(CallWith(&Echo, {&in}, &result, context), 0u);
        EXPECT_EQ(NumberToUnsigned(row.fIn), row.fOut) << row.fIn;
    }
}

TEST(CallForwarding, WorkerExceptionIsReportedNotThrown) {
    Context context;
    Variant text(std::string("x")), result(std::string("untouched"));
    EXPECT_EQ(CallWith(&Fails, {&text}, &result, context), 0u);
    ASSERT_EQ(context.fReports.size(), 1u);
    EXPECT_EQ(context.fReports[0].fSeverity, 2u);
    EXPECT_EQ(context.fReports[0].fSource, "JSON");
    EXPECT_EQ(context.fReports[0].fId, "Error.JSON.Exception");
    EXPECT_EQ(context.fReports[0].fMessage, "boom");
    EXPECT_EQ(result.Text(), "");
}

TEST(JSONObj, BinaryChannelSharesTheTree) {
    AutoRefPtr<JSONObj> source(NewJson(new JsonInteger(7LL)));
    AutoRefPtr<JSONObj> target(new JSONObj(Context::kJsonTypeId, nullptr));
    void* data = nullptr;
    EXPECT_EQ(source->Interface_ToBinaryData(&data, 11099), 0u);
    EXPECT_EQ(source->Interface_ToBinaryData(nullptr, 11100), 0u);
    ASSERT_EQ(source->Interface_ToBinaryData(&data, 11100), 8u);
    EXPECT_EQ(target->Interface_FromBinaryData(data, 4, 11100), 0u);
    EXPECT_EQ(target->Interface_FromBinaryData(data, 8, 11099), 0u);
    EXPECT_EQ(TextOf(target), "null");
    EXPECT_EQ(source->Interface_FromBinaryData(data, 8, 11100), 1u); // its own field: no change
    EXPECT_EQ(target->Interface_FromBinaryData(data, 8, 11100), 1u);
    EXPECT_EQ(target->Value().Get(), source->Value().Get());
    source.Reset(); // the tree lives on in the target
    EXPECT_EQ(TextOf(target), "7");
}

TEST(JSONObj, CloneIsDeepAndTypeFourIsNull) {
    AutoRefPtr<JSONObj> json(NewJson(new JsonInteger(1LL)));
    AutoRefPtr<IUserDefinedType> clone(json->Interface_Clone());
    ASSERT_TRUE(JSONObj::IsJSONObj(clone.Get()));
    EXPECT_NE(static_cast<JSONObj*>(clone.Get())->Value().Get(), json->Value().Get());
    EXPECT_EQ(clone->Interface_GetType(), Context::kJsonTypeId);
    EXPECT_STREQ(clone->Interface_GetTypeName(), "JSON");
    AutoRefPtr<JSONObj> compiled(new JSONObj(21, JsonValue::eJsonCompiledObject, nullptr));
    EXPECT_EQ(TextOf(compiled), "null");
}

TEST(JSONObj, LessThanOrdersCompactTexts) {
    AutoRefPtr<JSONObj> a(NewJson(new JsonString("ab", nullptr, nullptr)));
    AutoRefPtr<JSONObj> b(NewJson(new JsonString("ab", nullptr, nullptr)));
    AutoRefPtr<JSONObj> prefix(NewJson(new JsonInteger(1LL)));
    AutoRefPtr<JSONObj> longer(NewJson(new JsonInteger(10LL)));
    AutoRefPtr<ForeignType> foreign(new ForeignType());
    EXPECT_FALSE(a->Interface_LessThan(b.Get()));
    EXPECT_FALSE(b->Interface_LessThan(a.Get()));
    EXPECT_TRUE(prefix->Interface_LessThan(longer.Get()));
    EXPECT_FALSE(longer->Interface_LessThan(prefix.Get()));
    EXPECT_FALSE(a->Interface_LessThan(foreign.Get()));
    EXPECT_FALSE(a->Interface_LessThan(nullptr));
}

TEST(Data, ReadStaysInsideTheBytes) {
    AutoRefPtr<Data> data(new Data("0123456789"));
    char buffer[100];
    EXPECT_EQ(data->Interface_Read(buffer, 100, 10), 0u);
    EXPECT_EQ(data->Interface_Read(buffer, 100, 2), 8u);
    EXPECT_EQ(std::string(buffer, 8), "23456789");
    EXPECT_EQ(data->Interface_Read(buffer, 3, 0), 3u);
}

// A data block that offers no direct pointer, only reads.
class StreamData final : public InterfaceImpl<IDataRef> {
public:
    explicit StreamData(std::string bytes) : fBytes(std::move(bytes)) {}
    unsigned long long Interface_GetSize() const override { return fBytes.size(); }
    void Interface_Assign(const char*, unsigned long long) override {}
    unsigned long long Interface_Read(char* target, unsigned long long size, unsigned long long offset) const override {
        if (offset >= fBytes.size()) return 0;
        const size_t n = std::min<size_t>(size, fBytes.size() - offset);
        std::memcpy(target, fBytes.data() + offset, n);
        return n;
    }
    bool Interface_IsEqual(IDataRef*) const override { return false; }
    IDataRef* Interface_Clone() const override { return new StreamData(fBytes); }
    const char* Interface_GetData() const override { return nullptr; }

private:
    std::string fBytes;
};

TEST(Data, EqualityReadsBuffersWithoutDirectPointer) {
    std::string big(20000, 'x');
    AutoRefPtr<Data> data(new Data(big));
    AutoRefPtr<StreamData> same(new StreamData(big));
    big[19999] = 'y';
    AutoRefPtr<StreamData> differs(new StreamData(big));
    AutoRefPtr<Data> shorter(new Data("x"));
    EXPECT_TRUE(data->Interface_IsEqual(same.Get()));
    EXPECT_FALSE(data->Interface_IsEqual(differs.Get()));
    EXPECT_FALSE(data->Interface_IsEqual(shorter.Get()));
    EXPECT_FALSE(data->Interface_IsEqual(nullptr));
}

TEST(StringHelpers, AppendToErrorStrNeverCutsAPiece) {
    char buffer[64] = "";
    AppendToErrorStr(buffer, sizeof buffer, "x", 0);
    EXPECT_STREQ(buffer, "Item '1' has error 'x'");
    AppendToErrorStr(buffer, sizeof buffer, "y", 1);
    EXPECT_STREQ(buffer, "Item '1' has error 'x', Item '2' has error 'y'");
    AppendToErrorStr(buffer, sizeof buffer, "too long to fit", 2); // dropped whole
    EXPECT_STREQ(buffer, "Item '1' has error 'x', Item '2' has error 'y'");
    AppendToErrorStr(nullptr, 10, "x", 0);
    AppendToErrorStr(buffer, sizeof buffer, nullptr, 0);
}

TEST(StringHelpers, ReplaceAllResumesBehindTheReplacement) {
    std::string text = "a,,b,,,c";
    ReplaceAllStringsInPlace(text, ",,", ",");
    EXPECT_EQ(text, "a,b,,c"); // replaced text is not searched again
    text = "aaa";
    ReplaceAllStringsInPlace(text, "a", "aa");
    EXPECT_EQ(text, "aaaaaa");
}
