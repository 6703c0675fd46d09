// Deep structural equality of value trees.
//
// Deliberate: there is no cross-type numeric equality (1 and 1.0 differ; an object and a
// compiled object with the same members differ), and compiled objects are equal only when they
// share the very same key table. Comparing reads both trees (a real's pending text is converted as any read does).
#pragma once

#include "json/JsonValue.h"

/// True when the two trees are structurally equal; member order plays no part. Never recurses
/// per nesting level.
bool operator==(const JsonValue& a, const JsonValue& b);
inline bool operator!=(const JsonValue& a, const JsonValue& b) {
    return !(a == b);
}
