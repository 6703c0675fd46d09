// A small module for testing vhost without the real one: a text-holding JSON type, overloads,
// vectors, data blocks, error reports, status words, an imported function and one entry whose
// symbol is missing. VHOST_TEST_DEFINITION, when set, replaces the definition text.
#include "host/VireloInterfaces.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>

#define TEST_API extern "C" __attribute__((visibility("default")))

using namespace Virelo;

namespace {

constexpr const char* sDefinition =
    " TYPE JSON : vt_CreateBox : THREADSAFE"
    " CONST_FUNCTION STRING ToString (JSON) : vt_ToString"
    " CONST_FUNCTION JSON JSON.FromString (STRING) : vt_FromString"
    " CONST_FUNCTION NUMBER Add (NUMBER,NUMBER) : vt_AddNumbers"
    " CONST_FUNCTION STRING Add (STRING,STRING) : vt_AddStrings"
    " CONST_FUNCTION NUMBER Count (VECTOR<NUMBER>) : vt_CountNumbers"
    " CONST_FUNCTION NUMBER Count (VECTOR<STRING>) : vt_CountStrings"
    " CONST_FUNCTION VECTOR<STRING> Split (STRING) : vt_Split"
    " CONST_FUNCTION DATAREF Data.Reverse (DATAREF) : vt_Reverse"
    " CONST_FUNCTION BOOLEAN Data.IsDirect (DATAREF) : vt_IsDirect"
    " CONST_FUNCTION BOOLEAN IsNone (JSON) : vt_IsNone"
    " CONST_FUNCTION STRING Where () : vt_Where"
    " CONST_FUNCTION STRING Import (STRING) : vt_Import"
    " CONST_FUNCTION STRING Fail (STRING) : vt_Fail"
    " CONST_FUNCTION NUMBER WrongKind () : vt_WrongKind"
    " CONST_FUNCTION STRING Gone (STRING) : vt_NotExported";

// The JSON stand-in: holds its text as given.
class Box final : public IUserDefinedType {
public:
    explicit Box(unsigned int type) : fType(type) {}
    void Interface_AddRef() const override { ++fCount; }
    unsigned int Interface_Release() const override {
        if (--fCount != 0) return 0;
        delete this;
        return 1;
    }
    unsigned int Interface_GetCount() const override { return fCount; }
    const char* Interface_GetTypeName() const override { return "JSON"; }
    IUserDefinedType* Interface_Clone() const override {
        Box* copy = new Box(fType);
        copy->fText = fText;
        return copy;
    }
    unsigned int Interface_GetType() const override { return fType; }
    bool Interface_LessThan(const IUserDefinedType* other) const override {
        return fText < static_cast<const Box*>(other)->fText;
    }

    std::string fText;

private:
    mutable std::atomic<unsigned int> fCount{1};
    unsigned int fType;
};

unsigned int Status(unsigned int position, unsigned int reason) {
    return (position << 16) | reason;
}

// 0 when argument `index` exists and has type `type` (any user-defined type for >= 21).
unsigned int Check(unsigned int count, IVariant** arguments, unsigned int index,
                   unsigned int type) {
    if (index >= count || !arguments[index]) return Status(index + 1, kStatusMissing);
    const unsigned int actual = arguments[index]->Interface_GetType();
    const bool fits = type >= eTypeUserDefined ? actual >= eTypeUserDefined : actual == type;
    return fits ? 0 : Status(index + 1, kStatusWrongType);
}

std::string StringOf(IVariant* variant) {
    return std::string(variant->Interface_GetStringData(),
                       static_cast<size_t>(variant->Interface_GetStringLength()));
}

void SetString(IVariant* result, const std::string& text) {
    result->Interface_SetString(text.data(), text.size());
}

std::string BytesOf(IDataRef* data) {
    std::string bytes(static_cast<size_t>(data->Interface_GetSize()), '\0');
    if (const char* direct = data->Interface_GetData())
        bytes.assign(direct, bytes.size());
    else
        bytes.resize(static_cast<size_t>(data->Interface_Read(bytes.data(), bytes.size(), 0)));
    return bytes;
}

} // namespace

// ---- Metadata and definition ----

TEST_API const char* GetVireloModuleName() {
    return "VhostTest";
}
TEST_API const char* GetModuleVersion() {
    return "0.1";
}
TEST_API const char* GetState() {
    return "test";
}
TEST_API const char* GetModuleDefinition() {
    const char* replacement = std::getenv("VHOST_TEST_DEFINITION");
    return replacement ? replacement : sDefinition;
}

TEST_API IUserDefinedType* vt_CreateBox(unsigned int typeId, IContext*) {
    return new Box(typeId);
}

// ---- Functions ----

TEST_API unsigned int vt_ToString(unsigned int count, IVariant** arguments, IVariant* result,
                                  IModuleInfo*, IContext*) {
    if (unsigned int status = Check(count, arguments, 0, eTypeUserDefined)) return status;
    AutoRefPtr<IUserDefinedType> object(arguments[0]->Interface_GetUserDefined());
    if (!object) return Status(1, kStatusNoObject);
    SetString(result, static_cast<Box*>(object.Get())->fText);
    return 0;
}

TEST_API unsigned int vt_FromString(unsigned int count, IVariant** arguments, IVariant* result,
                                    IModuleInfo*, IContext* context) {
    if (unsigned int status = Check(count, arguments, 0, eTypeString)) return status;
    const std::string text = StringOf(arguments[0]);
    if (text.empty()) {
        context->TriggerErrorHandler(eSeverityRecoverable, "JSON", "Test.Empty", "empty text");
        return 0;
    }
    AutoRefPtr<ITypeObject> type(
        context->Interface_GetTypeObject(context->Interface_GetTypeId("JSON")));
    AutoRefPtr<IUserDefinedType> object(type ? type->Interface_CreateInstance() : nullptr);
    if (!object) return Status(0, 8);
    static_cast<Box*>(object.Get())->fText = text;
    result->Interface_SetUserDefined(object.Get());
    return 0;
}

TEST_API unsigned int vt_AddNumbers(unsigned int count, IVariant** arguments, IVariant* result,
                                    IModuleInfo*, IContext*) {
    for (unsigned int i = 0; i < 2; ++i)
        if (unsigned int status = Check(count, arguments, i, eTypeNumber)) return status;
    result->Interface_SetNumber(arguments[0]->Interface_GetNumber() +
                                arguments[1]->Interface_GetNumber());
    return 0;
}

TEST_API unsigned int vt_AddStrings(unsigned int count, IVariant** arguments, IVariant* result,
                                    IModuleInfo*, IContext*) {
    for (unsigned int i = 0; i < 2; ++i)
        if (unsigned int status = Check(count, arguments, i, eTypeString)) return status;
    SetString(result, StringOf(arguments[0]) + StringOf(arguments[1]));
    return 0;
}

template <class T>
unsigned int CountVector(unsigned int count, IVariant** arguments, IVariant* result) {
    if (unsigned int status = Check(count, arguments, 0, eTypeVector)) return status;
    AutoRefPtr<IObject> vector(arguments[0]->Interface_GetVector());
    if (!vector) return Status(1, kStatusWrongType);
    result->Interface_SetNumber(
        static_cast<double>(static_cast<IVector<T>*>(vector.Get())->Interface_Size()));
    return 0;
}

TEST_API unsigned int vt_CountNumbers(unsigned int count, IVariant** arguments, IVariant* result,
                                      IModuleInfo*, IContext*) {
    return CountVector<double>(count, arguments, result);
}

TEST_API unsigned int vt_CountStrings(unsigned int count, IVariant** arguments, IVariant* result,
                                      IModuleInfo*, IContext*) {
    return CountVector<std::string>(count, arguments, result);
}

TEST_API unsigned int vt_Split(unsigned int count, IVariant** arguments, IVariant* result,
                               IModuleInfo*, IContext* context) {
    if (unsigned int status = Check(count, arguments, 0, eTypeString)) return status;
    AutoRefPtr<IObject> object(context->Interface_CreateVector(eTypeString));
    auto* vector = static_cast<IVector<std::string>*>(object.Get());
    const std::string text = StringOf(arguments[0]);
    size_t start = 0;
    while (!text.empty()) {
        const size_t comma = text.find(',', start);
        vector->Interface_PushBack(text.substr(start, comma - start));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    result->Interface_SetVector(object.Get());
    return 0;
}

TEST_API unsigned int vt_Reverse(unsigned int count, IVariant** arguments, IVariant* result,
                                 IModuleInfo*, IContext*) {
    if (unsigned int status = Check(count, arguments, 0, eTypeDataRef)) return status;
    AutoRefPtr<IDataRef> input(arguments[0]->Interface_GetDataRef());
    AutoRefPtr<IDataRef> output(result->Interface_GetDataRef());
    if (!input || !output) return Status(1, kStatusWrongType);
    const std::string bytes = BytesOf(input.Get());
    const std::string reversed(bytes.rbegin(), bytes.rend());
    output->Interface_Assign(reversed.data(), reversed.size());
    return 0;
}

TEST_API unsigned int vt_IsDirect(unsigned int count, IVariant** arguments, IVariant* result,
                                  IModuleInfo*, IContext*) {
    if (unsigned int status = Check(count, arguments, 0, eTypeDataRef)) return status;
    AutoRefPtr<IDataRef> input(arguments[0]->Interface_GetDataRef());
    result->Interface_SetBoolean(input && input->Interface_GetData() ? 1 : 0);
    return 0;
}

TEST_API unsigned int vt_IsNone(unsigned int count, IVariant** arguments, IVariant* result,
                                IModuleInfo*, IContext*) {
    if (unsigned int status = Check(count, arguments, 0, eTypeUserDefined)) return status;
    AutoRefPtr<IUserDefinedType> object(arguments[0]->Interface_GetUserDefined());
    result->Interface_SetBoolean(object ? 0 : 1);
    return 0;
}

// "FILE:LINE value=N" from the call-stack text and the logger value; also logs one line.
TEST_API unsigned int vt_Where(unsigned int, IVariant**, IVariant* result, IModuleInfo*,
                               IContext* context) {
    context->DebugLog("where", 3, "asked");
    SetString(result, context->PrintCallStack() +
                          " value=" + std::to_string(context->Interface_GetLoggerValue()));
    return 0;
}

// JSON.FromString and ToString imported through the host, as the real module imports them.
TEST_API unsigned int vt_Import(unsigned int count, IVariant** arguments, IVariant* result,
                                IModuleInfo*, IContext* context) {
    if (unsigned int status = Check(count, arguments, 0, eTypeString)) return status;
    const char* const parseTypes[] = {"JSON", "STRING", ""};
    const char* const printTypes[] = {"STRING", "JSON", ""};
    IModuleInfo* parseInfo = nullptr;
    IModuleInfo* printInfo = nullptr;
    VireloFunction parse = GetFunction_(context, "JSON.FromString", 3, parseTypes, parseInfo);
    VireloFunction print = GetFunction_(context, "ToString", 3, printTypes, printInfo);
    if (!parse || !print || !parseInfo || !printInfo) return Status(0, 16);
    AutoRefPtr<IVariant> parsed(context->Interface_CreateVariant());
    IVariant* parseArguments[] = {arguments[0]};
    if (unsigned int status = parse(1, parseArguments, parsed.Get(), parseInfo, context))
        return status;
    IVariant* printArguments[] = {parsed.Get()};
    return print(1, printArguments, result, printInfo, context);
}

// Reports MESSAGE, then says whether the context saw it; ResetError clears that again.
TEST_API unsigned int vt_Fail(unsigned int count, IVariant** arguments, IVariant* result,
                              IModuleInfo*, IContext* context) {
    if (unsigned int status = Check(count, arguments, 0, eTypeString)) return status;
    const bool before = context->Interface_HasError();
    context->TriggerErrorHandler(eSeveritySevere, "TEST", "Test.Fail", StringOf(arguments[0]));
    char text[64] = {};
    context->Interface_GetErrorText(text, sizeof text);
    const bool after = context->Interface_HasError();
    context->Interface_ResetError();
    const bool reset = !context->Interface_HasError();
    SetString(result, std::string(before ? "1" : "0") + (after ? "1" : "0") + (reset ? "1" : "0") +
                          " " + text);
    return 0;
}

TEST_API unsigned int vt_WrongKind(unsigned int, IVariant**, IVariant* result, IModuleInfo*,
                                   IContext*) {
    SetString(result, "not a number");
    return 0;
}
