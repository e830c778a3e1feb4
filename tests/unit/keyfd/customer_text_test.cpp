// The scanner of the customer file's text: where it finds a line's end, and its trace.
#include "keyfd/customer_text.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "keyfd/keyfd.h"
#include "support/title.h"

namespace {

using ::testing::ElementsAre;

class GetCrLfTest : public fakes::PlatformTest {};

struct Scan {
    std::string title;
    std::string text;
    DWORD start = 0;
    LONG result = 0;
    bool leaving_trace = true;
};

class GetCrLfCases : public GetCrLfTest, public ::testing::WithParamInterface<Scan> {};

TEST_P(GetCrLfCases, Finds) {
    // A copy of exactly its size, so that a sanitizer sees a read past it.
    const std::string &text = GetParam().text;
    const AutoMemory<char> copy(static_cast<char *>(std::malloc(text.size() + 1)));
    char *exact = copy.Get() + 1;
    std::memcpy(exact, text.data(), text.size());

    const LONG result = GetCRLF(GetParam().start, exact, static_cast<DWORD>(text.size()));
    EXPECT_EQ(result, GetParam().result);
    std::vector<std::string> trace = {"0 >"};
    if (GetParam().start >= text.size()) {
        trace.emplace_back("1 dwStartPos >= dwSize,go to error!");
    } else if (GetParam().leaving_trace) {
        trace.push_back("0 <return " + std::to_string(GetParam().result));
    }
    EXPECT_EQ(fakes::TraceLines(), trace);
    for (const fakes::TraceRecord &record : fakes::Trace()) {
        EXPECT_EQ(record.function, "GetCRLF");
        EXPECT_EQ(record.source, "keyfd");
    }
}

using namespace std::string_literals;

INSTANTIATE_TEST_SUITE_P(GetCrLf, GetCrLfCases,
                         ::testing::Values(Scan{"CrLf", "AB\r\nC", 0, 3}, Scan{"Lf", "AB\nC", 0, 2},
                                           Scan{"Cr", "AB\rC", 0, 2},
                                           Scan{"FromTheMiddle", "A\nBC\nD", 2, 4},
                                           Scan{"ARunOfBreaks", "A\r\n\r\n\nB", 0, 5},
                                           Scan{"BeginsWithABreak", "\r\nA\r\n", 0, -1, false},
                                           Scan{"StartIsABreak", "A\r\nB\n", 1, -1, false},
                                           Scan{"ZeroFirst", "\0AB\n"s, 0, 0, false},
                                           Scan{"ZeroBeforeTheBreak", "AB\0\n"s, 0, 0, false},
                                           Scan{"ZeroAfterTheBreak", "A\n\0\n"s, 0, 1},
                                           Scan{"NoBreakGivesTheLastByte", "ABCD", 0, 3},
                                           Scan{"BreakOnlyAsTheLastByte", "ABC\n", 0, 3},
                                           Scan{"ARunStopsBeforeTheLastByte", "AB\r\n", 0, 2},
                                           Scan{"ZeroOnlyAsTheLastByte", "AB\0"s, 0, 2},
                                           Scan{"OneByteIsNothingToScan", "A", 0, -1, false},
                                           Scan{"StartAtTheLastByte", "A\nB", 2, -1, false},
                                           Scan{"StartAtTheSize", "AB", 2, -1, false},
                                           Scan{"StartPastTheSize", "AB", 9, -1, false},
                                           Scan{"NoText", "", 0, -1, false}),
                         test_support::Title());

}  // namespace
