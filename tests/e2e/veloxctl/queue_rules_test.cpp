// When an alert is tried again, and what it says in a report.
#include <gmock/gmock.h>

#include "queue/alert_lines.h"
#include "queue/folder.h"
#include "queue/retry.h"

namespace {

using namespace veloxctl::queue;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(RetryTest, TheFirstIntervalIsTheDestinations) {
    EXPECT_EQ(FirstInterval(1), 60);
    EXPECT_EQ(FirstInterval(480), kLongestInterval);
    EXPECT_EQ(FirstInterval(0), kDefaultInterval);
    EXPECT_EQ(FirstInterval(481), kDefaultInterval);
    EXPECT_EQ(FirstInterval(UINT32_MAX), kDefaultInterval);
}

TEST(RetryTest, EachIntervalIsTwiceTheOneBeforeUpToTheLongest) {
    std::int64_t before = IntervalAfter(1, kDefaultInterval);
    EXPECT_EQ(before, kDefaultInterval);
    for (std::uint32_t tries = 2; tries <= 7; ++tries) {
        EXPECT_EQ(IntervalAfter(tries, kDefaultInterval), before * 2) << tries;
        before *= 2;
    }
    EXPECT_EQ(IntervalAfter(8, kDefaultInterval), kLongestInterval);
    EXPECT_EQ(IntervalAfter(UINT32_MAX, 60), kLongestInterval);
    EXPECT_EQ(IntervalAfter(0, 60), 60) << "an alert that was never tried";
}

TEST(RetryTest, ATryIsDueAtItsTimeAndAfterTheClockWasPutBack) {
    EXPECT_TRUE(IsDue(0, 1000));
    EXPECT_TRUE(IsDue(1000, 1000));
    EXPECT_FALSE(IsDue(1001, 1000));
    EXPECT_FALSE(IsDue(1000 + kLongestInterval, 1000));
    EXPECT_TRUE(IsDue(1001 + kLongestInterval, 1000));
}

queuestore::Entry Alert() {
    queuestore::Entry entry;
    entry.id = "id";
    entry.item.message = "disk 1 failed";
    entry.item.source = "KESHeartBeatDll";
    entry.item.time = 1709600000;
    entry.item.count = 3;
    return entry;
}

TEST(AlertLinesTest, EmptyTextsAreLeftOut) {
    EXPECT_EQ(ReportLines(Alert()),
              "[ALERT]\r\ndisk 1 failed\r\n[ALERT-ID]\r\nid\r\n[ALERT-TIME]\r\n"
              "2024-03-05T00:53:20Z\r\n[ALERT-SOURCE]\r\nKESHeartBeatDll\r\n[ALERT-LEVEL]\r\n0\r\n"
              "[ALERT-COUNT]\r\n3\r\n");
}

TEST(AlertLinesTest, EverythingThatIsThereIsSaid) {
    queuestore::Entry entry = Alert();
    entry.item.computer = "host01";
    entry.item.log = "SYSTEM";
    entry.item.reporter = "monitor";
    entry.item.texts = {"one", "", "", "four"};
    entry.item.note = "note";
    entry.item.data = std::string("\x00\xFF", 2);
    EXPECT_THAT(ReportLines(entry),
                AllOf(HasSubstr("[ALERT-COMPUTER]\r\nhost01\r\n[ALERT-LOG]\r\nSYSTEM\r\n"),
                      HasSubstr("[ALERT-REPORTER]\r\nmonitor\r\n"),
                      HasSubstr("[ALERT-TEXT]\r\none\r\n[ALERT-TEXT]\r\nfour\r\n"),
                      HasSubstr("[ALERT-NOTE]\r\nnote\r\n[ALERT-DATA]\r\n00ff\r\n")));
}

TEST(AlertLinesTest, NoValueCanLookLikeAHeading) {
    for (const char *line_break : {"\n", "\r", "\r\n"}) {
        queuestore::Entry entry = Alert();
        entry.item.message = std::string("a") + line_break + "[ALERT-ID]" + line_break;
        const std::string lines = ReportLines(entry);
        EXPECT_THAT(lines, HasSubstr("[ALERT]\r\na\r\n [ALERT-ID]\r\n \r\n[ALERT-ID]\r\nid\r\n"));
        EXPECT_THAT(lines, Not(HasSubstr("\n\n")));
    }
}

}  // namespace
