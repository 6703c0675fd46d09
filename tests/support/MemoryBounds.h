// The memory the module may hold while it reads an untrusted input of n bytes: at most
// PerByte * n + kConstant bytes, the result included. These are the bounds the README promises;
// tests/robustness checks them over adversarial shapes and the fuzz targets on every input.
#pragma once

#include <cstddef>

namespace MemoryBounds {

constexpr size_t kTextPerByte = 128;    ///< JSON text, also in the serialized IJSON form
constexpr size_t kMsgPackPerByte = 192; ///< MessagePack
constexpr size_t kPathPerByte = 8;      ///< node paths, as strings
constexpr size_t kConstant = 1 << 20;   ///< pool pages and the first blocks of every kind

constexpr size_t Limit(size_t perByte, size_t n) {
    return perByte * n + kConstant;
}

} // namespace MemoryBounds
