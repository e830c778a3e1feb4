// Names and folders that the library hands out, and what it does with buffers that are too small.
#include <ntwin32/file.h>
#include <ntwin32/system.h>

#include <gtest/gtest.h>
#include <sched.h>
#include <support/environment.h>
#include <support/temp_folder.h>
#include <support/title.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace {

using test_support::EnvironmentVariable;

std::string HostName() {
    char name[256] = "";
    EXPECT_EQ(::gethostname(name, sizeof name), 0);
    return name;
}

TEST(ComputerName, IsTheHostName) {
    char name[257];
    DWORD size = sizeof name;
    ASSERT_NE(GetComputerName(name, &size), FALSE);
    EXPECT_EQ(name, HostName());
    EXPECT_EQ(size, HostName().size());
}

TEST(ComputerName, NeedsRoomForItsTerminator) {
    const auto length = static_cast<DWORD>(HostName().size());
    char name[257] = "untouched";
    DWORD size = length;
    EXPECT_EQ(GetComputerName(name, &size), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(size, length + 1);
    EXPECT_STREQ(name, "untouched");
    EXPECT_NE(GetComputerName(name, &size), FALSE);
    size = 0;
    EXPECT_EQ(GetComputerName(nullptr, &size), FALSE);
    EXPECT_EQ(size, length + 1);
    EXPECT_EQ(GetComputerName(name, nullptr), FALSE);
    size = 9;
    EXPECT_EQ(GetComputerName(nullptr, &size), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

// In a child with a host name of its own: 0 when the library gives it, 2 when that is not allowed.
int NameInOwnNamespace(const std::string &host) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::unshare(CLONE_NEWUTS) != 0 || ::sethostname(host.data(), host.size()) != 0) {
            ::_exit(2);
        }
        char name[257];
        DWORD size = sizeof name;
        ::_exit(GetComputerName(name, &size) != FALSE && name == host ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

TEST(ComputerName, MayBeAsLongAsTheSystemAllows) {
    for (const std::string &host : {std::string("kes01.example"), std::string(64, 'h')}) {
        const int result = NameInOwnNamespace(host);
        if (result == 2) {
            GTEST_SKIP() << "needs root";
        }
        EXPECT_EQ(result, 0) << host;
    }
}

struct ExpansionCase {
    const char *title;
    std::string text;
    std::string expanded;
};

class Expansion : public testing::TestWithParam<ExpansionCase> {
  protected:
    EnvironmentVariable root_{"KES_ROOT", "/srv/product"};
    EnvironmentVariable product_{"KesDir"};
    EnvironmentVariable name_{"VELOX_NAME", "value"};
    EnvironmentVariable empty_{"VELOX_EMPTY", ""};
    EnvironmentVariable sign_{"VELOX_SIGN", "%VELOX_NAME%"};
    EnvironmentVariable unknown_{"VELOX_UNKNOWN"};
};

TEST_P(Expansion, ReplacesKnownNames) {
    const ExpansionCase &row = GetParam();
    char buffer[256] = "former";
    EXPECT_EQ(ExpandEnvironmentStrings(row.text.c_str(), buffer, sizeof buffer),
              row.expanded.size() + 1);
    EXPECT_EQ(buffer, row.expanded);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Expansion,
    testing::Values(
        ExpansionCase{"Empty", "", ""}, ExpansionCase{"Plain", "/opt/lib", "/opt/lib"},
        ExpansionCase{"ProductRoot", "%KesDir%", "/srv/product"},
        ExpansionCase{"InAPath", "%KesDir%/lib/%VELOX_NAME%.dll", "/srv/product/lib/value.dll"},
        ExpansionCase{"EmptyVariable", "<%VELOX_EMPTY%>", "<>"},
        ExpansionCase{"Unknown", "a%VELOX_UNKNOWN%b", "a%VELOX_UNKNOWN%b"},
        ExpansionCase{"UnknownTakesItsSigns", "%VELOX_UNKNOWN%VELOX_NAME%",
                      "%VELOX_UNKNOWN%VELOX_NAME%"},
        ExpansionCase{"NamesDifferInCase", "%velox_name%%kesdir%", "%velox_name%%kesdir%"},
        ExpansionCase{"NoName", "100%% sure", "100%% sure"},
        ExpansionCase{"OneSign", "100% sure", "100% sure"},
        ExpansionCase{"SignAtTheEnd", "%VELOX_NAME%%", "value%"},
        ExpansionCase{"NotTwice", "%VELOX_SIGN%", "%VELOX_NAME%"}),
    test_support::Title());

TEST_F(Expansion, PrefersTheProductVariable) {
    product_.Set("/elsewhere");
    char buffer[64];
    EXPECT_EQ(ExpandEnvironmentStrings("%KesDir%", buffer, sizeof buffer), 11u);
    EXPECT_STREQ(buffer, "/elsewhere");
    product_.Set("");
    EXPECT_EQ(ExpandEnvironmentStrings("%KesDir%", buffer, sizeof buffer), 13u);
    EXPECT_STREQ(buffer, "/srv/product");
}

TEST_F(Expansion, TellsTheSizeOfATextThatDoesNotFit) {
    char buffer[16] = "former";
    EXPECT_EQ(ExpandEnvironmentStrings("%KesDir%", buffer, 12), 13u);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(ExpandEnvironmentStrings("%KesDir%", buffer, 13), 13u);
    EXPECT_STREQ(buffer, "/srv/product");
    EXPECT_EQ(ExpandEnvironmentStrings("%KesDir%", nullptr, 0), 13u);
}

TEST_F(Expansion, FailsWithoutAText) {
    char buffer[16] = "former";
    EXPECT_EQ(ExpandEnvironmentStrings(nullptr, buffer, sizeof buffer), 0u);
    EXPECT_EQ(ExpandEnvironmentStrings("x", nullptr, 16), 0u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_STREQ(buffer, "former");
}

TEST_F(Expansion, FailsWithoutAnAbsoluteProductRoot) {
    root_.Set("product");
    char buffer[16] = "former";
    EXPECT_EQ(ExpandEnvironmentStrings("%KesDir%", buffer, sizeof buffer), 0u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_PATHNAME));
    EXPECT_STREQ(buffer, "former");
}

TEST(Language, FollowsItsVariable) {
    EnvironmentVariable variable("KES_LANG", "ja_JP.UTF-8");
    char name[128] = "en_US";
    EXPECT_EQ(GetSystemDefaultLangID(), LANGID_JAPANESE);
    EXPECT_NE(GetSystemDefaultLANG(name, sizeof name), FALSE);
    EXPECT_STREQ(name, "ja_JP.eucJP");
    variable.Set("de_DE.UTF-8");
    EXPECT_EQ(GetSystemDefaultLangID(), LANGID_ENGLISH_US);
    EXPECT_NE(GetSystemDefaultLANG(name, sizeof name), FALSE);
    EXPECT_STREQ(name, "de_DE.UTF-8");
}

TEST(Language, IsStoredWholeOrNotAtAll) {
    const EnvironmentVariable variable("KES_LANG", "ja");
    char name[16] = "en_US";
    EXPECT_EQ(GetSystemDefaultLANG(name, 11), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_STREQ(name, "en_US");
    EXPECT_EQ(GetSystemDefaultLANG(name, 0), FALSE);
    EXPECT_EQ(GetSystemDefaultLANG(nullptr, 16), FALSE);
    EXPECT_NE(GetSystemDefaultLANG(name, 12), FALSE);
    EXPECT_STREQ(name, "ja_JP.eucJP");
}

TEST(LeadByte, IsWhatShiftJisSays) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool lead = (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
        EXPECT_EQ(IsDBCSLeadByte(static_cast<BYTE>(byte)) != FALSE, lead) << byte;
    }
}

struct FolderFunction {
    const char *title;
    BOOL (*get)(char *, DWORD) noexcept;
    const char *variable;
    const char *otherwise;
};

class Folder : public testing::TestWithParam<FolderFunction> {};

TEST_P(Folder, IsTheVariableOrTheDefault) {
    const FolderFunction &row = GetParam();
    EnvironmentVariable variable(row.variable);
    char path[64] = "former";
    EXPECT_NE(row.get(path, sizeof path), FALSE);
    EXPECT_STREQ(path, row.otherwise);
    variable.Set("/srv/folder/");
    EXPECT_NE(row.get(path, sizeof path), FALSE);
    EXPECT_STREQ(path, "/srv/folder");
    variable.Set("folder");
    EXPECT_EQ(row.get(path, sizeof path), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_PATHNAME));
    EXPECT_STREQ(path, "/srv/folder");
}

TEST_P(Folder, IsStoredWholeOrNotAtAll) {
    const FolderFunction &row = GetParam();
    const EnvironmentVariable variable(row.variable, "/srv/folder");
    char path[64] = "former";
    EXPECT_EQ(row.get(path, 11), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(row.get(path, 0), FALSE);
    EXPECT_EQ(row.get(nullptr, 64), FALSE);
    EXPECT_STREQ(path, "former");
    EXPECT_NE(row.get(path, 12), FALSE);
    EXPECT_STREQ(path, "/srv/folder");
}

INSTANTIATE_TEST_SUITE_P(Rows, Folder,
                         testing::Values(FolderFunction{"Root", GetKesRootPath, "KES_ROOT",
                                                        "/opt/xev/kestro_sa"},
                                         FolderFunction{"State", GetKesStatePath, "KES_STATE",
                                                        "/var/opt/xev/kestro_sa"}),
                         test_support::Title());

TEST(Distribution, IsCutAtTheCapacity) {
    char line[600] = "former";
    const BOOL found = getOSDistribution(line, sizeof line);
    EXPECT_EQ(found != FALSE, *line != '\0');
    if (found == FALSE) {
        GTEST_SKIP() << "this machine does not name its distribution";
    }
    char cut[5] = "####";
    EXPECT_NE(getOSDistribution(cut, 4), FALSE);
    EXPECT_EQ(std::string(cut), std::string(line).substr(0, 3));
    EXPECT_NE(getOSDistribution(cut, 1), FALSE);
    EXPECT_STREQ(cut, "");
    EXPECT_EQ(getOSDistribution(cut, 0), FALSE);
    EXPECT_EQ(getOSDistribution(nullptr, 16), FALSE);
}

}  // namespace
