// HostContext: the host's IContext: the error trigger, the type registry and its type
// objects, the logger, the call-site text, host vectors and variants, and the function
// look-up modules use to import each other's functions. One context serves a whole run;
// Host::Call marks the start of each call.
#pragma once

#include "host/VireloInterfaces.h"
#include "tools/vhost/host/RefCounted.h"

#include <ostream>
#include <string>
#include <vector>

namespace vhost {

class Registry;

struct ErrorReport {
    unsigned int fSeverity = 0;
    std::string fSource;
    std::string fId;
    std::string fMessage;

    /// `SEVERITY SOURCE ID: MESSAGE`, the severity in decimal.
    std::string Text() const;
};

class HostContext final : public RefCounted<Virelo::IContext> {
public:
    /// Error reports and log messages go to `diagnostics`; both must outlive the context.
    HostContext(const Registry& registry, std::ostream& diagnostics);

    /// Stops writing error reports (they are still recorded); log messages still go out.
    /// A report is written as `FILE:LINE: error: SEVERITY SOURCE ID: MESSAGE` with the
    /// call site, or without `FILE:LINE: ` when no file is set.
    void SetQuiet(bool quiet) { fQuiet = quiet; }
    /// The call site given to the call-stack text, the logger and the error reports.
    void SetLocation(std::string file, unsigned int line);
    /// Forgets the error state of the previous call (Interface_HasError and friends).
    void BeginCall();
    /// Every report triggered so far, oldest first.
    const std::vector<ErrorReport>& Reports() const { return fReports; }
    /// The last error text since the last take (a report or `status N`); empties it.
    std::string TakeLastError();
    const std::string& PeekLastError() const { return fLastError; }
    void SetLastError(std::string text) { fLastError = std::move(text); }

    void Interface_TriggerError(unsigned int severity, const char* source, const char* errorId,
                                const char* message) override;
    unsigned int Interface_GetTypeId(const char* typeName) override;
    Virelo::ITypeObject* Interface_GetTypeObject(unsigned int typeId) override;
    Virelo::ILogger* Interface_GetLogger() override;
    unsigned int Interface_GetLoggerValue() const override { return fLine; }
    unsigned long long Interface_GetCallStack(char* buffer, unsigned long long size) override;
    Virelo::IObject* Interface_CreateVector(unsigned int elementType) override;
    Virelo::IVariant* Interface_CreateVariant() override;
    bool Interface_HasError() const override { return fCallHasError; }
    unsigned long long Interface_GetErrorText(char* buffer, unsigned long long size) const override;
    void Interface_ResetError() override;
    bool Interface_IsInterrupted() const override { return false; }
    unsigned int Interface_GetInterfaceId() const override { return sInterfaceId; }
    Virelo::VireloFunction Interface_GetFunction(const char* name, unsigned int typeCount,
                                                 const char* const* types,
                                                 Virelo::IModuleInfo*& moduleInfo) override;

private:
    static constexpr unsigned int sInterfaceId = 1;

    const Registry& fRegistry;
    std::ostream& fDiagnostics;
    Virelo::AutoRefPtr<Virelo::ILogger> fLogger;
    bool fQuiet = false;
    std::string fFile;
    unsigned int fLine = 0;
    std::vector<ErrorReport> fReports;
    std::string fLastError;
    bool fCallHasError = false;
    std::string fCallErrorText;
};

/// Copies `text` into `buffer` as the context's text getters do: as much as fits, a NUL
/// after it when that fits too; returns the text's length. `buffer` may be null.
unsigned long long CopyTextOut(const std::string& text, char* buffer, unsigned long long size);

} // namespace vhost
