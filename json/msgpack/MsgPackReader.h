// The MessagePack reader's string routine, shared by everything that reads MessagePack strings.
// The value readers themselves are members of the node classes (JsonValue::ReadFromMsgPack and
// friends); their definitions live in MsgPackReader.cpp.
#pragma once

#include <string>

struct ParserContext;

/// Reads a string whose code byte `code` has already been consumed: str 8/16/32 (D9, DA, DB)
/// or fixstr (A0-BF). On success `out` holds the bytes and `position` is past them; otherwise
/// false with "string expected" or "unexpected end of input" in context.fError. Allocates only
/// for bytes that are present in the input; throws std::bad_alloc only when out of memory.
bool ParseStringFromMsgPack(unsigned char code, const char*& position, const char* end,
                            ParserContext& context, std::string& out);
