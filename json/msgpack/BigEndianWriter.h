// An append-only output buffer for MessagePack: chunks of malloc'd memory that are joined once
// into the target string at the end. An item (code byte plus payload) is never split between
// two chunks, so encoders store code bytes and big-endian payloads directly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class BigEndianWriter {
public:
    static constexpr unsigned long kFirstCapacity = 1000;

    /// Writes into `target` (appended to by Finish).
    explicit BigEndianWriter(std::string* target);
    BigEndianWriter(const BigEndianWriter&) = delete;
    BigEndianWriter& operator=(const BigEndianWriter&) = delete;
    /// Calls Finish, then frees the buffers.
    ~BigEndianWriter();

    /// A MessagePack string: the shortest header, then the bytes. A string longer than
    /// 4294967295 bytes writes nothing and clears the ok flag.
    void AddString(std::string_view text);
    /// An array (`fixBase` 90, `code16` DC) or map (80, DE) header of `count` entries: the fix
    /// form, the 16-bit form, or the 32-bit form (code16 + 1). More than 4294967295 entries
    /// write nothing and clear the ok flag (the rest is still walked; nothing reaches the target).
    void AddContainerHeader(unsigned char fixBase, unsigned char code16, unsigned long long count);
    void Write8(unsigned char code);
    void Write8_8(unsigned char code, uint8_t value);
    void Write8_16(unsigned char code, uint16_t value);
    void Write8_32(unsigned char code, unsigned int value);
    void Write8_64(unsigned char code, unsigned long long value);
    /// Sets a full buffer aside as a chunk and starts a new one with room for `needed` bytes.
    void GrowBuffer(unsigned long needed);
    /// Joins the chunks and the current buffer into the target (nothing when not ok) and frees
    /// the chunks; returns the ok flag.
    bool Finish();

    bool Ok() const noexcept { return fOk; }
    /// Marks the output as not encodable: Finish discards everything.
    void SetFailed() noexcept { fOk = false; }

private:
    /// Room for one item of `size` bytes in the current buffer.
    char* Reserve(unsigned long size) {
        if (static_cast<unsigned long>(fEnd - fWrite) < size) GrowBuffer(size);
        char* at = fWrite;
        fWrite += size;
        return at;
    }

    std::string* fTarget;
    std::vector<std::pair<char*, unsigned long>> fChunks;
    char* fWrite = nullptr;
    char* fEnd = nullptr;
    char* fStart = nullptr;
    unsigned long fCapacity = kFirstCapacity;
    unsigned long fChunkTotal = 0;
    bool fOk = true;
};
