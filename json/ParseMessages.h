// The parser's fixed English messages. Scripts and hosts compare them byte for byte.
#pragma once

namespace ParseMessages {
inline constexpr const char* kUnexpectedEnd = "unexpected end of input";
inline constexpr const char* kNotAValue = "not a JSON value";
inline constexpr const char* kNotANumber = "not a number";
inline constexpr const char* kFractionDigit = "minimum one digit after decimal dot required";
inline constexpr const char* kExponentDigit = "minimum one digit after exponent required";
inline constexpr const char* kRealOutOfRange = "real number out of double range";
inline constexpr const char* kQuoteExpected = "string quote sign expected";
inline constexpr const char* kControlCharacter = "control character must be quoted";
inline constexpr const char* kIllegalEscape = "illegally quoted character";
inline constexpr const char* kUtf16Escape = "incorrect utf16 char quoting";
inline constexpr const char* kUtf32Escape = "incorrect utf32 char quoting";
inline constexpr const char* kIllegalUtf8 = "illegal UTF8 character found at position ";
inline constexpr const char* kUtf8StringStart = " in string which starts with ";
inline constexpr const char* kIllegalObject = "illegal object";
inline constexpr const char* kObjectLeadingComma = "expected key value pair in front before comma";
inline constexpr const char* kObjectCommaExpected = "comma separator expected between key value pairs";
inline constexpr const char* kObjectTrailingComma = "object list must not end with a comma";
inline constexpr const char* kKeyExpected = "key (string) expected";
inline constexpr const char* kWhileParsingKey = " while parsing a key";
inline constexpr const char* kColonExpected = "colon expected";
inline constexpr const char* kWhileParsingValue = " while parsing a value";
inline constexpr const char* kDuplicateKey = "duplicate key";
inline constexpr const char* kIllegalArray = "illegal array";
inline constexpr const char* kArrayLeadingComma = "expected value in front before comma";
inline constexpr const char* kArrayCommaExpected = "comma separator expected between values";
inline constexpr const char* kArrayTrailingComma = "array must not end with comma";
inline constexpr const char* kTrailingCharacters = "illegal trailing characters after value";
// Compiled objects
inline constexpr const char* kIllegalCompiledObject = "illegal compiled object";
// Deliberate: no article here, unlike the plain object's message.
inline constexpr const char* kCompiledTrailingComma = "object list must not end with comma";
inline constexpr const char* kCompiledWhileParsingValue = " while parsing value";
inline constexpr const char* kNotExpectedType = "value is not of expected type";
// MessagePack
inline constexpr const char* kEmptyInput = "empty input";
inline constexpr const char* kUnsupportedMsgPackCode = "unsupported MsgPack type code";
inline constexpr const char* kStringExpected = "string expected";
} // namespace ParseMessages
