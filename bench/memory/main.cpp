// bench_memory: the heap that a parsed document holds, per byte of its JSON text, for ours
// and every peer. The executable replaces malloc and its relatives with counting wrappers
// around glibc's own functions, so every library is counted the same way whether it allocates
// with operator new (which calls malloc), malloc, or an aligned allocation. A block counts
// with its usable size. Counters: heap_bytes, heap_blocks, heap_per_input_byte.
//
// Deliberate: glibc only; the wrappers are single-threaded counters in relaxed atomics, and
// the process must not be run under another allocator (a preloaded one would bypass them).
#include "bench/common/BenchSupport.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>

extern "C" {
void* __libc_malloc(size_t size);
void __libc_free(void* pointer);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* pointer, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

std::atomic<int64_t> sBytes{0};
std::atomic<int64_t> sBlocks{0};

void* Counted(void* pointer) {
    if (pointer) {
        sBytes.fetch_add(static_cast<int64_t>(malloc_usable_size(pointer)),
                         std::memory_order_relaxed);
        sBlocks.fetch_add(1, std::memory_order_relaxed);
    }
    return pointer;
}

void Uncount(void* pointer) {
    if (pointer) {
        sBytes.fetch_sub(static_cast<int64_t>(malloc_usable_size(pointer)),
                         std::memory_order_relaxed);
        sBlocks.fetch_sub(1, std::memory_order_relaxed);
    }
}

} // namespace

#define BENCH_EXPORT __attribute__((visibility("default")))

extern "C" {

BENCH_EXPORT void* malloc(size_t size) {
    return Counted(__libc_malloc(size));
}

BENCH_EXPORT void free(void* pointer) {
    Uncount(pointer);
    __libc_free(pointer);
}

BENCH_EXPORT void* calloc(size_t count, size_t size) {
    return Counted(__libc_calloc(count, size));
}

BENCH_EXPORT void* realloc(void* pointer, size_t size) {
    const int64_t oldBytes = pointer ? static_cast<int64_t>(malloc_usable_size(pointer)) : 0;
    void* moved = __libc_realloc(pointer, size);
    if (!moved) {
        if (pointer && size == 0) { // glibc freed the block
            sBytes.fetch_sub(oldBytes, std::memory_order_relaxed);
            sBlocks.fetch_sub(1, std::memory_order_relaxed);
        }
        return nullptr;
    }
    sBytes.fetch_add(static_cast<int64_t>(malloc_usable_size(moved)) - oldBytes,
                     std::memory_order_relaxed);
    if (!pointer) sBlocks.fetch_add(1, std::memory_order_relaxed);
    return moved;
}

BENCH_EXPORT void* reallocarray(void* pointer, size_t count, size_t size) {
    size_t total = 0;
    if (__builtin_mul_overflow(count, size, &total)) {
        errno = ENOMEM;
        return nullptr;
    }
    return realloc(pointer, total);
}

BENCH_EXPORT void* memalign(size_t alignment, size_t size) {
    return Counted(__libc_memalign(alignment, size));
}

BENCH_EXPORT void* aligned_alloc(size_t alignment, size_t size) {
    return Counted(__libc_memalign(alignment, size));
}

BENCH_EXPORT int posix_memalign(void** out, size_t alignment, size_t size) {
    if (alignment < sizeof(void*) || (alignment & (alignment - 1)) != 0) return EINVAL;
    void* pointer = Counted(__libc_memalign(alignment, size));
    if (!pointer) return ENOMEM;
    *out = pointer;
    return 0;
}

BENCH_EXPORT void* valloc(size_t size) {
    return Counted(__libc_memalign(4096, size));
}

} // extern "C"

int main(int argc, char** argv) {
    bench::gHeapBytes = [] { return sBytes.load(std::memory_order_relaxed); };
    bench::gHeapBlocks = [] { return sBlocks.load(std::memory_order_relaxed); };
    return bench::RunMain(argc, argv, bench::EArea::kMemory);
}
