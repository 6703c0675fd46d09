// Context: the host's IContext, handed to every module call. It knows the registered module
// types by name and records the errors a module reports through the error trigger. What this
// host does not offer (a logger, host vectors, host functions) it answers with null.
#pragma once

#include <host/InterfaceImpl.h>
#include <host/VireloInterfaces.h>

#include <map>
#include <string>
#include <vector>

namespace embed {

struct ErrorReport {
    unsigned int fSeverity = 0;
    std::string fSource;
    std::string fId;
    std::string fMessage;
};

class Context final : public Virelo::InterfaceImpl<Virelo::IContext> {
public:
    static Virelo::AutoRefPtr<Context> Create();

    /// Gives a module type its id (21, 22, ...), which Interface_GetTypeId answers from now on.
    unsigned int RegisterType(const std::string& name);
    /// The reports triggered since the last call of this, oldest first.
    std::vector<ErrorReport> TakeReports();

    void Interface_TriggerError(unsigned int severity, const char* source, const char* errorId,
                                const char* message) override;
    unsigned int Interface_GetTypeId(const char* typeName) override;
    Virelo::ITypeObject* Interface_GetTypeObject(unsigned int typeId) override;
    Virelo::ILogger* Interface_GetLogger() override { return nullptr; }
    unsigned int Interface_GetLoggerValue() const override { return 0; }
    unsigned long long Interface_GetCallStack(char* buffer, unsigned long long size) override;
    Virelo::IObject* Interface_CreateVector(unsigned int elementType) override;
    Virelo::IVariant* Interface_CreateVariant() override;
    bool Interface_HasError() const override { return fHasError; }
    unsigned long long Interface_GetErrorText(char* buffer, unsigned long long size) const override;
    void Interface_ResetError() override { fHasError = false; }
    bool Interface_IsInterrupted() const override { return false; }
    unsigned int Interface_GetInterfaceId() const override { return 1; }
    Virelo::VireloFunction Interface_GetFunction(const char* name, unsigned int typeCount,
                                                 const char* const* types,
                                                 Virelo::IModuleInfo*& moduleInfo) override;

private:
    Context() = default;

    std::map<std::string, unsigned int> fTypes;
    std::vector<ErrorReport> fReports;
    bool fHasError = false;
};

} // namespace embed
