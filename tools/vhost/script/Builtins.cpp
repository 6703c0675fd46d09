// Builtins: the built-in functions and their table.
#include "tools/vhost/script/Builtins.h"

#include "tools/vhost/host/HostDataRef.h"
#include "tools/vhost/host/HostServices.h"
#include "tools/vhost/script/Display.h"
#include "tools/vhost/script/Interpreter.h"

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <sstream>

namespace vhost {

namespace {

using Arguments = std::vector<ScriptValue>;

// Refuses a call unless the arguments have exactly these kinds.
void Require(Interpreter& interpreter, const Expr& call, const Arguments& arguments,
             std::initializer_list<EValueKind> kinds, const char* usage) {
    bool fits = arguments.size() == kinds.size();
    size_t i = 0;
    for (EValueKind kind : kinds) {
        if (!fits) break;
        fits = arguments[i++].fKind == kind;
    }
    if (!fits) interpreter.Fail(call.fLine, call.fName + " takes " + usage);
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string DecodeHex(Interpreter& interpreter, const Expr& call, const std::string& text) {
    std::string bytes;
    int high = -1;
    for (char c : text) {
        if (c == ' ' || c == '\t') continue;
        const int digit = HexDigit(c);
        if (digit < 0)
            interpreter.Fail(call.fLine, call.fName + ": '" + text + "' is not hex text");
        if (high < 0) {
            high = digit;
        } else {
            bytes += static_cast<char>(high * 16 + digit);
            high = -1;
        }
    }
    if (high >= 0) interpreter.Fail(call.fLine, call.fName + ": odd number of hex digits");
    return bytes;
}

ScriptValue Print(Interpreter& interpreter, const Expr&, Arguments& arguments) {
    std::string line;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (i > 0) line += ' ';
        line += interpreter.Display(arguments[i]);
    }
    // Flushed so that output and the error reports on standard error keep their order.
    interpreter.Out() << line << '\n' << std::flush;
    return ScriptValue::Nothing();
}

// Deliberate: the got/expected forms are written between angle brackets so that empty
// strings and trailing blanks stay visible in the FAIL line.
ScriptValue Expect(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    if (arguments.size() != 2) interpreter.Fail(call.fLine, "expect takes two values");
    const std::string actual = interpreter.Display(arguments[0]);
    const std::string expected = interpreter.Display(arguments[1]);
    if (actual != expected) {
        interpreter.Out() << "FAIL " << interpreter.File() << ":" << call.fLine << ": got <"
                          << actual << ">, expected <" << expected << ">\n"
                          << std::flush;
        interpreter.NoteExpectFailure();
    }
    return ScriptValue::Nothing();
}

ScriptValue LastError(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    Require(interpreter, call, arguments, {}, "no arguments");
    return ScriptValue::String(interpreter.GetHost().Context().TakeLastError());
}

ScriptValue TypeOf(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    if (arguments.size() != 1) interpreter.Fail(call.fLine, "typeof takes one value");
    return ScriptValue::String(KindName(arguments[0]));
}

ScriptValue HexToData(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    Require(interpreter, call, arguments, {EValueKind::eString}, "one STRING");
    return ScriptValue::Data(HostDataRef::Create(DecodeHex(interpreter, call, arguments[0].fString),
                                                 HostDataRef::EAccess::eDirect));
}

ScriptValue HexToStream(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    Require(interpreter, call, arguments, {EValueKind::eString}, "one STRING");
    return ScriptValue::Data(HostDataRef::Create(DecodeHex(interpreter, call, arguments[0].fString),
                                                 HostDataRef::EAccess::eReadOnly));
}

ScriptValue DataToHex(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    Require(interpreter, call, arguments, {EValueKind::eDataRef}, "one DATAREF");
    return ScriptValue::String(FormatHex(ReadAllBytes(arguments[0].fData.Get())));
}

ScriptValue StringToHex(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    Require(interpreter, call, arguments, {EValueKind::eString}, "one STRING");
    return ScriptValue::String(FormatHex(arguments[0].fString));
}

ScriptValue ReadFile(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    Require(interpreter, call, arguments, {EValueKind::eString}, "one STRING");
    std::filesystem::path path(arguments[0].fString);
    if (path.is_relative() && !interpreter.Folder().empty())
        path = std::filesystem::path(interpreter.Folder()) / path;
    std::ifstream in(path, std::ios::binary);
    std::error_code ec;
    if (!in || std::filesystem::is_directory(path, ec))
        interpreter.Fail(call.fLine, "cannot read " + path.string());
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return ScriptValue::String(std::move(bytes));
}

// Deliberate: no fit test and no count check; the module gets exactly these arguments, so
// scripts can provoke its argument checks and read the status word through lasterror().
ScriptValue Call(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    if (arguments.empty() || arguments[0].fKind != EValueKind::eString)
        interpreter.Fail(call.fLine, "call takes a symbol name (STRING) and the arguments");
    const std::string& symbol = arguments[0].fString;
    const RegisteredFunction* function = interpreter.GetHost().GetRegistry().FindSymbol(symbol);
    if (!function)
        interpreter.Fail(call.fLine, "no module defines a function with symbol " + symbol);
    const Arguments rest(std::make_move_iterator(arguments.begin() + 1),
                         std::make_move_iterator(arguments.end()));
    return interpreter.CallFunction(*function, rest, call.fLine);
}

// ---- Host services over JSON values ----

constexpr const char* sJsonType = "JSON";

// Refuses a call unless it has exactly `count` arguments, each a JSON with its object (a
// NONE has nothing to serialize, clone or compare).
void RequireJson(Interpreter& interpreter, const Expr& call, const Arguments& arguments,
                 size_t count, const char* usage) {
    bool fits = arguments.size() == count;
    for (size_t i = 0; fits && i < count; ++i)
        fits = arguments[i].fKind == EValueKind::eObject && arguments[i].fTypeName == sJsonType;
    if (!fits) interpreter.Fail(call.fLine, call.fName + " takes " + usage);
}

CallSite Site(const Interpreter& interpreter, const Expr& call) {
    return {interpreter.File(), call.fLine};
}

ScriptValue ObjectValue(Virelo::AutoRefPtr<Virelo::IUserDefinedType> object, unsigned int typeId,
                        std::string typeName) {
    ScriptValue value;
    value.fKind = EValueKind::eObject;
    value.fObject = std::move(object);
    value.fTypeId = typeId;
    value.fTypeName = std::move(typeName);
    return value;
}

// Runs a host service; its refusal becomes a script error at the call.
template <class Service> auto Serve(Interpreter& interpreter, const Expr& call, Service service) {
    try {
        return service();
    } catch (const ModuleFault& fault) {
        interpreter.Fail(call.fLine, fault.what());
    }
}

ScriptValue Serialize(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    RequireJson(interpreter, call, arguments, 1, "one JSON");
    std::string bytes = Serve(interpreter, call, [&] {
        return SerializeValue(interpreter.GetHost(), *arguments[0].fObject,
                              Site(interpreter, call));
    });
    return ScriptValue::Data(HostDataRef::Create(std::move(bytes), HostDataRef::EAccess::eDirect));
}

ScriptValue Deserialize(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    Require(interpreter, call, arguments, {EValueKind::eDataRef}, "one DATAREF");
    Host& host = interpreter.GetHost();
    auto value = Serve(interpreter, call, [&] {
        return DeserializeValue(host, sJsonType, ReadAllBytes(arguments[0].fData.Get()),
                                Site(interpreter, call));
    });
    const unsigned int typeId = value->Interface_GetType();
    return ObjectValue(std::move(value), typeId, sJsonType);
}

ScriptValue Clone(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    RequireJson(interpreter, call, arguments, 1, "one JSON");
    const ScriptValue& original = arguments[0];
    auto copy = Serve(interpreter, call, [&] {
        return CloneValue(interpreter.GetHost(), *original.fObject, Site(interpreter, call));
    });
    return ObjectValue(std::move(copy), original.fTypeId, original.fTypeName);
}

ScriptValue Transfer(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    RequireJson(interpreter, call, arguments, 1, "one JSON");
    const ScriptValue& original = arguments[0];
    auto target = Serve(interpreter, call, [&] {
        return TransferValue(interpreter.GetHost(), *original.fObject, Site(interpreter, call));
    });
    return ObjectValue(std::move(target), original.fTypeId, original.fTypeName);
}

ScriptValue LessThan(Interpreter& interpreter, const Expr& call, Arguments& arguments) {
    RequireJson(interpreter, call, arguments, 2, "two JSON");
    return ScriptValue::Boolean(Serve(interpreter, call, [&] {
        return ValueLessThan(interpreter.GetHost(), *arguments[0].fObject, *arguments[1].fObject,
                             Site(interpreter, call));
    }));
}

// In the order help lists them; the summaries are help's one-line descriptions.
constexpr BuiltinEntry sBuiltins[] = {
    {"print", Print, "print(EXPR, ...)", "the display forms joined by one blank, then a newline"},
    {"expect", Expect, "expect(ACTUAL, EXPECTED)",
     "compares display forms; a mismatch prints FAIL, exit status 1"},
    {"lasterror", LastError, "lasterror()",
     "the last error since the previous lasterror(), or \"\""},
    {"typeof", TypeOf, "typeof(EXPR)",
     "the kind: STRING, NUMBER, BOOLEAN, DATAREF, VECTOR<...>, JSON or NONE"},
    {"hex2data", HexToData, "hex2data(HEX)", "a data block with these bytes"},
    {"hex2stream", HexToStream, "hex2stream(HEX)",
     "like hex2data, but the block offers only reads, no direct pointer"},
    {"data2hex", DataToHex, "data2hex(DATA)", "the block's bytes as upper-case hex pairs"},
    {"str2hex", StringToHex, "str2hex(STRING)", "the string's bytes as upper-case hex pairs"},
    {"readfile", ReadFile, "readfile(PATH)",
     "a file's bytes as a string (relative to the script's folder)"},
    {"call", Call, "call(SYMBOL, EXPR, ...)",
     "calls an exported symbol with exactly these arguments"},
    {"serialize", Serialize, "serialize(JSON)", "the value's serialized form as a data block"},
    {"deserialize", Deserialize, "deserialize(DATA)", "a new JSON from a serialized form"},
    {"clone", Clone, "clone(JSON)", "a deep copy through the value's Interface_Clone"},
    {"transfer", Transfer, "transfer(JSON)",
     "a new JSON sharing the value's tree through the binary-data channel"},
    {"lessthan", LessThan, "lessthan(JSON, JSON)",
     "the first value's Interface_LessThan of the second"},
};

} // namespace

const BuiltinEntry* FindBuiltinEntry(std::string_view name) {
    for (const BuiltinEntry& entry : sBuiltins)
        if (entry.fName == name) return &entry;
    return nullptr;
}

BuiltinFunction FindBuiltin(std::string_view name) {
    const BuiltinEntry* entry = FindBuiltinEntry(name);
    return entry ? entry->fFunction : nullptr;
}

std::span<const BuiltinEntry> Builtins() {
    return sBuiltins;
}

} // namespace vhost
