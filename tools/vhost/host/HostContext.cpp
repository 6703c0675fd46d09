// HostContext: the context operations, with the type objects and the logger it hands out.
#include "tools/vhost/host/HostContext.h"

#include "tools/vhost/host/HostVariant.h"
#include "tools/vhost/host/HostVector.h"
#include "tools/vhost/host/ModuleLibrary.h"
#include "tools/vhost/host/Registry.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace vhost {

namespace {

// Creates instances of one registered type through its factory. Holds a reference to the
// context, which the factory receives.
class HostTypeObject final : public RefCounted<Virelo::ITypeObject> {
public:
    HostTypeObject(const RegisteredType& type, Virelo::IContext* context)
        : fType(type), fContext(Virelo::AutoRefPtr<Virelo::IContext>::Share(context)) {}

    Virelo::IUserDefinedType* Interface_CreateInstance() override {
        if (!fType.fFactory) return nullptr;
        try {
            return fType.fFactory(fType.fId, fContext.Get());
        } catch (...) {
            return nullptr; // a factory must not throw; the caller sees no instance
        }
    }

private:
    const RegisteredType& fType;
    Virelo::AutoRefPtr<Virelo::IContext> fContext;
};

// Writes log messages as `log: debug LEVEL, line N: TEXT: DETAIL`.
class HostLogger final : public RefCounted<Virelo::ILogger> {
public:
    explicit HostLogger(std::ostream& out) : fOut(out) {}

    void Interface_DebugLog(const char* text, unsigned char level, const char* detail,
                            unsigned int contextValue, Virelo::IContext*) override {
        Write("debug " + std::to_string(level), text, detail, contextValue);
    }
    void Interface_ErrorLog(const char* text, const char* detail, unsigned int contextValue,
                            Virelo::IContext*) override {
        Write("error", text, detail, contextValue);
    }

private:
    void Write(const std::string& kind, const char* text, const char* detail, unsigned int line) {
        fOut << "log: " << kind << ", line " << line << ": " << (text ? text : "");
        if (detail && *detail) fOut << ": " << detail;
        fOut << '\n';
    }

    std::ostream& fOut;
};

const char* OrEmpty(const char* text) {
    return text ? text : "";
}

} // namespace

std::string ErrorReport::Text() const {
    return std::to_string(fSeverity) + " " + fSource + " " + fId + ": " + fMessage;
}

unsigned long long CopyTextOut(const std::string& text, char* buffer, unsigned long long size) {
    if (buffer && size > 0) {
        const size_t count = static_cast<size_t>(std::min<unsigned long long>(text.size(), size));
        std::memcpy(buffer, text.data(), count);
        if (count < size) buffer[count] = '\0';
    }
    return text.size();
}

HostContext::HostContext(const Registry& registry, std::ostream& diagnostics)
    : fRegistry(registry), fDiagnostics(diagnostics), fLogger(new HostLogger(diagnostics)) {}

void HostContext::SetLocation(std::string file, unsigned int line) {
    fFile = std::move(file);
    fLine = line;
}

void HostContext::BeginCall() {
    Interface_ResetError();
}

std::string HostContext::TakeLastError() {
    return std::exchange(fLastError, std::string());
}

void HostContext::Interface_TriggerError(unsigned int severity, const char* source,
                                         const char* errorId, const char* message) {
    ErrorReport report{severity, OrEmpty(source), OrEmpty(errorId), OrEmpty(message)};
    if (!fQuiet) {
        // Prefixed like the script's own errors, so editors and CI logs can jump to the line.
        if (!fFile.empty()) fDiagnostics << fFile << ':' << fLine << ": ";
        fDiagnostics << "error: " << report.Text() << '\n';
    }
    fLastError = report.Text();
    fCallHasError = true;
    fCallErrorText = report.fMessage;
    fReports.push_back(std::move(report));
}

unsigned int HostContext::Interface_GetTypeId(const char* typeName) {
    const RegisteredType* type =
        typeName ? fRegistry.FindType(std::string_view(typeName)) : nullptr;
    return type ? type->fId : 0;
}

Virelo::ITypeObject* HostContext::Interface_GetTypeObject(unsigned int typeId) {
    const RegisteredType* type = fRegistry.FindType(typeId);
    return type ? new HostTypeObject(*type, this) : nullptr;
}

Virelo::ILogger* HostContext::Interface_GetLogger() {
    return Virelo::AutoRefPtr<Virelo::ILogger>(fLogger).Detach();
}

unsigned long long HostContext::Interface_GetCallStack(char* buffer, unsigned long long size) {
    return CopyTextOut(fFile + ":" + std::to_string(fLine), buffer, size);
}

Virelo::IObject* HostContext::Interface_CreateVector(unsigned int elementType) {
    return CreateHostVector(elementType);
}

Virelo::IVariant* HostContext::Interface_CreateVariant() {
    return HostVariant::Create().Detach();
}

unsigned long long HostContext::Interface_GetErrorText(char* buffer,
                                                       unsigned long long size) const {
    return CopyTextOut(fCallHasError ? fCallErrorText : std::string(), buffer, size);
}

void HostContext::Interface_ResetError() {
    fCallHasError = false;
    fCallErrorText.clear();
}

Virelo::VireloFunction HostContext::Interface_GetFunction(const char* name, unsigned int typeCount,
                                                          const char* const* types,
                                                          Virelo::IModuleInfo*& moduleInfo) {
    if (!name || !types || typeCount == 0 || !types[0] || !*types[0]) return nullptr;
    // The list ends at the first "" (or null), but never reads past typeCount entries.
    std::vector<std::string_view> parameters;
    unsigned int i = 1;
    for (; i < typeCount && types[i] && *types[i]; ++i)
        parameters.emplace_back(types[i]);
    const RegisteredFunction* function = fRegistry.FindSignature(name, types[0], parameters);
    if (!function) return nullptr;
    moduleInfo = function->fModule->Info();
    return function->fFunction;
}

} // namespace vhost
