// Display: number, hex, quoted-string and vector display forms.
#include "tools/vhost/script/Display.h"

#include "tools/vhost/host/HostDataRef.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace vhost {

std::string FormatNumber(double number) {
    if (std::isnan(number)) return "nan";
    if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
    constexpr double sIntegerLimit = 9007199254740992.0; // 2^53
    if (std::fabs(number) < sIntegerLimit && std::trunc(number) == number)
        return std::to_string(static_cast<int64_t>(number));
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    return std::string(buffer, result.ptr);
}

std::string FormatHex(std::string_view bytes) {
    static constexpr char sDigits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned char byte : bytes) {
        if (!text.empty()) text += ' ';
        text += sDigits[byte >> 4];
        text += sDigits[byte & 0x0F];
    }
    return text;
}

std::string QuoteString(std::string_view text) {
    std::string quoted = "\"";
    for (char c : text) {
        switch (c) {
        case '"':
            quoted += "\\\"";
            break;
        case '\\':
            quoted += "\\\\";
            break;
        case '\b':
            quoted += "\\b";
            break;
        case '\f':
            quoted += "\\f";
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\r':
            quoted += "\\r";
            break;
        case '\t':
            quoted += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                static constexpr char sDigits[] = "0123456789abcdef";
                quoted += "\\u00";
                quoted += sDigits[static_cast<unsigned char>(c) >> 4];
                quoted += sDigits[c & 0x0F];
            } else {
                quoted += c;
            }
        }
    }
    return quoted + "\"";
}

namespace {

template <class T, class Format>
std::string JoinVector(const std::vector<T>& items, Format format) {
    std::string text = "[";
    for (size_t i = 0; i < items.size(); ++i) {
        if (i > 0) text += ", ";
        text += format(items[i]);
    }
    return text + "]";
}

} // namespace

std::string DisplayForm(const ScriptValue& value, const ObjectFormatter& formatObject) {
    switch (value.fKind) {
    case EValueKind::eString:
        return value.fString;
    case EValueKind::eNumber:
        return FormatNumber(value.fNumber);
    case EValueKind::eBoolean:
        return value.fBoolean ? "true" : "false";
    case EValueKind::eDataRef:
        return FormatHex(ReadAllBytes(value.fData.Get()));
    case EValueKind::eStringVector:
        return JoinVector(value.fStrings, [](const std::string& s) { return QuoteString(s); });
    case EValueKind::eNumberVector:
        return JoinVector(value.fNumbers, FormatNumber);
    case EValueKind::eBooleanVector:
        return JoinVector(value.fBooleans,
                          [](bool b) { return std::string(b ? "true" : "false"); });
    case EValueKind::eEmptyVector:
        return "[]";
    case EValueKind::eObject:
        return formatObject(value);
    case EValueKind::eNone:
        return "<none>";
    case EValueKind::eNothing:
        return "";
    }
    return "";
}

} // namespace vhost
