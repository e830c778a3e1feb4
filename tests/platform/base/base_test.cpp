// What the platform's folders share: descriptors that close themselves and the product's folders.
#include <base/descriptor.h>
#include <base/folders.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <support/environment.h>
#include <support/title.h>

#include <cerrno>
#include <climits>
#include <string>
#include <utility>

namespace {

using base::FolderPath;
using base::UniqueDescriptor;
using test_support::EnvironmentVariable;

int OpenNull() {
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}
bool IsOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

TEST(UniqueDescriptor, ClosesAtTheEndOfItsScope) {
    const int number = OpenNull();
    {
        const UniqueDescriptor descriptor(number);
        ASSERT_TRUE(descriptor);
        EXPECT_EQ(descriptor.Get(), number);
        EXPECT_TRUE(IsOpen(number));
    }
    EXPECT_FALSE(IsOpen(number));
}

TEST(UniqueDescriptor, MovesItsOwnership) {
    const int number = OpenNull();
    UniqueDescriptor first(number);
    UniqueDescriptor second(std::move(first));
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): the state after a move is the point
    EXPECT_EQ(second.Get(), number);

    const int other = OpenNull();
    UniqueDescriptor third(other);
    third = std::move(second);
    EXPECT_EQ(third.Get(), number);
    EXPECT_FALSE(IsOpen(other));
    EXPECT_TRUE(IsOpen(number));
}

TEST(UniqueDescriptor, SurvivesAMoveToItself) {
    const int number = OpenNull();
    UniqueDescriptor descriptor(number);
    UniqueDescriptor &same = descriptor;
    descriptor = std::move(same);
    EXPECT_EQ(descriptor.Get(), number);
    EXPECT_TRUE(IsOpen(number));
}

TEST(UniqueDescriptor, ReleaseLeavesTheDescriptorOpen) {
    UniqueDescriptor descriptor(OpenNull());
    const int number = descriptor.Release();
    EXPECT_FALSE(descriptor);
    EXPECT_TRUE(IsOpen(number));
    descriptor.Reset(number);
    descriptor.Reset(number);
    EXPECT_TRUE(IsOpen(number));
    descriptor.Reset();
    EXPECT_FALSE(IsOpen(number));
}

TEST(UniqueDescriptor, KeepsErrno) {
    UniqueDescriptor descriptor(OpenNull());
    ::close(descriptor.Get());  // so that its own close fails with EBADF
    errno = ENOENT;
    descriptor.Reset();
    EXPECT_EQ(errno, ENOENT);
}

struct FolderCase {
    const char *title;
    const char *value;  // null: not set
    const char *path;   // null: refused
};

class Folders : public testing::TestWithParam<FolderCase> {};

TEST_P(Folders, GivesTheVariableOrTheDefault) {
    const FolderCase &row = GetParam();
    EnvironmentVariable variable("KES_STATE");
    if (row.value != nullptr) {
        variable.Set(row.value);
    }
    char path[64] = "untouched";
    EXPECT_EQ(FolderPath(base::kStateFolder, path, sizeof path), row.path != nullptr);
    EXPECT_STREQ(path, row.path != nullptr ? row.path : "untouched");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Folders,
    testing::Values(FolderCase{"NotSet", nullptr, "/var/opt/xev/kestro_sa"},
                    FolderCase{"Empty", "", "/var/opt/xev/kestro_sa"},
                    FolderCase{"Set", "/srv/state", "/srv/state"},
                    FolderCase{"TrailingSlashes", "/srv/state//", "/srv/state"},
                    FolderCase{"Root", "/", "/"}, FolderCase{"Slashes", "///", "/"},
                    FolderCase{"Relative", "state", nullptr}, FolderCase{"Dot", "./state", nullptr},
                    FolderCase{"JustFits",
                               "/23456789012345678901234567890123456789012345678901234567890123",
                               "/23456789012345678901234567890123456789012345678901234567890123"},
                    FolderCase{"TooLong",
                               "/234567890123456789012345678901234567890123456789012345678901234",
                               nullptr}),
    test_support::Title());

TEST(Folders, EachFolderHasItsOwnVariable) {
    const EnvironmentVariable root("KES_ROOT", "/a");
    const EnvironmentVariable state("KES_STATE", "/b");
    const EnvironmentVariable run("KES_RUN", "/c");
    char path[8];
    ASSERT_TRUE(FolderPath(base::kProductRoot, path, sizeof path));
    EXPECT_STREQ(path, "/a");
    ASSERT_TRUE(FolderPath(base::kStateFolder, path, sizeof path));
    EXPECT_STREQ(path, "/b");
    ASSERT_TRUE(FolderPath(base::kRunFolder, path, sizeof path));
    EXPECT_STREQ(path, "/c");
}

}  // namespace
