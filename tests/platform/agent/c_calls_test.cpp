// The headers are C; c_calls.c calls through them.
#include <gtest/gtest.h>
#include <ntwin32/types.h>

extern "C" BOOL CallAgentFromC(void);

namespace {

TEST(CAbi, IsUsableFromC) {
    EXPECT_NE(CallAgentFromC(), FALSE);
}

}  // namespace
