// What a document that was read may still hold that the output cannot carry without changing
// its meaning: MessagePack brings strings as raw bytes and reals as doubles (NaN and the
// infinities have no JSON number), and MessagePack holds numbers only as 64-bit values.
#pragma once

#include "tools/jsonfmt/DocumentReader.h"

namespace jsonfmt {

/// False, with `problem` set for the first such value, when `root` cannot be carried from the
/// input format to the output format unchanged. A document read from MessagePack must have a
/// JSON meaning whatever the output.
bool CheckMeaningCarries(const JsonValue& root, bool fromMsgPack, bool toMsgPack, Problem& problem);

} // namespace jsonfmt
