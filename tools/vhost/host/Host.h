// Host: the host side as one object: loaded modules, their registry and the context, and
// the call of a registered function. The interpreter, C++ tests and benchmarks all host
// modules through it.
#pragma once

#include "host/VireloInterfaces.h"
#include "tools/vhost/host/HostContext.h"
#include "tools/vhost/host/HostVariant.h"
#include "tools/vhost/host/ModuleLibrary.h"
#include "tools/vhost/host/Registry.h"

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vhost {

/// Thrown by Host::Call for an unavailable function and when a C++ exception escapes a
/// module function, and by the host services (HostServices.h) when a module refuses; the
/// message is ready for the script's error line.
class ModuleFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Host {
public:
    /// Error reports and log messages go to `diagnostics`, which must outlive the host.
    explicit Host(std::ostream& diagnostics = std::cerr);
    /// Releases the context, then unloads the modules in reverse load order. Every module
    /// object the caller still holds must be released before.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Loads a module and registers its definition. False with a message when the file is
    /// missing, not a module, or its definition is malformed or names unknown types.
    bool LoadModule(const std::string& path, std::string& error);

    const std::vector<std::unique_ptr<ModuleLibrary>>& Modules() const { return fModules; }
    const Registry& GetRegistry() const { return fRegistry; }
    HostContext& Context() { return *fContext; }

    /// A result variant for `type`: the empty value of the kind (a NONE for user-defined
    /// types, an empty host data block and host vector for DATAREF and vectors).
    static Virelo::AutoRefPtr<HostVariant> CreateResult(const TypeRef& type);
    /// An argument variant holding no object of user-defined type `typeId`.
    static Virelo::AutoRefPtr<HostVariant> CreateNone(unsigned int typeId);

    /// Calls an available function with the context's per-call error state reset and the
    /// call site set; a status other than 0 becomes the context's last error `status N`.
    /// Returns the status word. Throws ModuleFault for an unavailable function or when the
    /// module lets an exception out.
    unsigned int Call(const RegisteredFunction& function,
                      const std::vector<Virelo::IVariant*>& arguments, Virelo::IVariant* result,
                      const std::string& file = "", unsigned int line = 0);

private:
    std::vector<std::unique_ptr<ModuleLibrary>> fModules;
    Registry fRegistry;
    Virelo::AutoRefPtr<HostContext> fContext;
};

} // namespace vhost
