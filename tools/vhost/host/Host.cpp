// Host: module loading and the function call.
#include "tools/vhost/host/Host.h"

#include "tools/vhost/host/HostDataRef.h"
#include "tools/vhost/host/HostVector.h"

namespace vhost {

Host::Host(std::ostream& diagnostics) : fContext(new HostContext(fRegistry, diagnostics)) {}

Host::~Host() {
    fContext.Reset();
    while (!fModules.empty())
        fModules.pop_back();
}

bool Host::LoadModule(const std::string& path, std::string& error) {
    std::unique_ptr<ModuleLibrary> module = ModuleLibrary::Open(path, error);
    if (!module) return false;
    if (!fRegistry.AddModule(*module, error)) {
        error = path + ": malformed module definition: " + error;
        return false;
    }
    fModules.push_back(std::move(module));
    return true;
}

Virelo::AutoRefPtr<HostVariant> Host::CreateResult(const TypeRef& type) {
    Virelo::AutoRefPtr<HostVariant> result = HostVariant::Create();
    switch (type.fCode) {
    case Virelo::eTypeBoolean:
        result->Interface_SetBoolean(0);
        break;
    case Virelo::eTypeNumber:
        result->Interface_SetNumber(0);
        break;
    case Virelo::eTypeString:
        result->Interface_SetString(nullptr, 0);
        break;
    case Virelo::eTypeDataRef:
        // Modules cannot create data blocks, so a DATAREF result comes with one to fill.
        result->Interface_SetDataRef(HostDataRef::Create({}, HostDataRef::EAccess::eDirect).Get());
        break;
    case Virelo::eTypeVector: {
        Virelo::AutoRefPtr<Virelo::IObject> vector(CreateHostVector(type.fElement));
        result->Interface_SetVector(vector.Get());
        break;
    }
    default:
        if (type.IsUserDefined()) result->SetNone(type.fCode);
        break;
    }
    return result;
}

Virelo::AutoRefPtr<HostVariant> Host::CreateNone(unsigned int typeId) {
    Virelo::AutoRefPtr<HostVariant> variant = HostVariant::Create();
    variant->SetNone(typeId);
    return variant;
}

unsigned int Host::Call(const RegisteredFunction& function,
                        const std::vector<Virelo::IVariant*>& arguments, Virelo::IVariant* result,
                        const std::string& file, unsigned int line) {
    if (!function.IsAvailable())
        throw ModuleFault(function.fName + " is declared but " + function.fSymbol +
                          " is missing from the module");
    fContext->SetLocation(file, line);
    fContext->BeginCall();
    unsigned int status = 0;
    try {
        status = function.fFunction(static_cast<unsigned int>(arguments.size()),
                                    const_cast<Virelo::IVariant**>(arguments.data()), result,
                                    function.fModule->Info(), fContext.Get());
    } catch (...) {
        throw ModuleFault(function.fName + " (" + function.fSymbol +
                          ") let a C++ exception escape");
    }
    if (status != 0) fContext->SetLastError("status " + std::to_string(status));
    return status;
}

} // namespace vhost
