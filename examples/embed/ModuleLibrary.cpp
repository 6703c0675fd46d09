// ModuleLibrary: dlopen and dlsym, the text exports, and the look-ups of symbols by their
// entries in the module definition text.
#include "ModuleLibrary.h"

#include <host/InterfaceImpl.h>

#include <dlfcn.h>

#include <stdexcept>

namespace embed {

namespace {

using TextExport = const char* (*)();

class ModuleInfo final : public Virelo::InterfaceImpl<Virelo::IModuleInfo> {};

std::string LastDlError() {
    const char* reason = dlerror();
    return reason ? reason : "unknown reason";
}

} // namespace

ModuleLibrary::ModuleLibrary(const std::string& path) : fInfo(new ModuleInfo()) {
    // RTLD_LOCAL: the module's symbols stay out of the way of other modules'.
    fHandle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!fHandle) throw std::runtime_error("cannot load " + path + ": " + LastDlError());
    const auto definition = reinterpret_cast<TextExport>(Symbol("GetModuleDefinition"));
    const char* text = definition ? definition() : nullptr;
    if (!text) {
        dlclose(fHandle);
        throw std::runtime_error(path + " is no Virelo module: it has no module definition");
    }
    fDefinition = text;
}

ModuleLibrary::~ModuleLibrary() {
    dlclose(fHandle);
}

std::string ModuleLibrary::Metadata(const char* exportName) const {
    const auto getter = reinterpret_cast<TextExport>(Symbol(exportName));
    const char* text = getter ? getter() : nullptr;
    return text ? text : "";
}

size_t ModuleLibrary::FunctionCount() const {
    size_t count = 0;
    for (size_t at = fDefinition.find(" CONST_FUNCTION "); at != std::string::npos;
         at = fDefinition.find(" CONST_FUNCTION ", at + 1))
        ++count;
    return count;
}

TypeFactory ModuleLibrary::FindTypeFactory(const std::string& typeName) const {
    return reinterpret_cast<TypeFactory>(SymbolAfter(" TYPE " + typeName + " : "));
}

Virelo::VireloFunction ModuleLibrary::FindFunction(const std::string& signature) const {
    return reinterpret_cast<Virelo::VireloFunction>(SymbolAfter(" " + signature + " : "));
}

unsigned int ModuleLibrary::Call(Virelo::VireloFunction function,
                                 const std::vector<Virelo::IVariant*>& arguments,
                                 Virelo::IVariant* result, Virelo::IContext& context) const {
    // The arguments stay the caller's: the module adds references to what it keeps.
    return function(static_cast<unsigned int>(arguments.size()),
                    const_cast<Virelo::IVariant**>(arguments.data()), result, fInfo.Get(),
                    &context);
}

void* ModuleLibrary::SymbolAfter(const std::string& entry) const {
    const size_t at = fDefinition.find(entry);
    if (at == std::string::npos)
        throw std::runtime_error("the module definition has no entry \"" + entry + "\"");
    const size_t start = at + entry.size();
    const std::string name = fDefinition.substr(start, fDefinition.find(' ', start) - start);
    void* symbol = Symbol(name);
    if (!symbol) throw std::runtime_error("the module lacks " + name + ": " + LastDlError());
    return symbol;
}

void* ModuleLibrary::Symbol(const std::string& name) const {
    return dlsym(fHandle, name.c_str());
}

} // namespace embed
