// BigEndianWriter.
#include "json/msgpack/BigEndianWriter.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {
char* Allocate(unsigned long size) {
    void* block = std::malloc(size ? size : 1);
    if (!block) throw std::bad_alloc();
    return static_cast<char*>(block);
}

void Store(char* at, unsigned long long value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) {
        at[i] = static_cast<char>(value & 0xFF);
        value >>= 8;
    }
}
} // namespace

BigEndianWriter::BigEndianWriter(std::string* target) : fTarget(target) {
    fStart = Allocate(fCapacity);
    fWrite = fStart;
    fEnd = fStart + fCapacity;
}

BigEndianWriter::~BigEndianWriter() {
    try {
        Finish();
    } catch (...) {
        // Out of memory while joining at destruction: the output is simply incomplete.
    }
    for (auto& chunk : fChunks) std::free(chunk.first);
    std::free(fStart);
}

void BigEndianWriter::GrowBuffer(unsigned long needed) {
    const unsigned long capacity = fCapacity < needed ? fCapacity + needed : fCapacity * 2;
    char* next = Allocate(capacity);
    const auto used = static_cast<unsigned long>(fWrite - fStart);
    try {
        fChunks.emplace_back(fStart, used); // the full buffer is kept as it is, not copied
    } catch (...) {
        std::free(next);
        throw;
    }
    fChunkTotal += used;
    fCapacity = capacity;
    fStart = next;
    fWrite = next;
    fEnd = next + capacity;
}

bool BigEndianWriter::Finish() {
    const auto used = static_cast<unsigned long>(fWrite - fStart);
    if (used == 0 && fChunks.empty()) return fOk;
    if (fOk) fTarget->reserve(fTarget->size() + fChunkTotal + used);
    for (auto& chunk : fChunks) {
        if (fOk) fTarget->append(chunk.first, chunk.second);
        std::free(chunk.first);
    }
    fChunks.clear();
    fChunkTotal = 0;
    if (fOk) fTarget->append(fStart, used);
    fWrite = fStart;
    return fOk;
}

void BigEndianWriter::Write8(unsigned char code) {
    *Reserve(1) = static_cast<char>(code);
}

void BigEndianWriter::Write8_8(unsigned char code, uint8_t value) {
    char* at = Reserve(2);
    at[0] = static_cast<char>(code);
    at[1] = static_cast<char>(value);
}

void BigEndianWriter::Write8_16(unsigned char code, uint16_t value) {
    char* at = Reserve(3);
    at[0] = static_cast<char>(code);
    Store(at + 1, value, 2);
}

void BigEndianWriter::Write8_32(unsigned char code, unsigned int value) {
    char* at = Reserve(5);
    at[0] = static_cast<char>(code);
    Store(at + 1, value, 4);
}

void BigEndianWriter::Write8_64(unsigned char code, unsigned long long value) {
    char* at = Reserve(9);
    at[0] = static_cast<char>(code);
    Store(at + 1, value, 8);
}

void BigEndianWriter::AddString(std::string_view text) {
    const unsigned long long length = text.size();
    unsigned long header;
    if (length <= 31) {
        header = 1;
    } else if (length <= 0xFF) {
        header = 2;
    } else if (length <= 0xFFFF) {
        header = 3;
    } else if (length <= 0xFFFFFFFFULL) {
        header = 5;
    } else {
        fOk = false;
        return;
    }
    // Header and bytes are one item.
    char* at = Reserve(header + static_cast<unsigned long>(length));
    switch (header) {
    case 1: at[0] = static_cast<char>(0xA0 | length); break;
    case 2: at[0] = static_cast<char>(0xD9); Store(at + 1, length, 1); break;
    case 3: at[0] = static_cast<char>(0xDA); Store(at + 1, length, 2); break;
    default: at[0] = static_cast<char>(0xDB); Store(at + 1, length, 4); break;
    }
    if (length) std::memcpy(at + header, text.data(), length);
}

void BigEndianWriter::AddContainerHeader(unsigned char fixBase, unsigned char code16,
                                         unsigned long long count) {
    if (count <= 15) {
        Write8(static_cast<unsigned char>(fixBase + count));
    } else if (count <= 0xFFFF) {
        Write8_16(code16, static_cast<uint16_t>(count));
    } else if (count <= 0xFFFFFFFFULL) {
        Write8_32(static_cast<unsigned char>(code16 + 1), static_cast<unsigned int>(count));
    } else {
        SetFailed();
    }
}
