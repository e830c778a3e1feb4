// The public header is C: header_test.c includes it alone and calls through it.
#include <gmock/gmock.h>

#include "trace_fixture.h"

extern "C" int CallTraceLogFromC(void);

namespace {

using Header = TraceTest;

TEST_F(Header, IsUsableFromC) {
    EXPECT_EQ(CallTraceLogFromC(), 1);
    const auto records = ReadRecords(LogPath("c-program"));
    ASSERT_THAT(records, testing::SizeIs(1));
    EXPECT_EQ(records[0].text, "from C 17");
    EXPECT_EQ(records[0].function, "CallTraceLogFromC");
}

}  // namespace
