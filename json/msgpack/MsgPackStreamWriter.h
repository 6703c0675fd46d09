// MsgPackStreamWriter: MessagePack through a ChunkedOutput, so that a large document leaves in
// bounded pieces instead of as one string. Unlike JsonValue::WriteToMsgPack, which writes
// members in the member map's order, it writes them in member order (insertion order for
// objects that keep it) or sorted by key: for tools that must keep a document's order. Every
// item is encoded as JsonValue::WriteToMsgPack encodes it.
#pragma once

#include "json/ChunkedOutput.h"

class JsonValue;

namespace MsgPackStreamWriter {
/// Writes `root` and flushes `out`. False when a string or container is too long for the
/// format: nothing is handed on after the item that did not fit (what was is not taken back).
bool Write(const JsonValue& root, ChunkedOutput& out, bool sortKeys);
} // namespace MsgPackStreamWriter
