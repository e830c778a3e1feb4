// Batches: many changes as one, whole or not at all.
#include <ntwin32/registry.h>
#include <support/title.h>

#include "registry_support.h"

namespace {

using namespace registry_test;
using test_support::Server;

constexpr KES_REG_CHANGE Create(const char *path) {
    return {KES_REG_CREATE_KEY, 0, path, nullptr, nullptr, 0, 0};
}
KES_REG_CHANGE Set(const char *path, const char *name, std::string_view data) {
    return {KES_REG_SET_VALUE,
            REG_BINARY,
            path,
            name,
            reinterpret_cast<const BYTE *>(data.data()),
            static_cast<DWORD>(data.size()),
            0};
}
constexpr KES_REG_CHANGE DeleteValue(const char *path, const char *name) {
    return {KES_REG_DELETE_VALUE, 0, path, name, nullptr, 0, 0};
}
constexpr KES_REG_CHANGE DeleteTree(const char *path) {
    return {KES_REG_DELETE_TREE, 0, path, nullptr, nullptr, 0, 0};
}

LONG Apply(HKEY key, const std::vector<KES_REG_CHANGE> &changes, DWORD *failed = nullptr) {
    return KesRegApplyBatch(key, changes.data(), static_cast<DWORD>(changes.size()), failed);
}

class BatchTest : public testing::Test {
  protected:
    Server server_;
    HKEY key_ = CreateKey(kRoot, "BATCH");
};

TEST_F(BatchTest, ChangesAreMadeInTheirOrder) {
    EXPECT_EQ(Apply(key_, {Create("A\\B"), Set("A", "V", "first"), Set("a", "v", "second"),
                           Set("C", "KEPT", "x"), Set("C", "GONE", "y"), DeleteValue("C", "gone"),
                           Set("D\\E\\F", nullptr, "default"), DeleteTree("D\\E"),
                           Set("", "OWN", "of the key itself"), Set(nullptr, "NULL", "too")}),
              ERROR_SUCCESS);
    EXPECT_EQ(SubKeys(key_), (std::vector<std::string>{"A", "C", "D"}));
    EXPECT_EQ(SubKeys(OpenKey(key_, "A")), std::vector<std::string>{"B"});
    EXPECT_EQ(ReadBytes(OpenKey(key_, "A"), "V"), "second");
    EXPECT_EQ(Values(OpenKey(key_, "A")), std::vector<std::string>{"V"});
    EXPECT_EQ(Values(OpenKey(key_, "C")), std::vector<std::string>{"KEPT"});
    EXPECT_TRUE(SubKeys(OpenKey(key_, "D")).empty());
    EXPECT_EQ(ReadBytes(key_, "OWN"), "of the key itself");
    EXPECT_EQ(ReadBytes(key_, "NULL"), "too");
}

// A run of changes below one path looks the key up once: also when the key is deleted inside it.
TEST_F(BatchTest, ADeletedKeyIsMadeAnewByWhatFollows) {
    const HKEY before = CreateKey(key_, "RUN");
    EXPECT_EQ(Apply(key_, {Set("RUN", "OLD", "1"), DeleteTree("RUN"), Set("RUN", "NEW", "2")}),
              ERROR_SUCCESS);
    EXPECT_NE(OpenKey(key_, "RUN"), before);
    EXPECT_EQ(Values(OpenKey(key_, "RUN")), std::vector<std::string>{"NEW"});
    EXPECT_EQ(Apply(key_, {Set("RUN\\SUB", "V", "1"), DeleteTree("RUN"), Set("RUN\\SUB", "W", "2"),
                           DeleteValue("RUN\\SUB", "V")}),
              ERROR_SUCCESS);
    EXPECT_EQ(Values(OpenKey(key_, "RUN\\SUB")), std::vector<std::string>{"W"});
}

TEST_F(BatchTest, WhatIsAbsentNeedsNoDeletion) {
    EXPECT_EQ(Apply(key_, {DeleteTree("ABSENT\\X"), DeleteValue("ABSENT", "V"),
                           DeleteValue("", "ABSENT"), Create("A")}),
              ERROR_SUCCESS);
    EXPECT_EQ(SubKeys(key_), std::vector<std::string>{"A"});
}

TEST_F(BatchTest, NothingIsABatch) {
    DWORD failed = 99;
    EXPECT_EQ(KesRegApplyBatch(key_, nullptr, 0, &failed), ERROR_SUCCESS);
    EXPECT_EQ(failed, 99U);
    EXPECT_EQ(KesRegApplyBatch(key_, nullptr, 1, &failed), ERROR_INVALID_PARAMETER);
}

TEST_F(BatchTest, ATreeOfAnySizeIsDeleted) {
    std::vector<std::string> texts;
    for (int i = 0; i < 400; ++i)
        texts.push_back("TREE\\G" + std::to_string(i % 7) + "\\K" + std::to_string(i));
    std::vector<KES_REG_CHANGE> changes;
    for (const std::string &path : texts)
        changes.push_back(Set(path.c_str(), "V", "data"));
    KES_REG_SERVER_INFO before = {};
    KES_REG_SERVER_INFO filled = {};
    KES_REG_SERVER_INFO after = {};
    EXPECT_EQ(KesRegQueryServer(&before), ERROR_SUCCESS);
    EXPECT_EQ(Apply(key_, changes), ERROR_SUCCESS);
    EXPECT_EQ(KesRegQueryServer(&filled), ERROR_SUCCESS);
    EXPECT_EQ(filled.qwKeys, before.qwKeys + 1 + 7 + 400);
    EXPECT_EQ(filled.qwValues, before.qwValues + 400);
    EXPECT_EQ(Apply(kRoot, {DeleteTree("BATCH\\TREE")}), ERROR_SUCCESS);
    EXPECT_EQ(KesRegQueryServer(&after), ERROR_SUCCESS);
    EXPECT_EQ(after.qwKeys, before.qwKeys);
    EXPECT_EQ(after.qwValues, before.qwValues);
    EXPECT_EQ(KesRegVerify(nullptr, 0), ERROR_SUCCESS);
}

// Larger than a frame, and with single changes that are.
TEST_F(BatchTest, ManyFramesAreOneBatch) {
    const std::string large(KES_REG_MAX_DATA, 'l');
    const std::string medium(100000, 'm');
    std::vector<std::string> names;
    for (int i = 0; i < 20; ++i)
        names.push_back("V" + std::to_string(i));
    std::vector<KES_REG_CHANGE> changes = {Set("FRAMES", "LARGE", large)};
    for (const std::string &name : names)
        changes.push_back(Set("FRAMES", name.c_str(), medium));
    changes.push_back(Set("FRAMES", "LARGE2", large));
    EXPECT_EQ(Apply(key_, changes), ERROR_SUCCESS);
    const HKEY frames = OpenKey(key_, "FRAMES");
    EXPECT_EQ(ReadBytes(frames, "LARGE"), large);
    EXPECT_EQ(ReadBytes(frames, "V19"), medium);
    EXPECT_EQ(ReadBytes(frames, "LARGE2"), large);
}

// Batches that cannot be made: what fails, and that nothing of them is.
struct RefusedRow {
    const char *title;
    std::vector<KES_REG_CHANGE> changes;
    LONG result;
    DWORD failed;
};
const std::string kTooLong(256, 'n');
class RefusedBatchTest : public testing::TestWithParam<RefusedRow> {};
INSTANTIATE_TEST_SUITE_P(
    Registry, RefusedBatchTest,
    testing::Values(
        RefusedRow{"BadPath", {Create("NEW"), Set("A\\\\B", "V", "x")}, ERROR_BAD_PATHNAME, 1},
        RefusedRow{"KeyNameTooLong",
                   {Create("NEW"), Create("M"), Create(kTooLong.c_str())},
                   ERROR_INVALID_PARAMETER,
                   2},
        RefusedRow{"ValueNameTooLong",
                   {Create("NEW"), Set("NEW", kTooLong.c_str(), "x")},
                   ERROR_INVALID_PARAMETER,
                   1},
        RefusedRow{"UnknownOperation",
                   {Create("NEW"), {5, 0, "X", nullptr, nullptr, 0, 0}},
                   ERROR_INVALID_PARAMETER,
                   1},
        RefusedRow{"NoOperation",
                   {{0, 0, "X", nullptr, nullptr, 0, 0}, Create("NEW")},
                   ERROR_INVALID_PARAMETER,
                   0},
        RefusedRow{"ReservedIsNotZero",
                   {Create("NEW"), {1, 0, "X", nullptr, nullptr, 0, 1}},
                   ERROR_INVALID_PARAMETER,
                   1},
        RefusedRow{"DataAreNull",
                   {Create("NEW"), {2, 3, "X", "V", nullptr, 1, 0}},
                   ERROR_INVALID_PARAMETER,
                   1},
        RefusedRow{"DataTooLarge",
                   {Create("NEW"), {2, 3, "X", "V", nullptr, 0x100001, 0}},
                   ERROR_INVALID_PARAMETER,
                   1}),
    test_support::Title());

TEST_P(RefusedBatchTest, ChangesNothingAndTellsWhichFailed) {
    const Server server;
    const HKEY key = CreateKey(kRoot, "REFUSED");
    DWORD failed = 99;
    EXPECT_EQ(Apply(key, GetParam().changes, &failed), GetParam().result);
    EXPECT_EQ(failed, GetParam().failed);
    EXPECT_EQ(Apply(key, GetParam().changes, nullptr), GetParam().result);
    EXPECT_TRUE(SubKeys(key).empty());
}

TEST_F(BatchTest, TheRootsTreeIsNotDeleted) {
    DWORD failed = 99;
    EXPECT_EQ(Apply(kRoot, {Create("NEW"), DeleteTree("")}, &failed), ERROR_ACCESS_DENIED);
    EXPECT_EQ(failed, 1U);
    EXPECT_EQ(OpenResult(kRoot, "NEW"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(OpenResult(kRoot, "SOFTWARE"), ERROR_SUCCESS);
}

TEST_F(BatchTest, DepthIsLimited) {
    std::string path = "D";
    for (unsigned depth = 1; depth < KES_REG_MAX_DEPTH; ++depth)
        path += "\\D";
    DWORD failed = 99;
    EXPECT_EQ(Apply(key_, {Create("NEW"), Create(path.c_str())}, &failed), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(failed, 1U);
    EXPECT_TRUE(SubKeys(key_).empty());
}

// A reader sees all values of a batch or none, whatever moment it looks at.
TEST_F(BatchTest, ReadersSeeWholeBatches) {
    const auto writer = [this] {
        for (DWORD number = 1; number <= 60; ++number) {
            const std::string_view data(reinterpret_cast<const char *>(&number), sizeof number);
            // Made anew each time, so that a half would show as a missing value, too.
            EXPECT_EQ(Apply(key_, {DeleteTree("PAIR"), Set("PAIR", "A", data),
                                   Set("PAIR", "B", data), Set("", "DONE", data)}),
                      ERROR_SUCCESS);
        }
    };
    ASSERT_EQ(Apply(key_, {Create("PAIR")}), ERROR_SUCCESS);
    const pid_t child = ::fork();
    if (child == 0) {
        writer();
        ::_exit(HasFailure() ? 1 : 0);
    }
    int status = -1;
    bool seen = false;  // a batch
    while (::waitpid(child, &status, WNOHANG) == 0) {
        // One call is one snapshot; the key may be gone since it was opened.
        DWORD values = 0;
        const LONG result =
            RegQueryInfoKey(OpenKey(key_, "PAIR"), nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, &values, nullptr, nullptr, nullptr, nullptr);
        if (result != ERROR_KEY_DELETED) {
            EXPECT_EQ(result, ERROR_SUCCESS);
            EXPECT_TRUE(values == 2 || !seen) << values;
            seen = values == 2;
        }
    }
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(seen);
}

}  // namespace
