// The owners of resources: what is held is closed once, on every way out.
#include "registry/handles.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

std::vector<int> closed;

struct RecordingPolicy {
    using Type = int;
    static Type None() noexcept { return -1; }
    static void Close(Type value) noexcept { closed.push_back(value); }
};
using Recording = AutoHandle<RecordingPolicy>;

class HandlesTest : public ::testing::Test {
  protected:
    void SetUp() override { closed.clear(); }
};

TEST_F(HandlesTest, ClosesAtTheEndOfItsScope) {
    { const Recording handle(7); }
    EXPECT_EQ(closed, std::vector<int>{7});
}

TEST_F(HandlesTest, AnEmptyOneClosesNothing) {
    {
        const Recording handle;
        EXPECT_FALSE(handle.IsValid());
    }
    EXPECT_TRUE(closed.empty());
}

TEST_F(HandlesTest, MovingEmptiesTheSource) {
    Recording from(7);
    Recording to(std::move(from));
    EXPECT_FALSE(from.IsValid());  // NOLINT(bugprone-use-after-move): what is left is the point
    EXPECT_EQ(to.Get(), 7);
    EXPECT_TRUE(closed.empty());
}

TEST_F(HandlesTest, MoveAssignmentClosesWhatWasHeld) {
    Recording from(7);
    Recording to(8);
    to = std::move(from);
    EXPECT_EQ(closed, std::vector<int>{8});
    EXPECT_EQ(to.Get(), 7);
}

TEST_F(HandlesTest, SelfMoveKeepsTheResource) {
    Recording handle(7);
    Recording &same = handle;
    handle = std::move(same);
    EXPECT_EQ(handle.Get(), 7);
    EXPECT_TRUE(closed.empty());
}

TEST_F(HandlesTest, ResetToTheSameValueKeepsIt) {
    Recording handle(7);
    handle.Reset(7);
    EXPECT_TRUE(closed.empty());
    handle.Reset();
    EXPECT_EQ(closed, std::vector<int>{7});
}

TEST_F(HandlesTest, PutClosesWhatWasHeldAndReleaseClosesNothing) {
    Recording handle(7);
    *handle.Put() = 9;
    EXPECT_EQ(closed, std::vector<int>{7});
    EXPECT_EQ(handle.Release(), 9);
    EXPECT_FALSE(handle.IsValid());
    EXPECT_EQ(closed, std::vector<int>{7});
}

}  // namespace
