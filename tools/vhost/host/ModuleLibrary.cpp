// ModuleLibrary: dlopen/dlsym wrapper and the reading of a module's exported texts.
#include "tools/vhost/host/ModuleLibrary.h"

#include "tools/vhost/host/RefCounted.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

namespace vhost {

namespace {

using TextExport = const char* (*)();

constexpr const char* sNameExport = "GetVireloModuleName";
constexpr const char* sDefinitionExport = "GetModuleDefinition";

class HostModuleInfo final : public RefCounted<Virelo::IModuleInfo> {};

// A text export is a plain C function; false when it is missing, returns null or throws
// (it should not, but a broken module must not take the host down).
bool CallTextExport(void* symbol, std::string& out) {
    out.clear();
    if (!symbol) return false;
    try {
        const char* text = reinterpret_cast<TextExport>(symbol)();
        if (!text) return false;
        out = text;
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

const std::vector<std::string>& ModuleLibrary::MetadataExports() {
    static const std::vector<std::string> sExports = {
        "GetVireloModuleName",
        "GetModuleVersion",
        "GetSupportedPlatforms",
        "GetState",
        "GetDownwardsCompatibility",
        "GetSDKDependency",
        "GetModuleDependencies",
        "GetModuleDependenciesOptional",
        "GetModuleDependenciesLoadBefore",
        "GetAlternativeFunctionDependencies",
        "GetAlternativeProcedureDependencies",
        "GetOptionalFunctionDependencies",
        "GetOptionalProcedureDependencies",
        "GetModuleVireloVersion",
        "GetVireloSDKVersion",
    };
    return sExports;
}

ModuleLibrary::ModuleLibrary(std::string path, void* handle)
    : fPath(std::move(path)), fHandle(handle), fInfo(new HostModuleInfo()) {}

ModuleLibrary::~ModuleLibrary() {
    if (fHandle) dlclose(fHandle);
}

void* ModuleLibrary::FindSymbol(const std::string& name) const {
    return dlsym(fHandle, name.c_str());
}

std::unique_ptr<ModuleLibrary> ModuleLibrary::Open(const std::string& path, std::string& error) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        error = "module " + path + " not found";
        return nullptr;
    }
    // dlopen searches the library path for a bare name; "./" keeps it to the file given.
    const std::string openPath = path.find('/') == std::string::npos ? "./" + path : path;
    void* handle = dlopen(openPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* reason = dlerror();
        error = path + " is not a module: " + (reason ? reason : "it cannot be loaded");
        return nullptr;
    }
    std::unique_ptr<ModuleLibrary> module(new ModuleLibrary(path, handle));
    void* nameExport = module->FindSymbol(sNameExport);
    void* definitionExport = module->FindSymbol(sDefinitionExport);
    if (!nameExport || !definitionExport) {
        error = path + " is not a module: it exports no " +
                (nameExport ? sDefinitionExport : sNameExport);
        return nullptr;
    }
    for (const std::string& name : MetadataExports()) {
        MetadataValue value{name, {}};
        CallTextExport(module->FindSymbol(name), value.fValue);
        module->fMetadata.push_back(std::move(value));
    }
    module->fName = module->fMetadata.front().fValue;
    std::string parseError;
    if (!CallTextExport(definitionExport, module->fDefinitionText)) {
        error = path + ": malformed module definition: " + sDefinitionExport + " gives no text";
        return nullptr;
    }
    if (!ParseModuleDefinition(module->fDefinitionText, module->fDefinition, parseError)) {
        error = path + ": malformed module definition: " + parseError;
        return nullptr;
    }
    return module;
}

} // namespace vhost
