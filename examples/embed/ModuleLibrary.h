// ModuleLibrary: one module file opened with dlopen, its metadata exports, its definition
// text, and the symbols that text names. The library stays loaded while this object lives:
// every object the module made must be released before it goes.
#pragma once

#include <host/VireloInterfaces.h>

#include <string>
#include <vector>

namespace embed {

/// The factory a module names in a TYPE entry: a new value of the type (one reference).
using TypeFactory = Virelo::IUserDefinedType* (*)(unsigned int typeId, Virelo::IContext* context);

class ModuleLibrary {
public:
    /// Loads the module at `path`; throws std::runtime_error when it is no module.
    explicit ModuleLibrary(const std::string& path);
    ~ModuleLibrary();
    ModuleLibrary(const ModuleLibrary&) = delete;
    ModuleLibrary& operator=(const ModuleLibrary&) = delete;

    /// A metadata export such as "GetModuleVersion"; empty when the module lacks it.
    std::string Metadata(const char* exportName) const;
    /// The definition text: " TYPE NAME : FACTORY : FLAGS" and
    /// " CONST_FUNCTION RESULT NAME (PARAMETERS) : SYMBOL" entries.
    const std::string& Definition() const { return fDefinition; }
    /// How many CONST_FUNCTION entries the definition holds.
    size_t FunctionCount() const;
    /// The factory of a type the definition declares; throws when there is none.
    TypeFactory FindTypeFactory(const std::string& typeName) const;
    /// A function by its script signature, e.g. "JSON.FromString (STRING)"; throws when the
    /// definition has no such entry or the library lacks its symbol.
    Virelo::VireloFunction FindFunction(const std::string& signature) const;

    /// Calls a function of this module; returns its status word (0: success).
    unsigned int Call(Virelo::VireloFunction function,
                      const std::vector<Virelo::IVariant*>& arguments, Virelo::IVariant* result,
                      Virelo::IContext& context) const;

private:
    /// The symbol that follows `entry` in the definition text, looked up in the library.
    void* SymbolAfter(const std::string& entry) const;
    void* Symbol(const std::string& name) const;

    void* fHandle = nullptr;
    std::string fDefinition;
    // Handed through to the module's functions unchanged; it identifies this module to them.
    Virelo::AutoRefPtr<Virelo::IModuleInfo> fInfo;
};

} // namespace embed
