// Every platform call and every allocation of the service information text failing in turn.
#include <gtest/gtest.h>

#include <algorithm>

#include "contract.h"
#include "fakes/libc.h"
#include "support/title.h"

namespace {

using contract::Function;
using contract::Result;

class ServiceInfoFaultsTest : public fakes::PlatformTest,
                              public ::testing::WithParamInterface<Function> {};

// A failed number fails the call; any other failure costs at most one line's value, never the text.
TEST_P(ServiceInfoFaultsTest, EachCallFailingInTurn) {
    contract::Store(1, 3);
    fakes::StoreText(contract::kAlertReport, "ReportProduct", "PRODUCT value");
    const Result whole(GetParam());
    ASSERT_EQ(whole.success, TRUE);
    const std::size_t calls = fakes::Calls().size();
    int failures = 0;
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE(nth);
        fakes::Reset();
        contract::Store(1, 3);
        fakes::StoreText(contract::kAlertReport, "ReportProduct", "PRODUCT value");
        fakes::FailAnyCall(static_cast<int>(nth));
        const Result result(GetParam());
        EXPECT_EQ(fakes::UnusedFaults(), 0);
        EXPECT_EQ(fakes::OpenKeys(), 0);
        if (result.success == FALSE) {
            ++failures;
            EXPECT_EQ(result.length, 0U);
            EXPECT_FALSE(result.touched);
        } else {
            EXPECT_EQ(result.length, result.text.size());
            EXPECT_LE(result.text.size(), whole.text.size());
            EXPECT_GE(result.text.size() + 32, whole.text.size());
            EXPECT_EQ(std::count(result.text.begin(), result.text.end(), '\n'),
                      std::count(whole.text.begin(), whole.text.end(), '\n'));
        }
    }
    EXPECT_EQ(failures, 4) << "opening the key and querying, for each of the two numbers";
}

TEST_P(ServiceInfoFaultsTest, EachAllocationFailingInTurn) {
    contract::Store(1, 3);
    const Result whole(GetParam());
    const int allocations = fakes::Allocations();
    EXPECT_EQ(allocations, 1);
    for (int nth = 1; nth <= allocations; ++nth) {
        fakes::ClearTrace();
        fakes::FailAllocation(nth);
        const Result result(GetParam());
        EXPECT_EQ(result.success, FALSE);
        EXPECT_EQ(result.length, 0U);
        EXPECT_FALSE(result.touched);
        EXPECT_EQ(fakes::TraceLinesOf(GetParam().title).back(),
                  std::string("2 ") + GetParam().memory_trace);
    }
}

INSTANTIATE_TEST_SUITE_P(Both, ServiceInfoFaultsTest,
                         ::testing::Values(contract::kPlain, contract::kMail),
                         test_support::Title());

}  // namespace
