// Argument conversion of the call glue.
#include "host/CallForwarding.h"
#include "host/FixedTexts.h"

#include <cmath>

namespace Virelo {

bool CPPNameParameterTransformer::Advance() {
    ++fIndex;
    if (static_cast<unsigned int>(fIndex) >= fArgumentCount) {
        fStatus = (static_cast<unsigned int>(fIndex + 1) << 16) | kStatusMissing;
        return false;
    }
    return true;
}

void CPPNameParameterTransformer::Mismatch(IVariant* argument) {
    unsigned int reason = kStatusWrongType;
    if (argument && argument->Interface_GetType() >= eTypeUserDefined) {
        // A user-defined argument without an object is an invalid (empty) object.
        AutoRefPtr<IUserDefinedType> object(argument->Interface_GetUserDefined());
        if (!object) reason = kStatusNoObject;
    }
    fStatus = (static_cast<unsigned int>(fIndex + 1) << 16) | reason;
}

IVariant* CPPNameParameterTransformer::Next(unsigned int accepted) {
    if (fStatus || !Advance()) return nullptr;
    IVariant* argument = fArguments ? fArguments[fIndex] : nullptr;
    if (argument && argument->Interface_GetType() == accepted) return argument;
    Mismatch(argument);
    return nullptr;
}

void CPPNameParameterTransformer::operator()(JSONObjPtr& out) {
    if (fStatus || !Advance()) return;
    IVariant* argument = fArguments ? fArguments[fIndex] : nullptr;
    if (argument && argument->Interface_GetType() >= eTypeUserDefined) {
        AutoRefPtr<IUserDefinedType> object(argument->Interface_GetUserDefined());
        // Only this module's own JSON values are taken; another type's object is released.
        if (JSONObj::IsJSONObj(object.Get())) {
            out = JSONObjPtr(static_cast<JSONObj*>(object.Detach()));
            return;
        }
    }
    Mismatch(argument);
}

void CPPNameParameterTransformer::operator()(std::string& out) {
    if (IVariant* argument = Next(eTypeString)) {
        const char* data = argument->Interface_GetStringData();
        out.assign(data ? data : "", data ? static_cast<size_t>(argument->Interface_GetStringLength()) : 0);
    }
}

void CPPNameParameterTransformer::operator()(bool& out) {
    if (IVariant* argument = Next(eTypeBoolean)) out = argument->Interface_GetBoolean() != 0;
}

void CPPNameParameterTransformer::operator()(double& out) {
    if (IVariant* argument = Next(eTypeNumber)) out = argument->Interface_GetNumber();
}

void CPPNameParameterTransformer::operator()(unsigned long& out) {
    if (IVariant* argument = Next(eTypeNumber))
        out = static_cast<unsigned long>(NumberToUnsigned(argument->Interface_GetNumber()));
}

void CPPNameParameterTransformer::operator()(unsigned long long& out) {
    if (IVariant* argument = Next(eTypeNumber)) out = NumberToUnsigned(argument->Interface_GetNumber());
}

void CPPNameParameterTransformer::operator()(DataRefPtr& out) {
    if (IVariant* argument = Next(eTypeDataRef)) out = DataRefPtr(argument->Interface_GetDataRef());
}

unsigned long long NumberToUnsigned(double number) noexcept {
    constexpr double kTwo63 = 9223372036854775808.0;
    constexpr double kTwo64 = 18446744073709551616.0;
    if (std::isnan(number)) return 0;
    const double whole = std::trunc(number);
    if (whole >= kTwo64) return ~0ULL;
    if (whole >= kTwo63) return static_cast<unsigned long long>(whole - kTwo63) + (1ULL << 63);
    if (whole >= 0) return static_cast<unsigned long long>(whole);
    if (whole > -kTwo63) return static_cast<unsigned long long>(static_cast<long long>(whole));
    return 1ULL << 63;
}

void ReportWorkerException(IContext* context, const char* what) noexcept {
    if (!context) return;
    try {
        context->TriggerErrorHandler(eSeveritySevere, Texts::kSourceJSON, Texts::kErrorException, what ? what : "");
    } catch (...) {
    }
}

} // namespace Virelo
