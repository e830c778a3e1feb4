// Running one flow again and again, with each platform call or each allocation of it refused in
// turn.
#ifndef UNIT_AMRSET_SWEEP_H
#define UNIT_AMRSET_SWEEP_H

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"

namespace sweep {

// After each run nothing is open and the planned fault has come.
inline void ExpectClean() {
    EXPECT_EQ(fakes::OpenKeys(), 0);
    EXPECT_EQ(fakes::ClosedHandleCalls(), 0);
    EXPECT_EQ(fakes::UnusedFaults(), 0);
}

// `prepare` fills the registry, `flow` is what is tested, `check` gets the refused call.
inline void RefuseEachCall(const std::function<void()> &prepare, const std::function<void()> &flow,
                           const std::function<void(const fakes::Call &refused)> &check) {
    fakes::Reset();
    prepare();
    const std::size_t before = fakes::Calls().size();
    flow();
    const std::size_t calls = fakes::Calls().size() - before;
    ASSERT_GT(calls, 0U);
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        fakes::Reset();
        prepare();
        fakes::FailAnyCall(static_cast<int>(nth));
        flow();
        ASSERT_GE(fakes::Calls().size(), before + nth);
        const fakes::Call refused = fakes::Calls()[before + nth - 1];
        SCOPED_TRACE(std::to_string(nth) + ": " + refused.function + " " + refused.detail);
        ExpectClean();
        check(refused);
    }
    fakes::Reset();
}

// `check` gets the number of the refused allocation, counted from 1.
inline void RefuseEachAllocation(const std::function<void()> &prepare,
                                 const std::function<void()> &flow,
                                 const std::function<void(int nth)> &check) {
    fakes::Reset();
    prepare();
    const int before = fakes::Allocations();
    flow();
    const int allocations = fakes::Allocations() - before;
    ASSERT_GT(allocations, 0);
    for (int nth = 1; nth <= allocations; ++nth) {
        fakes::Reset();
        prepare();
        fakes::FailAllocation(nth);
        flow();
        SCOPED_TRACE("allocation " + std::to_string(nth));
        ExpectClean();
        check(nth);
    }
    fakes::Reset();
}

}  // namespace sweep

#endif  // UNIT_AMRSET_SWEEP_H
