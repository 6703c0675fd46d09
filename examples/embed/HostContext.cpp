// Context: the type registry and the error reports behind the context operations, and the
// null answers for what this host does not offer.
#include "HostContext.h"

#include "HostVariant.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace embed {

namespace {

// The context's text getters copy as much as fits, a NUL after it when that fits too, and
// return the length the whole text needs.
unsigned long long CopyText(const std::string& text, char* buffer, unsigned long long size) {
    if (buffer && size > 0) {
        const size_t count = static_cast<size_t>(std::min<unsigned long long>(text.size(), size));
        std::memcpy(buffer, text.data(), count);
        if (count < size) buffer[count] = '\0';
    }
    return text.size();
}

} // namespace

Virelo::AutoRefPtr<Context> Context::Create() {
    return Virelo::AutoRefPtr<Context>(new Context());
}

unsigned int Context::RegisterType(const std::string& name) {
    // A name registered twice keeps its first id.
    const unsigned int next = Virelo::eTypeUserDefined + static_cast<unsigned int>(fTypes.size());
    return fTypes.emplace(name, next).first->second;
}

std::vector<ErrorReport> Context::TakeReports() {
    return std::exchange(fReports, {});
}

void Context::Interface_TriggerError(unsigned int severity, const char* source, const char* errorId,
                                     const char* message) {
    fReports.push_back(
        {severity, source ? source : "", errorId ? errorId : "", message ? message : ""});
    fHasError = true;
}

unsigned int Context::Interface_GetTypeId(const char* typeName) {
    const auto entry = typeName ? fTypes.find(typeName) : fTypes.end();
    return entry != fTypes.end() ? entry->second : 0;
}

// Type objects create values of another module's types; a module asks for them only when it
// imports host functions (Interface_GetFunction), which this host offers none of.
Virelo::ITypeObject* Context::Interface_GetTypeObject(unsigned int) {
    return nullptr;
}

unsigned long long Context::Interface_GetCallStack(char* buffer, unsigned long long size) {
    return CopyText("embed_host", buffer, size);
}

// Only the functions that return vectors (JSON.Keys, JSON.GetAs...Vector) need host vectors;
// without them those functions return no vector.
Virelo::IObject* Context::Interface_CreateVector(unsigned int) {
    return nullptr;
}

Virelo::IVariant* Context::Interface_CreateVariant() {
    return Variant::Create().Detach();
}

unsigned long long Context::Interface_GetErrorText(char* buffer, unsigned long long size) const {
    return CopyText(fHasError && !fReports.empty() ? fReports.back().fMessage : "", buffer, size);
}

Virelo::VireloFunction Context::Interface_GetFunction(const char*, unsigned int, const char* const*,
                                                      Virelo::IModuleInfo*&) {
    return nullptr;
}

} // namespace embed
