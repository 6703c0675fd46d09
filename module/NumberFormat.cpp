// Number conversions of the formatted setters.
#include "module/NumberFormat.h"

#include "json/JsonScalar.h"

namespace JsonModule {

long long NumberToSigned(double number) noexcept {
    constexpr double kTwo63 = 9223372036854775808.0;
    if (std::isnan(number)) return 0;
    if (number >= kTwo63) return JsonInteger::sMaxInt64;
    if (number <= -kTwo63) return JsonInteger::sMinInt64;
    return static_cast<long long>(number);
}

} // namespace JsonModule
