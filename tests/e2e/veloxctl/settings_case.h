// A case of the groups for the alert manager's settings: each begins with the same registry.
#ifndef VELOXCTL_TEST_SETTINGS_CASE_H
#define VELOXCTL_TEST_SETTINGS_CASE_H

#include <gmock/gmock.h>
#include <sysexits.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "reg_fixture.h"
#include "support/title.h"

namespace veloxctl_test {

inline constexpr char kAlertManager[] = "HKLM\\SOFTWARE\\XEV\\KESALERTMAN";

// What stands in the registry before each case.
std::string SettingsBefore();

struct SettingsCase {
    const char *title;
    std::vector<std::string> words;
    int status = EX_OK;
    std::string output = {};
    std::string errors = {};
    std::vector<std::string> after = {};  // lines of the export that were not there before
    std::vector<std::string> gone = {};   // lines that were there before and are not any more
    std::string input = {};
};

inline void PrintTo(const SettingsCase &row, std::ostream *out) {
    *out << row.title;
}

class SettingsTest : public RegTest {
  protected:
    void SetUp() override {
        Import("[-" + std::string(kAlertManager) + "]\n\n" + SettingsBefore());
        before_ = Lines();
    }

    // The alert manager's part of the export, a line each; long values end after 3 bytes.
    static std::vector<std::string> Lines() {
        std::vector<std::string> lines;
        const std::string text = Exported(kAlertManager);
        for (std::size_t start = 0; start < text.size();) {
            const std::size_t end = text.find('\n', start);
            const std::string line = text.substr(start, end - start);
            const std::size_t hex = line.find("=hex(1):");
            if (hex != std::string::npos) {
                lines.push_back(line.substr(0, hex + sizeof("=hex(1):00,00,00") - 1));
            } else if (!line.empty() && !line.starts_with("  ")) {
                lines.push_back(line);
            }
            start = end + 1;
        }
        return lines;
    }

    static std::vector<std::string> Without(std::vector<std::string> lines,
                                            const std::vector<std::string> &others) {
        for (const std::string &other : others) {
            const auto found = std::find(lines.begin(), lines.end(), other);
            if (found != lines.end()) {
                lines.erase(found);
            }
        }
        return lines;
    }

    void Check(const SettingsCase &row) const {
        const Result result = Veloxctl(row.words, {.input = row.input});
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.output, row.output);
        EXPECT_EQ(result.errors, row.errors);
        const std::vector<std::string> now = Lines();
        EXPECT_THAT(Without(now, before_), testing::UnorderedElementsAreArray(row.after));
        EXPECT_THAT(Without(before_, now), testing::UnorderedElementsAreArray(row.gone));
    }

    std::vector<std::string> before_;
};

class SettingsCaseTest : public SettingsTest, public testing::WithParamInterface<SettingsCase> {};

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_SETTINGS_CASE_H
