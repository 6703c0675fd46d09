// What the host reads first: the metadata exports and the module definition text.
//
// The definition is built once at load time, one entry per row of the function table in
// table order, each entry starting with one blank (the only separator). A parameter list is
// derived from the worker's signature: the call context contributes an empty name, which
// leaves a comma that GetModuleDefinition's cleaning removes ("(STRING,)" becomes "(STRING)").
#include "host/StringHelpers.h"
#include "module/FunctionTable.h"
#include "module/ModuleExport.h"
#include "module/ScriptFunctions.h"
#include "host/FixedTexts.h"

#include <string>

namespace JsonModule {
namespace {

template <class T> struct ScriptType;
template <> struct ScriptType<JSONObjPtr> { static constexpr const char* kName = Virelo::Texts::kTypeName; };
template <> struct ScriptType<std::string> { static constexpr const char* kName = "STRING"; };
template <> struct ScriptType<double> { static constexpr const char* kName = "NUMBER"; };
template <> struct ScriptType<unsigned long> { static constexpr const char* kName = "NUMBER"; };
template <> struct ScriptType<unsigned long long> { static constexpr const char* kName = "NUMBER"; };
template <> struct ScriptType<long long> { static constexpr const char* kName = "NUMBER"; };
template <> struct ScriptType<bool> { static constexpr const char* kName = "BOOLEAN"; };
template <> struct ScriptType<DataRefPtr> { static constexpr const char* kName = "DATAREF"; };
template <> struct ScriptType<StringVectorPtr> { static constexpr const char* kName = "VECTOR<STRING>"; };
template <> struct ScriptType<NumberVectorPtr> { static constexpr const char* kName = "VECTOR<NUMBER>"; };
template <> struct ScriptType<BoolVectorPtr> { static constexpr const char* kName = "VECTOR<BOOLEAN>"; };
template <> struct ScriptType<IContext*> { static constexpr const char* kName = ""; };

template <class T> const char* TypeName() {
    return ScriptType<std::decay_t<T>>::kName;
}

template <class R, class... Params>
void AppendEntry(std::string& text, const char* scriptName, R (*)(Params...), const char* symbol) {
    text += " CONST_FUNCTION ";
    text += TypeName<R>();
    text += ' ';
    text += scriptName;
    text += " (";
    const char* separator = "";
    ((text += separator, text += TypeName<Params>(), separator = ","), ...);
    text += ") : ";
    text += symbol;
}

std::string BuildDefinition() {
    std::string text = " TYPE JSON : virelo_module_CreateJSONObj : THREADSAFE";
#define VIRELO_JSON_DEFINITION_ENTRY(scriptName, symbol, worker) \
    AppendEntry(text, scriptName, static_cast<decltype(&worker)>(nullptr), "virelo_module_" #symbol);
    VIRELO_JSON_FUNCTIONS(VIRELO_JSON_DEFINITION_ENTRY)
#undef VIRELO_JSON_DEFINITION_ENTRY
    return text;
}

/// The module definition text; cleaned in place by GetModuleDefinition.
std::string sInfo = BuildDefinition();

} // namespace
} // namespace JsonModule

// MARK: - Metadata exports

VIRELO_JSON_API const char* GetVireloModuleName() { return Virelo::Texts::kTypeName; }
VIRELO_JSON_API const char* GetModuleVersion() { return "1.16.0.0"; }
VIRELO_JSON_API const char* GetSupportedPlatforms() { return "linux,mac,windows"; }
VIRELO_JSON_API const char* GetState() { return "stable"; }
VIRELO_JSON_API const char* GetDownwardsCompatibility() { return "1.6.0"; }
VIRELO_JSON_API const char* GetSDKDependency() { return "[1.20.20.0-]"; }
VIRELO_JSON_API const char* GetModuleVireloVersion() { return "1.20.20.0-56"; }
VIRELO_JSON_API const char* GetVireloSDKVersion() { return "1.20.20.0"; }

// The module depends on no other module: every dependency list is the same empty string.
namespace {
const char* NoDependencies() {
    return "";
}
} // namespace
VIRELO_JSON_API const char* GetModuleDependencies() { return NoDependencies(); }
VIRELO_JSON_API const char* GetModuleDependenciesOptional() { return NoDependencies(); }
VIRELO_JSON_API const char* GetModuleDependenciesLoadBefore() { return NoDependencies(); }
VIRELO_JSON_API const char* GetAlternativeFunctionDependencies() { return NoDependencies(); }
VIRELO_JSON_API const char* GetAlternativeProcedureDependencies() { return NoDependencies(); }
VIRELO_JSON_API const char* GetOptionalFunctionDependencies() { return NoDependencies(); }
VIRELO_JSON_API const char* GetOptionalProcedureDependencies() { return NoDependencies(); }

/// The definition text, cleaned in place. Deliberate: all four passes run on every call; only
/// ",)" ever matches, and the cleaning is idempotent.
VIRELO_JSON_API const char* GetModuleDefinition() {
    std::string& text = JsonModule::sInfo;
    Virelo::ReplaceAllStringsInPlace(text, ",,", ",");
    Virelo::ReplaceAllStringsInPlace(text, ",)", ")");
    Virelo::ReplaceAllStringsInPlace(text, "(,", "( ");
    Virelo::ReplaceAllStringsInPlace(text, "( ,", "( ");
    return text.c_str();
}

VIRELO_JSON_API Virelo::IUserDefinedType* virelo_module_CreateJSONObj(unsigned int typeId,
                                                                     Virelo::IContext* context) {
    try {
        return new Virelo::JSONObj(typeId, context);
    } catch (...) {
        return nullptr; // out of memory: the host gets no object rather than an exception
    }
}
