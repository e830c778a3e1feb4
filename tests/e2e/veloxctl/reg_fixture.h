// A registry server for the tests of one program, and the part of the registry that a test works
// on.
#ifndef VELOXCTL_TEST_REG_FIXTURE_H
#define VELOXCTL_TEST_REG_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "command.h"
#include "support/server.h"

namespace veloxctl_test {

inline constexpr char kHeader[] = "Windows Registry Editor Version 5.00\r\n\r\n";

// Tests work below HKLM\test, which is gone before each of them.
class RegTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { server_ = std::make_unique<test_support::Server>(); }
    static void TearDownTestSuite() { server_.reset(); }

    void SetUp() override { Import("[-HKLM\\test]\n"); }

    // Makes the changes of .reg lines.
    static void Import(const std::string &lines) {
        const Result result = Veloxctl({"reg", "import", "-"}, {.input = kHeader + lines});
        ASSERT_EQ(result.status, 0) << result.errors;
    }

    // What HKLM\test holds, as .reg lines with LF and without the header; empty when it is absent.
    static std::string Exported(const std::string &key = "test") {
        std::string text = Veloxctl({"reg", "export", key}).output;
        std::erase(text, '\r');
        const std::size_t first = text.find('[');
        return first == std::string::npos ? "" : text.substr(first);
    }

    static test_support::Server &Server() { return *server_; }

  private:
    inline static std::unique_ptr<test_support::Server> server_;
};

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_REG_FIXTURE_H
