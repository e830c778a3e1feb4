// A case of "veloxctl reg": what stands in the registry, a command, and what comes of it.
#ifndef VELOXCTL_TEST_REG_CASE_H
#define VELOXCTL_TEST_REG_CASE_H

#include <sysexits.h>

#include <string>
#include <vector>

#include "reg_fixture.h"
#include "support/title.h"

namespace veloxctl_test {

struct Case {
    const char *title;
    std::string before;  // .reg lines
    std::vector<std::string> words;
    int status = EX_OK;
    std::string output;
    std::string errors;
    std::string after;  // of HKLM\test, as exported; "=": as before
};

class RegCaseTest : public RegTest, public testing::WithParamInterface<Case> {
  protected:
    static void Check() {
        const Case &row = GetParam();
        Import(row.before);
        const std::string before = Exported();
        std::vector<std::string> words = {"reg"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const Result result = Veloxctl(words);
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.output, row.output);
        EXPECT_EQ(result.errors, row.errors);
        EXPECT_EQ(Exported(), row.after == "=" ? before : row.after);
    }
};

// HKLM\test with values, as exported.
inline std::string TestKey(const std::string &values) {
    return "[HKEY_LOCAL_MACHINE\\test]\n" + values + "\n";
}

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_REG_CASE_H
