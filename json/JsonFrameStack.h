// The stack of open containers that the iterative readers keep instead of recursing. Frames
// live in fixed chunks that never move: a deeper document adds a chunk instead of copying the
// whole stack, so the stack holds one frame per open level at every moment (a doubling vector
// briefly holds three), and a popped frame keeps its contents (a key's buffer, say) for reuse.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

template <class Frame> class JsonFrameStack {
public:
    size_t Depth() const noexcept { return fDepth; }
    /// The innermost frame; the stack must not be empty.
    Frame& Top() noexcept { return *fTop; }
    /// A frame for one more level (a reused one, holding whatever it last held). Throws
    /// std::bad_alloc when a new chunk cannot be had; the stack is then unchanged.
    Frame& Push() {
        if (fDepth == fChunks.size() * kChunk) fChunks.push_back(std::make_unique<Frame[]>(kChunk));
        fTop = At(fDepth++);
        return *fTop;
    }
    /// Removes the innermost frame and returns it; it stays valid until the next Push.
    Frame& Pop() noexcept {
        Frame& popped = *fTop;
        --fDepth;
        fTop = fDepth ? At(fDepth - 1) : nullptr;
        return popped;
    }

private:
    static constexpr size_t kChunk = 32;
    Frame* At(size_t level) const noexcept { return &fChunks[level / kChunk][level % kChunk]; }

    std::vector<std::unique_ptr<Frame[]>> fChunks;
    size_t fDepth = 0;
    Frame* fTop = nullptr;
};
