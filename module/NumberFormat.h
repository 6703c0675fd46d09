// The number formats of the setters that take one ("double", "int64", "int32", "uint64",
// "uint32", compared exactly and case-sensitively).
//
// Deliberate: "int32" and "uint32" are not narrowed to 32 bits, and an unknown format is
// reported as "Error.JSON.NoObject" (severity 1), the fault being the format.
#pragma once

#include "module/ModuleSupport.h"

#include <cmath>

namespace JsonModule {

/// The number truncated toward zero to a signed 64-bit integer (NaN gives 0; values beyond the
/// range saturate).
long long NumberToSigned(double number) noexcept;

/// Calls `apply` with the number in the representation the format names (double, long long or
/// unsigned long long) and returns its result; an unknown format is reported and gives no JSON.
template <class Apply>
JSONObjPtr WithNumberFormat(double number, const std::string& format, IContext* context, Apply apply) {
    if (format == kFormatDouble) return apply(number);
    if (format == kFormatInt64 || format == kFormatInt32) return apply(NumberToSigned(number));
    if (format == kFormatUInt64 || format == kFormatUInt32)
        return apply(Virelo::NumberToUnsigned(number));
    Report(context, Virelo::eSeverityRecoverable, kErrorNoObject, kUnknownNumberFormat);
    return nullptr;
}

} // namespace JsonModule
