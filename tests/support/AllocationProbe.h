// Counts a test program's heap use and fails allocations on demand. Linking AllocationProbe.cpp
// into a test program replaces its global operator new and delete (every form), so everything
// the program allocates through them is seen: the engine's nodes and its pool's pages, the
// standard containers, the host fakes.
#pragma once

#include <cstddef>

namespace AllocationProbe {

/// Bytes allocated and not yet freed, counted by requested size.
size_t LiveBytes() noexcept;
/// The highest LiveBytes() since the last ResetPeak().
size_t PeakBytes() noexcept;
/// Starts a new peak measurement at the current LiveBytes().
void ResetPeak() noexcept;
/// The largest single request since the last ResetLargest().
size_t LargestRequest() noexcept;
void ResetLargest() noexcept;

/// Makes the k-th allocation from now on (1 = the next one) fail: the throwing forms throw
/// std::bad_alloc, the nothrow forms return null. 0 disarms. One failure per arming.
void FailAt(size_t k) noexcept;
/// True once the armed failure has happened (until the next FailAt).
bool Fired() noexcept;

/// Disarms the failure while it lives and re-arms it with the same countdown after, so that
/// code standing in for the host can allocate without being failed.
class Pause {
public:
    Pause() noexcept;
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

private:
    size_t fSaved;
};

} // namespace AllocationProbe
