// Reading one document as jsonfmt must: the engine's standard profile (nothing converted or
// refused that JSON allows), member order kept, and every failure located in the input.
#pragma once

#include "json/JsonValue.h"

#include <string>

namespace jsonfmt {

/// Why a document cannot be formatted, for the line "NAME" + fWhere + ": " + fMessage.
struct Problem {
    std::string fWhere;   ///< ":LINE:COLUMN" in text, ": byte N" in MessagePack, or empty
    std::string fMessage; ///< one line
};

/// Reads one JSON text document. Null on failure, with `problem` set.
JsonAutoRefPtr<JsonValue> ReadTextDocument(const std::string& text, Problem& problem);
/// Reads one MessagePack value, which must fill the input. Null on failure, with `problem` set.
JsonAutoRefPtr<JsonValue> ReadMsgPackDocument(const std::string& bytes, Problem& problem);

} // namespace jsonfmt
