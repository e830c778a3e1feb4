// Subtree deletion: all or up to the first refusal, and never more than the key that is named.
#include "registry/subtree.h"

#include <gmock/gmock.h>

#include <string>

#include "fakes/platform.h"
#include "fakes/registry.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsSubsetOf;

class SubtreeTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::StoreNumber("A\\B\\ADDRESS", "PORT", 1);
        fakes::CreateKey("A\\B\\LINKS\\X\\DEEP");
        fakes::CreateKey("A\\B\\LINKS\\Y");
        fakes::CreateKey("A\\C");
    }
};

TEST_F(SubtreeTest, DeletesEverythingBelowAndTheKeyItself) {
    EXPECT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, "A\\B"), ERROR_SUCCESS);
    EXPECT_THAT(fakes::Dump(), ElementsAre("A", "A\\C"));
}

TEST_F(SubtreeTest, DeletesAKeyWithoutSubKeys) {
    EXPECT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, "A\\C"), ERROR_SUCCESS);
    EXPECT_FALSE(fakes::KeyExists("A\\C"));
    EXPECT_TRUE(fakes::KeyExists("A\\B\\LINKS\\X\\DEEP"));
}

TEST_F(SubtreeTest, AMissingKeyIsReported) {
    EXPECT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, "A\\NONE"), ERROR_FILE_NOT_FOUND);
}

TEST_F(SubtreeTest, RefusesToDeleteTheRootOfThePath) {
    const auto before = fakes::Dump();
    EXPECT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, ""), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, "A\\B\\"), ERROR_BAD_PATHNAME);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::CallCount("RegDeleteKey"), 0);
}

TEST_F(SubtreeTest, DeletesAsDeepAsKeysGo) {
    std::string path = "A\\B";
    for (DWORD depth = 2; depth < KES_REG_MAX_DEPTH; ++depth) {
        path += "\\K";
    }
    fakes::CreateKey(path);
    EXPECT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, "A\\B"), ERROR_SUCCESS);
    EXPECT_FALSE(fakes::KeyExists("A\\B"));
}

TEST_F(SubtreeTest, EachRefusedCallEndsItWithItsErrorAndClosesEveryKey) {
    ASSERT_EQ(DeleteSubtree(HKEY_LOCAL_MACHINE, "A\\B"), ERROR_SUCCESS);
    const int calls = static_cast<int>(fakes::Calls().size());
    for (int nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE(nth);
        fakes::Reset();
        SetUp();
        const auto before = fakes::Dump();
        fakes::FailAnyCall(nth);
        const LONG result = DeleteSubtree(HKEY_LOCAL_MACHINE, "A\\B");
        const bool closing =
            fakes::Calls()[static_cast<std::size_t>(nth) - 1].function == "RegCloseKey";
        EXPECT_EQ(result, closing ? ERROR_SUCCESS : ERROR_REGISTRY_IO_FAILED);
        EXPECT_EQ(fakes::KeyExists("A\\B"), !closing);
        EXPECT_THAT(fakes::Dump(), IsSubsetOf(before));
        EXPECT_TRUE(fakes::KeyExists("A\\C"));
        EXPECT_EQ(fakes::OpenKeys(), 0);
        EXPECT_EQ(fakes::UnusedFaults(), 0);
    }
}

}  // namespace
