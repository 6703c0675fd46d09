// Registry: the types and script functions of every loaded module, in definition order.
// Types get ids from eTypeUserDefined upward in load order. A function whose symbol the
// library lacks stays registered as unavailable, so scripts get a precise error for it.
#pragma once

#include "host/VireloInterfaces.h"

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vhost {

class ModuleLibrary;

using TypeFactory = Virelo::IUserDefinedType* (*)(unsigned int typeId, Virelo::IContext* context);

/// A type name of a signature resolved to its variant type code.
struct TypeRef {
    std::string fName;         ///< as written: "STRING", "VECTOR<NUMBER>", "JSON"
    unsigned int fCode = 0;    ///< the variant type code; the type id for user-defined types
    unsigned int fElement = 0; ///< the element code of a vector, else 0

    bool IsUserDefined() const { return fCode >= Virelo::eTypeUserDefined; }
    bool IsVector() const { return fCode == Virelo::eTypeVector; }
};

struct RegisteredType {
    unsigned int fId = 0;
    std::string fName;
    std::string fFactorySymbol;
    TypeFactory fFactory = nullptr; ///< null when the library lacks the symbol
    const ModuleLibrary* fModule = nullptr;
};

struct RegisteredFunction {
    std::string fName;
    TypeRef fReturn;
    std::vector<TypeRef> fParameters;
    std::string fSymbol;
    Virelo::VireloFunction fFunction = nullptr; ///< null when the library lacks the symbol
    const ModuleLibrary* fModule = nullptr;

    bool IsAvailable() const { return fFunction != nullptr; }
};

class Registry {
public:
    /// Registers the module's types, then its functions. All or nothing: on an unknown or
    /// duplicate type name returns false with a message and registers nothing.
    bool AddModule(const ModuleLibrary& module, std::string& error);

    /// Resolves a signature type name; false when unknown.
    bool ResolveType(std::string_view name, TypeRef& out) const;
    const RegisteredType* FindType(std::string_view name) const;
    const RegisteredType* FindType(unsigned int id) const;
    /// Every function of that script name, available or not, in definition order.
    const std::vector<const RegisteredFunction*>& FindFunctions(const std::string& name) const;
    /// The first available function with exactly this name, return type and parameter types.
    const RegisteredFunction* FindSignature(std::string_view name, std::string_view returnType,
                                            const std::vector<std::string_view>& parameters) const;
    /// The first function entry naming `symbol`, available or not.
    const RegisteredFunction* FindSymbol(std::string_view symbol) const;

    const std::deque<RegisteredType>& Types() const { return fTypes; }
    const std::deque<RegisteredFunction>& Functions() const { return fFunctions; }

private:
    // Deques keep the addresses handed out stable while later modules are added.
    std::deque<RegisteredType> fTypes;
    std::deque<RegisteredFunction> fFunctions;
    std::unordered_map<std::string, std::vector<const RegisteredFunction*>> fByName;
};

} // namespace vhost
