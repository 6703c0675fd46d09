// Runs an operation once per allocation it makes, failing a different one each time, and checks
// that every run frees all it allocated. With the node pool on, nodes live in pages that are
// kept for reuse, so the byte balance is exact only in sanitizer builds (pool off), where
// LeakSanitizer watches as well; elsewhere the runs still check every outcome.
#pragma once

#include "tests/support/AllocationProbe.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace FailureInjection {

#if defined(VIRELO_JSON_NO_POOL)
constexpr bool kExactBalance = true;
#else
constexpr bool kExactBalance = false;
#endif

/// Calls `run` with the k-th allocation failing, for k = 1, 2, ... until a run completes
/// without reaching its k-th allocation; `run` checks the outcome (AllocationProbe::Fired()
/// tells whether the failure happened). Returns the number of allocations of a clean run.
/// Stops at the first failed expectation, so that one fault does not report a thousand times.
template <class Run> size_t FailEachAllocation(Run&& run) {
    const auto faults = [] {
        return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
    };
    const int faultsBefore = faults();
    run(); // warm-up: first-use caches and pool pages are not part of any run's balance
    for (size_t k = 1;; ++k) {
        const size_t live = AllocationProbe::LiveBytes();
        AllocationProbe::FailAt(k);
        run();
        const bool fired = AllocationProbe::Fired();
        AllocationProbe::FailAt(0);
        if (kExactBalance) {
            EXPECT_EQ(AllocationProbe::LiveBytes(), live) << "leak when allocation " << k << " failed";
        }
        if (faults() != faultsBefore) {
            ADD_FAILURE() << "first fault with allocation " << k << " failing";
            return k;
        }
        if (!fired) return k - 1;
    }
}

} // namespace FailureInjection
