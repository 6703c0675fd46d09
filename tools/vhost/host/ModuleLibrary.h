// ModuleLibrary: one loaded module file: the library handle, its metadata exports, its
// definition text read into entries, and the IModuleInfo handed to its functions. The
// library is unloaded when the object goes, so every object the module made must be
// released before.
#pragma once

#include "host/VireloInterfaces.h"
#include "tools/vhost/host/ModuleDefinition.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vhost {

struct MetadataValue {
    std::string fName;  ///< the export, e.g. "GetModuleVersion"
    std::string fValue; ///< empty when the export is missing or returns null
};

class ModuleLibrary {
public:
    /// The metadata exports in the order --info lists them.
    static const std::vector<std::string>& MetadataExports();

    /// Loads the module at `path`. Returns null with a message in `error` when the file is
    /// missing, is not a loadable library, lacks GetVireloModuleName or GetModuleDefinition,
    /// or its definition text is malformed.
    static std::unique_ptr<ModuleLibrary> Open(const std::string& path, std::string& error);

    ~ModuleLibrary();
    ModuleLibrary(const ModuleLibrary&) = delete;
    ModuleLibrary& operator=(const ModuleLibrary&) = delete;

    const std::string& Path() const { return fPath; }
    const std::string& Name() const { return fName; }
    const std::vector<MetadataValue>& Metadata() const { return fMetadata; }
    const std::string& DefinitionText() const { return fDefinitionText; }
    const ModuleDefinition& Definition() const { return fDefinition; }
    /// The exported symbol, or null when the library lacks it.
    void* FindSymbol(const std::string& name) const;
    /// Handed to the module's functions; no reference involved.
    Virelo::IModuleInfo* Info() const { return fInfo.Get(); }

private:
    ModuleLibrary(std::string path, void* handle);

    std::string fPath;
    void* fHandle;
    std::string fName;
    std::vector<MetadataValue> fMetadata;
    std::string fDefinitionText;
    ModuleDefinition fDefinition;
    Virelo::AutoRefPtr<Virelo::IModuleInfo> fInfo;
};

} // namespace vhost
