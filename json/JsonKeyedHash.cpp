// JsonKeyedHash: drawing the process's secret.
#include "json/JsonKeyedHash.h"

#include <chrono>
#include <random>

namespace JsonKeyedHash {
namespace {

uint64_t Draw64(std::random_device& device) {
    return (uint64_t(device()) << 32) ^ device();
}

} // namespace

Secret DrawSecret() noexcept {
    try {
        std::random_device device;
        return {Draw64(device), Draw64(device)};
    } catch (...) {
        // No entropy source: the clock and this frame's (randomised) address still differ
        // between runs, which is far better than a fixed key.
        uint64_t now = uint64_t(std::chrono::steady_clock::now().time_since_epoch().count());
        uint64_t where = uint64_t(reinterpret_cast<uintptr_t>(&now));
        return {SipHash<2, 4>(&now, sizeof now, where, 0x9e3779b97f4a7c15ULL),
                SipHash<2, 4>(&where, sizeof where, now, 0xc2b2ae3d27d4eb4fULL)};
    }
}

} // namespace JsonKeyedHash
