// ChunkedOutput: a bounded buffer between a streaming writer and wherever its bytes go (a file,
// a socket). The writers append small items and the buffer hands them on in pieces of about a
// fixed size, so that a large document never exists as one string. Format-free: both the text
// and the MessagePack stream writers use it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

class ChunkedOutput {
public:
    /// Receives each piece. It may throw (to stop a writer, say on a failed write): the
    /// exception passes out of the writer, and the piece stays in the buffer.
    using Sink = std::function<void(std::string_view)>;
    static constexpr size_t kDefaultPieceBytes = 64 * 1024;

    explicit ChunkedOutput(Sink sink, size_t pieceBytes = kDefaultPieceBytes)
        : fSink(std::move(sink)), fPieceBytes(pieceBytes ? pieceBytes : 1) {}
    ChunkedOutput(const ChunkedOutput&) = delete;
    ChunkedOutput& operator=(const ChunkedOutput&) = delete;

    /// Where writers append. A piece is at most the piece size plus the last item appended
    /// (an item, such as one long string, is never split).
    std::string& Buffer() noexcept { return fBuffer; }
    /// Hands the buffer on once it holds a piece; writers call it after each item.
    void Step() {
        if (fBuffer.size() >= fPieceBytes) Flush();
    }
    /// Hands on whatever the buffer holds.
    void Flush() {
        if (fBuffer.empty()) return;
        fSink(fBuffer);
        fBuffer.clear(); // keeps the capacity: the next piece needs no allocation
    }

private:
    Sink fSink;
    size_t fPieceBytes;
    std::string fBuffer;
};
