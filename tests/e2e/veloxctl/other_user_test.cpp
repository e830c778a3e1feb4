// veloxctl for a person who is not root: everything is shown to the socket's group, nothing is
// changed, and the message says why.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>
#include <unistd.h>

#include <filesystem>

#include "command.h"
#include "support/server.h"

namespace veloxctl_test {
namespace {

using testing::HasSubstr;

constexpr gid_t kNobody = 65534;

class OtherUserTest : public testing::Test {
  protected:
    OtherUserTest() {
        // The product tree of the build may stand where nobody may look.
        std::filesystem::copy(test_support::ProductRoot(), product_.Path(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::copy_symlinks);
        for (const std::string &folder : {product_.Path(), Above(server_.RunFolder())}) {
            std::filesystem::permissions(folder, std::filesystem::perms(0755));
        }
    }

    void LetIn() const { ASSERT_EQ(::chown(server_.SocketPath().c_str(), 0, kNobody), 0); }

    Result AsNobody(const std::vector<std::string> &words) const {
        const std::string id = std::to_string(kNobody);
        std::vector<std::string> command = {"--reuid=" + id, "--regid=" + id, "--clear-groups",
                                            product_ / "bin/veloxctl"};
        command.insert(command.end(), words.begin(), words.end());
        return Veloxctl(
            command, {.variables = {{"KES_ROOT", product_.Path()}}, .program = "/usr/bin/setpriv"});
    }

    static std::string Above(const std::string &path) {
        return std::filesystem::path(path).parent_path();
    }

    test_support::TempFolder product_;
    test_support::Server server_;
};

const std::vector<std::vector<std::string>> kShowing = {
    {"reg", "query", "HKLM\\SOFTWARE\\XEV", "-r"},
    {"reg", "export", "HKLM\\SOFTWARE"},
    {"base", "show"},
    {"trap", "list"},
    {"dest", "show", "VELOXREPORT"},
    {"mail-dest", "show"},
    {"method", "show"},
    {"manager", "show"},
    {"event", "list"},
    {"syslog", "list"},
    {"customer", "show"},
    {"machine", "show"},
    {"options", "show"},
    {"vendor", "show"},
    {"mail", "show"},
    {"report", "preview"},
};

TEST_F(OtherUserTest, TheGroupIsShownWhatRootIs) {
    LetIn();
    for (const auto &words : kShowing) {
        const Result root = Veloxctl(words);
        const Result nobody = AsNobody(words);
        EXPECT_EQ(nobody.status, root.status) << words[0];
        EXPECT_EQ(nobody.output, root.output) << words[0];
        EXPECT_EQ(nobody.errors, root.errors) << words[0];
    }
}

const std::vector<std::vector<std::string>> kChanging = {
    {"reg", "add", "HKLM\\SOFTWARE\\NEW"},
    {"reg", "delete", "HKLM\\SOFTWARE\\XEV", "-f"},
    {"base", "set", "MANAGER (SNMP)", "--enabled", "on"},
    {"trap", "add", "10.0.0.1"},
    {"dest", "delete", "VELOXREPORT", "--force"},
    {"mail-dest", "set", "--subject", "x"},
    {"method", "set", "manager"},
    {"manager", "set", "--address", "10.0.0.1"},
    {"customer", "set", "--name", "x"},
    {"machine", "set", "--os-name", "x"},
    {"vendor", "set", "--dealer", "x"},
    {"options", "set", "A"},
    {"syslog", "add", "A", "B", "--keyword", "x"},
    {"mail", "set", "--server", "10.0.0.1"},
};

TEST_F(OtherUserTest, TheGroupChangesNothing) {
    LetIn();
    const std::string before = Veloxctl({"reg", "export", "HKLM"}).output;
    ASSERT_THAT(before, HasSubstr("VELOXREPORT"));
    for (const auto &words : kChanging) {
        const Result result = AsNobody(words);
        EXPECT_EQ(result.status, EX_NOPERM) << words[0] << " " << words[1] << result.errors;
        EXPECT_NE(result.errors, "") << words[0];
    }
    EXPECT_EQ(Veloxctl({"reg", "export", "HKLM"}).output, before);
}

TEST_F(OtherUserTest, WhoIsNotInTheGroupIsTold) {
    for (const auto &words : kShowing) {
        const Result result = AsNobody(words);
        EXPECT_EQ(result.status, EX_NOPERM) << words[0] << result.errors;
        EXPECT_NE(result.errors, "") << words[0];
        EXPECT_EQ(result.output, "") << words[0];
    }
}

}  // namespace
}  // namespace veloxctl_test
