// Registry: type-name resolution and the function look-ups by name, signature and symbol.
#include "tools/vhost/host/Registry.h"

#include "tools/vhost/host/ModuleLibrary.h"

namespace vhost {

namespace {

struct BuiltinType {
    std::string_view fName;
    unsigned int fCode;
    unsigned int fElement;
};

constexpr BuiltinType sBuiltinTypes[] = {
    {"STRING", Virelo::eTypeString, 0},
    {"NUMBER", Virelo::eTypeNumber, 0},
    {"BOOLEAN", Virelo::eTypeBoolean, 0},
    {"DATAREF", Virelo::eTypeDataRef, 0},
    {"VECTOR<STRING>", Virelo::eTypeVector, Virelo::eTypeString},
    {"VECTOR<NUMBER>", Virelo::eTypeVector, Virelo::eTypeNumber},
    {"VECTOR<BOOLEAN>", Virelo::eTypeVector, Virelo::eTypeBoolean},
};

} // namespace

bool Registry::ResolveType(std::string_view name, TypeRef& out) const {
    out = TypeRef{std::string(name), 0, 0};
    for (const BuiltinType& builtin : sBuiltinTypes) {
        if (builtin.fName == name) {
            out.fCode = builtin.fCode;
            out.fElement = builtin.fElement;
            return true;
        }
    }
    if (const RegisteredType* type = FindType(name)) {
        out.fCode = type->fId;
        return true;
    }
    return false;
}

bool Registry::AddModule(const ModuleLibrary& module, std::string& error) {
    const ModuleDefinition& definition = module.Definition();
    // New entries are staged and appended only when the whole definition resolves, so a
    // failure leaves the registry as it was and earlier addresses stay valid.
    std::vector<RegisteredType> types;
    auto resolve = [&](std::string_view name, TypeRef& out) {
        if (ResolveType(name, out)) return true;
        for (const RegisteredType& type : types) {
            if (type.fName == name) {
                out.fCode = type.fId;
                return true;
            }
        }
        return false;
    };
    for (const TypeEntry& entry : definition.fTypes) {
        TypeRef existing;
        if (resolve(entry.fName, existing)) {
            error = "type " + entry.fName + " is already defined";
            return false;
        }
        RegisteredType type;
        type.fId =
            Virelo::eTypeUserDefined + static_cast<unsigned int>(fTypes.size() + types.size());
        type.fName = entry.fName;
        type.fFactorySymbol = entry.fFactory;
        type.fFactory = reinterpret_cast<TypeFactory>(module.FindSymbol(entry.fFactory));
        type.fModule = &module;
        types.push_back(std::move(type));
    }
    std::vector<RegisteredFunction> functions;
    for (const FunctionEntry& entry : definition.fFunctions) {
        RegisteredFunction function;
        function.fName = entry.fName;
        function.fSymbol = entry.fSymbol;
        function.fModule = &module;
        if (!resolve(entry.fReturnType, function.fReturn)) {
            error = "unknown type " + entry.fReturnType + " in " + FormatFunctionEntry(entry);
            return false;
        }
        for (const std::string& parameter : entry.fParameters) {
            TypeRef type;
            if (!resolve(parameter, type)) {
                error = "unknown type " + parameter + " in " + FormatFunctionEntry(entry);
                return false;
            }
            function.fParameters.push_back(std::move(type));
        }
        function.fFunction =
            reinterpret_cast<Virelo::VireloFunction>(module.FindSymbol(entry.fSymbol));
        functions.push_back(std::move(function));
    }
    for (RegisteredType& type : types)
        fTypes.push_back(std::move(type));
    for (RegisteredFunction& function : functions) {
        fFunctions.push_back(std::move(function));
        fByName[fFunctions.back().fName].push_back(&fFunctions.back());
    }
    return true;
}

const RegisteredType* Registry::FindType(std::string_view name) const {
    for (const RegisteredType& type : fTypes)
        if (type.fName == name) return &type;
    return nullptr;
}

const RegisteredType* Registry::FindType(unsigned int id) const {
    if (id < Virelo::eTypeUserDefined || id - Virelo::eTypeUserDefined >= fTypes.size())
        return nullptr;
    return &fTypes[id - Virelo::eTypeUserDefined];
}

const std::vector<const RegisteredFunction*>&
Registry::FindFunctions(const std::string& name) const {
    static const std::vector<const RegisteredFunction*> sNone;
    const auto found = fByName.find(name);
    return found == fByName.end() ? sNone : found->second;
}

const RegisteredFunction*
Registry::FindSignature(std::string_view name, std::string_view returnType,
                        const std::vector<std::string_view>& parameters) const {
    const auto found = fByName.find(std::string(name));
    if (found == fByName.end()) return nullptr;
    for (const RegisteredFunction* function : found->second) {
        if (!function->IsAvailable() || function->fReturn.fName != returnType ||
            function->fParameters.size() != parameters.size())
            continue;
        bool same = true;
        for (size_t i = 0; i < parameters.size() && same; ++i)
            same = function->fParameters[i].fName == parameters[i];
        if (same) return function;
    }
    return nullptr;
}

const RegisteredFunction* Registry::FindSymbol(std::string_view symbol) const {
    for (const RegisteredFunction& function : fFunctions)
        if (function.fSymbol == symbol) return &function;
    return nullptr;
}

} // namespace vhost
