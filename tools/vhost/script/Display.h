// Display: the display forms of script values that print, expect and the prompt use.
// Objects are shown by a function the caller supplies (the module's ToString).
#pragma once

#include "tools/vhost/script/ScriptValue.h"

#include <functional>
#include <string>
#include <string_view>

namespace vhost {

/// An integer when the magnitude is below 2^53 and there is no fraction ("3", "-2"), else the
/// shortest text that reads back ("0.1", "1e+300"); "nan", "inf", "-inf".
std::string FormatNumber(double number);
/// Upper-case hex byte pairs joined by one blank ("81 A1 61 01"); empty for no bytes.
std::string FormatHex(std::string_view bytes);
/// The bytes in double quotes, escaped as JSON (control characters as \u00XX, other bytes
/// unchanged).
std::string QuoteString(std::string_view text);

using ObjectFormatter = std::function<std::string(const ScriptValue&)>;

/// The display form of any value; `formatObject` is asked only for eObject values. NONE shows
/// as "<none>", print's no value as "".
std::string DisplayForm(const ScriptValue& value, const ObjectFormatter& formatObject);

} // namespace vhost
