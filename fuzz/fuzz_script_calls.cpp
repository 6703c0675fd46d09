// Fuzz target: the exported script functions, called the way a host calls them. The input is a
// sequence of calls: a byte picks a row of the function table, another the argument count
// (usually the signature's, sometimes one less, one more or none), then each argument slot gets
// a kind: usually one that fits the parameter, otherwise any of a null slot, an empty variant,
// a number, a string, a boolean, a data block with or without a direct pointer, a JSON parsed
// from a piece of the input, a JSON holding no value, a JSON variant without an object, a JSON
// an earlier call returned, the previous JSON argument again, another module's object, or a
// host vector. Every call runs with a context that records the reports.
//
// Checked for every call: the status word is the one the argument kinds imply; a failed
// conversion empties a plain result and leaves a JSON or vector result alone; results have the
// type the signature promises; every report comes from "JSON" with an "Error.JSON." id and
// severity 1 or 2; and the JSON arguments still hold the same, unchanged tree (changing
// functions work on a copy). Objects are all reference counted, so a leak shows under
// LeakSanitizer when the input's objects are released.
#include "fuzz/FuzzHost.h"
#include "fuzz/FuzzSupport.h"

#include "host/CallForwarding.h"
#include "json/JsonEquality.h"
#include "json/ParserContext.h"
#include "module/FunctionTable.h"
#include "tests/support/ModuleExports.h"
#include "module/ScriptFunctions.h"

#include <array>
#include <iterator>
#include <limits>
#include <type_traits>

namespace {

using namespace FuzzSupport;
using namespace Virelo;
using FuzzHost::Context;
using FuzzHost::Variant;

// ---- The table, derived from the workers' signatures ----

enum class EParam : uint8_t { Json, String, Boolean, Number, Data, StringVector, BoolVector, NumberVector, Context };
enum class EResult : uint8_t { String, Json, Boolean, Number, Data, StringVector, BoolVector, NumberVector };

template <class T> struct ParamOf;
template <> struct ParamOf<JSONObjPtr> { static constexpr EParam kParam = EParam::Json; };
template <> struct ParamOf<std::string> { static constexpr EParam kParam = EParam::String; };
template <> struct ParamOf<bool> { static constexpr EParam kParam = EParam::Boolean; };
template <> struct ParamOf<double> { static constexpr EParam kParam = EParam::Number; };
template <> struct ParamOf<unsigned long> { static constexpr EParam kParam = EParam::Number; };
template <> struct ParamOf<unsigned long long> { static constexpr EParam kParam = EParam::Number; };
template <> struct ParamOf<DataRefPtr> { static constexpr EParam kParam = EParam::Data; };
template <> struct ParamOf<StringVectorPtr> { static constexpr EParam kParam = EParam::StringVector; };
template <> struct ParamOf<BoolVectorPtr> { static constexpr EParam kParam = EParam::BoolVector; };
template <> struct ParamOf<NumberVectorPtr> { static constexpr EParam kParam = EParam::NumberVector; };
template <> struct ParamOf<IContext*> { static constexpr EParam kParam = EParam::Context; };

template <class T> struct ResultOf;
template <> struct ResultOf<std::string> { static constexpr EResult kResult = EResult::String; };
template <> struct ResultOf<JSONObjPtr> { static constexpr EResult kResult = EResult::Json; };
template <> struct ResultOf<bool> { static constexpr EResult kResult = EResult::Boolean; };
template <> struct ResultOf<double> { static constexpr EResult kResult = EResult::Number; };
template <> struct ResultOf<unsigned long> { static constexpr EResult kResult = EResult::Number; };
template <> struct ResultOf<long long> { static constexpr EResult kResult = EResult::Number; };
template <> struct ResultOf<DataRefPtr> { static constexpr EResult kResult = EResult::Data; };
template <> struct ResultOf<StringVectorPtr> { static constexpr EResult kResult = EResult::StringVector; };
template <> struct ResultOf<BoolVectorPtr> { static constexpr EResult kResult = EResult::BoolVector; };
template <> struct ResultOf<NumberVectorPtr> { static constexpr EResult kResult = EResult::NumberVector; };

struct Function {
    const char* fName;
    VireloFunction fCall;
    std::vector<EParam> fParams; // the script's arguments: the call context is no argument
    EResult fResult;
};

template <class R, class... P> Function MakeFunction(const char* name, VireloFunction call, R (*)(P...)) {
    const std::array<EParam, sizeof...(P)> all{ParamOf<std::decay_t<P>>::kParam...};
    Function function{name, call, {}, ResultOf<R>::kResult};
    for (EParam param : all)
        if (param != EParam::Context) function.fParams.push_back(param);
    return function;
}

const std::vector<Function>& Functions() {
    static const std::vector<Function> sFunctions = {
#define FUZZ_FUNCTION_ROW(scriptName, symbol, worker) \
    MakeFunction(scriptName, &virelo_module_##symbol, &JsonModule::worker),
        VIRELO_JSON_FUNCTIONS(FUZZ_FUNCTION_ROW)
#undef FUZZ_FUNCTION_ROW
    };
    return sFunctions;
}

// ---- Argument values ----

const double sNumbers[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.5, 1e300, -1e300, 1e-300, 4.9e-324,
                           9007199254740993.0, 9223372036854775808.0, 18446744073709551616.0,
                           4294967296.0, 2147483648.0, -2147483649.0, 1e19,
                           std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN()};

const char* const sStrings[] = {"", "/", "//", "0", "1", "2", "-1", "a", "b", "a/b", "/a/0", "0/a",
                                "type", "value", "JSON", "double", "int64", "uint64", "int32",
                                "uint32", "Int32", "  ", "\t", "99999999999", "4294967296",
                                "2abc", "null", "[1,2]", "{\"a\":1}", "\xC3", "\xEF\xBB\xBF[]"};

double MakeNumber(InputReader& in) {
    const uint8_t pick = in.Byte();
    if (pick < 128) return static_cast<double>(pick % 24) - 2.0; // indexes, near the ends too
    if (pick < 224) return sNumbers[pick % std::size(sNumbers)];
    return in.RawDouble();
}

std::string MakeString(InputReader& in) {
    const uint8_t pick = in.Byte();
    if (pick < 96) return sStrings[pick % std::size(sStrings)];
    return in.Piece();
}

/// A JSON value of the host's JSON type; `value` may be empty (a JSON holding no value).
JSONObjPtr MakeJson(JsonAutoRefPtr<JsonValue> value) {
    JSONObjPtr json(new JSONObj(Context::kJsonTypeId, nullptr));
    json->SetValue(std::move(value));
    return json;
}

JSONObjPtr ParseJson(InputReader& in) {
    ParserContext ctx;
    ctx.fKeepOrder = in.Bool();
    ctx.fCheckUTF8 = true;
    const std::string text = in.Piece();
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, &ctx, nullptr);
    if (!value) value = JsonAutoRefPtr<JsonValue>(new JsonNull());
    return MakeJson(std::move(value));
}

template <class T> IObject* MakeVector(InputReader& in, T (*element)(InputReader&)) {
    auto* vector = new FuzzHost::Vector<T>();
    for (unsigned count = in.Below(6); count > 0; --count) vector->fItems.push_back(element(in));
    return vector;
}
bool MakeBool(InputReader& in) {
    return in.Bool();
}

/// The kinds an argument slot can get.
enum class EKind : uint8_t {
    NullSlot, Empty, Number, String, Boolean, DataDirect, DataIndirect, Json, JsonNoValue,
    JsonNoObject, JsonEarlier, JsonSame, Foreign, StringVector, BoolVector, NumberVector, Count
};

EKind FittingKind(EParam param, InputReader& in) {
    switch (param) {
    case EParam::Json: {
        static constexpr EKind sJson[] = {EKind::Json, EKind::Json, EKind::Json, EKind::JsonEarlier,
                                          EKind::JsonEarlier, EKind::JsonSame, EKind::JsonNoValue,
                                          EKind::JsonEarlier};
        return sJson[in.Below(std::size(sJson))];
    }
    case EParam::String: return EKind::String;
    case EParam::Boolean: return EKind::Boolean;
    case EParam::Number: return EKind::Number;
    case EParam::Data: return in.Bool() ? EKind::DataDirect : EKind::DataIndirect;
    case EParam::StringVector: return EKind::StringVector;
    case EParam::BoolVector: return EKind::BoolVector;
    default: return EKind::NumberVector;
    }
}

/// One call's arguments and what the call must leave of them.
struct Arguments {
    std::vector<AutoRefPtr<IVariant>> fOwned;
    std::vector<IVariant*> fSlots;
    std::vector<EKind> fKinds;
    // The JSON arguments with a value: the object, its tree and a deep copy of it.
    struct Held {
        JSONObjPtr fJson;
        const JsonValue* fValue;
        JsonAutoRefPtr<JsonValue> fCopy;
        bool fComparable;
    };
    std::vector<Held> fHeld;
    JSONObjPtr fLastJson;

    void Add(EKind kind, IVariant* variant) {
        fKinds.push_back(kind);
        fSlots.push_back(variant);
        if (variant) fOwned.emplace_back(variant);
    }
    void AddJson(EKind kind, const JSONObjPtr& json) {
        Add(kind, new Variant(Context::kJsonTypeId, json.Get()));
        fLastJson = json;
        if (const JsonValue* value = json->Value().Get()) {
            for (const Held& held : fHeld)
                if (held.fJson.Get() == json.Get()) return;
            fHeld.push_back({json, value, JsonValue::Copy(*value), !Inspect(*value).fNaN});
        }
    }
};

/// Fills one slot. The vector a vector parameter gets always has the parameter's element type:
/// a host never hands over another (the module casts by the signature).
void AddArgument(Arguments& args, EKind kind, EParam param, InputReader& in,
                 const std::vector<JSONObjPtr>& earlier) {
    switch (kind) {
    case EKind::NullSlot: return args.Add(kind, nullptr);
    case EKind::Empty: return args.Add(kind, new Variant());
    case EKind::Number: return args.Add(kind, new Variant(MakeNumber(in)));
    case EKind::String: return args.Add(kind, new Variant(MakeString(in)));
    case EKind::Boolean: return args.Add(kind, new Variant(in.Bool()));
    case EKind::DataDirect:
    case EKind::DataIndirect: {
        std::string bytes = in.Piece();
        if (in.Below(4) == 0) { // the encoding of a parsed piece reaches deeper into the reader
            ParserContext ctx;
            if (JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(bytes, &ctx, nullptr))
                value->WriteToMsgPack(bytes);
        }
        auto* variant = new Variant();
        AutoRefPtr<IDataRef> block(new FuzzHost::Data(std::move(bytes), kind == EKind::DataDirect));
        variant->Interface_SetDataRef(block.Get());
        return args.Add(kind, variant);
    }
    case EKind::Json: return args.AddJson(kind, ParseJson(in));
    case EKind::JsonNoValue: return args.AddJson(kind, MakeJson(nullptr));
    case EKind::JsonNoObject: return args.Add(kind, new Variant(Context::kJsonTypeId, nullptr));
    case EKind::JsonEarlier:
        if (earlier.empty()) return args.AddJson(EKind::Json, ParseJson(in));
        return args.AddJson(kind, earlier[in.Below(static_cast<unsigned>(earlier.size()))]);
    case EKind::JsonSame:
        if (!args.fLastJson) return args.AddJson(EKind::Json, ParseJson(in));
        return args.AddJson(kind, JSONObjPtr(args.fLastJson));
    case EKind::Foreign: {
        AutoRefPtr<IUserDefinedType> object(new FuzzHost::ForeignType());
        return args.Add(kind, new Variant(FuzzHost::ForeignType::kTypeId, object.Get()));
    }
    default: break;
    }
    // Vectors: the parameter's element type when it takes a vector, else the kind's.
    EKind vectorKind = kind;
    if (param == EParam::StringVector) vectorKind = EKind::StringVector;
    if (param == EParam::BoolVector) vectorKind = EKind::BoolVector;
    if (param == EParam::NumberVector) vectorKind = EKind::NumberVector;
    AutoRefPtr<IObject> vector(vectorKind == EKind::StringVector ? MakeVector<std::string>(in, MakeString)
                               : vectorKind == EKind::BoolVector ? MakeVector<bool>(in, MakeBool)
                                                                 : MakeVector<double>(in, MakeNumber));
    auto* variant = new Variant();
    variant->Interface_SetVector(vector.Get());
    args.Add(kind, variant);
}

// ---- The status word the forwarding glue must return ----

bool Fits(EParam param, IVariant* argument) {
    if (!argument) return false;
    switch (param) {
    case EParam::Json: {
        if (argument->Interface_GetType() < eTypeUserDefined) return false;
        AutoRefPtr<IUserDefinedType> object(argument->Interface_GetUserDefined());
        return JSONObj::IsJSONObj(object.Get());
    }
    case EParam::String: return argument->Interface_GetType() == eTypeString;
    case EParam::Boolean: return argument->Interface_GetType() == eTypeBoolean;
    case EParam::Number: return argument->Interface_GetType() == eTypeNumber;
    case EParam::Data: return argument->Interface_GetType() == eTypeDataRef;
    default: {
        AutoRefPtr<IObject> vector(argument->Interface_GetVector());
        return static_cast<bool>(vector);
    }
    }
}

unsigned int ExpectedStatus(const Function& function, const std::vector<IVariant*>& slots,
                            unsigned int count) {
    for (size_t i = 0; i < function.fParams.size(); ++i) {
        const auto position = static_cast<unsigned int>(i + 1) << 16;
        if (i >= count) return position | kStatusMissing;
        IVariant* argument = slots[i];
        if (Fits(function.fParams[i], argument)) continue;
        if (argument && argument->Interface_GetType() >= eTypeUserDefined) {
            AutoRefPtr<IUserDefinedType> object(argument->Interface_GetUserDefined());
            if (!object) return position | kStatusNoObject;
        }
        return position | kStatusWrongType;
    }
    return 0;
}

// ---- Results ----

bool IsOwnVector(EResult result, IObject* vector) {
    switch (result) {
    case EResult::StringVector: return dynamic_cast<FuzzHost::Vector<std::string>*>(vector) != nullptr;
    case EResult::BoolVector: return dynamic_cast<FuzzHost::Vector<bool>*>(vector) != nullptr;
    default: return dynamic_cast<FuzzHost::Vector<double>*>(vector) != nullptr;
    }
}

/// Checks the result variant; returns the JSON it holds for later calls, if any.
JSONObjPtr CheckResult(const Function& function, unsigned int status, const Variant& result,
                       unsigned int typeBefore) {
    switch (function.fResult) {
    case EResult::String:
        FUZZ_CHECK(result.Interface_GetType() == eTypeString);
        if (status) FUZZ_CHECK(result.Text().empty());
        return nullptr;
    case EResult::Boolean:
        FUZZ_CHECK(result.Interface_GetType() == eTypeBoolean);
        FUZZ_CHECK(result.Boolean() <= 1);
        if (status) FUZZ_CHECK(result.Boolean() == 0);
        return nullptr;
    case EResult::Number:
        FUZZ_CHECK(result.Interface_GetType() == eTypeNumber);
        if (status) FUZZ_CHECK(result.Number() == 0.0);
        return nullptr;
    case EResult::Data:
        FUZZ_CHECK(result.Interface_GetType() == eTypeDataRef);
        if (status) FUZZ_CHECK(result.Data() == nullptr);
        return nullptr;
    case EResult::Json: {
        if (status || !result.Object()) {
            FUZZ_CHECK(result.Interface_GetType() == typeBefore); // left alone
            return nullptr;
        }
        FUZZ_CHECK(JSONObj::IsJSONObj(result.Object()));
        FUZZ_CHECK(result.Interface_GetType() == Context::kJsonTypeId);
        return JSONObjPtr::Share(static_cast<JSONObj*>(result.Object()));
    }
    default:
        if (status || !result.Vector()) {
            FUZZ_CHECK(result.Interface_GetType() == typeBefore);
            return nullptr;
        }
        FUZZ_CHECK(result.Interface_GetType() == eTypeVector);
        FUZZ_CHECK(IsOwnVector(function.fResult, result.Vector()));
        return nullptr;
    }
}

void CheckReports(Context& context) {
    for (const FuzzHost::Report& report : context.fReports) {
        FUZZ_CHECK(report.fSeverity == eSeverityRecoverable || report.fSeverity == eSeveritySevere);
        FUZZ_CHECK(report.fSource == "JSON");
        FUZZ_CHECK(report.fId.rfind("Error.JSON.", 0) == 0);
    }
    context.fReports.clear();
}

constexpr size_t kMaxCalls = 12;
constexpr size_t kMaxEarlier = 8;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InputReader in(data, size);
    const std::vector<Function>& functions = Functions();
    AutoRefPtr<Context> context(new Context());
    std::vector<JSONObjPtr> earlier;

    for (size_t call = 0; call < kMaxCalls && !in.Empty(); ++call) {
        const Function& function = functions[in.Byte() % functions.size()];
        const auto parameters = static_cast<unsigned int>(function.fParams.size());
        unsigned int count = parameters;
        switch (in.Below(16)) {
        case 0: count = parameters ? parameters - 1 : 0; break;
        case 1: count = parameters + 1; break;
        case 2: count = 0; break;
        default: break;
        }

        Arguments args;
        for (unsigned int i = 0; i < count; ++i) {
            const EParam param = i < parameters ? function.fParams[i] : EParam::String;
            const uint8_t pick = in.Byte();
            const EKind kind = pick < 192 ? FittingKind(param, in)
                                          : static_cast<EKind>(pick % static_cast<uint8_t>(EKind::Count));
            AddArgument(args, kind, param, in, earlier);
        }

        // The result variant sometimes starts with a value: a failed conversion must leave a
        // JSON or vector result alone.
        AutoRefPtr<Variant> result(in.Below(4) == 0 ? new Variant(42.0) : new Variant());
        const unsigned int typeBefore = result->Interface_GetType();
        IVariant** slots = count || in.Bool() ? args.fSlots.data() : nullptr;
        const unsigned int status = function.fCall(count, slots, result.Get(), nullptr, context.Get());

        FUZZ_CHECK(status == ExpectedStatus(function, args.fSlots, count));
        CheckReports(*context);
        for (const Arguments::Held& held : args.fHeld) {
            FUZZ_CHECK(held.fJson->Value().Get() == held.fValue);
            if (held.fComparable) FUZZ_CHECK(*held.fCopy == *held.fValue);
        }
        if (JSONObjPtr json = CheckResult(function, status, *result, typeBefore)) {
            if (const JsonAutoRefPtr<JsonValue>& value = json->Value()) {
                std::string text;
                value->AppendToString(text);
                Inspect(*value);
            }
            if (earlier.size() < kMaxEarlier) {
                earlier.push_back(json);
            } else {
                earlier[in.Below(kMaxEarlier)] = json;
            }
        }
    }

    // What the host does with values between calls: clone and order them.
    for (size_t i = 0; i < earlier.size(); ++i) {
        AutoRefPtr<IUserDefinedType> clone(earlier[i]->Interface_Clone());
        FUZZ_CHECK(JSONObj::IsJSONObj(clone.Get()));
        const auto* copy = static_cast<const JSONObj*>(clone.Get());
        FUZZ_CHECK(static_cast<bool>(copy->Value()) == static_cast<bool>(earlier[i]->Value()));
        for (size_t j = 0; j < earlier.size(); ++j)
            FUZZ_CHECK(!(earlier[i]->Interface_LessThan(earlier[j].Get()) &&
                         earlier[j]->Interface_LessThan(earlier[i].Get())));
    }
    return 0;
}
