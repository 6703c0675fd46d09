// The fixed texts that are put together from parts.
#include "host/FixedTexts.h"

#include "json/ParserContext.h"

namespace Virelo::Texts {

std::string CantSetInvalidValue(const std::string& key) {
    return std::string(kCantSet) + ", value for key \"" + key + "\" is not a valid UTF8-string";
}

std::string ParseErrorMessage(const ParserContext& ctx) {
    return "JSON parse error in line " + std::to_string(ctx.fLine) + ": " + ctx.fError;
}

} // namespace Virelo::Texts
