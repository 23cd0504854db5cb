// Which frames each chunk of a shared-out render draws: cut on key-frame
// intervals, every frame drawn exactly once, and one-line refusals.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "MVNChunkPlan.h"

using namespace Morvane;

namespace {

struct Split {
    int first;
    int last;
    int interval;
    std::vector<std::pair<int, int>> chunks;
};

class ChunkPlanSplit : public ::testing::TestWithParam<Split> {};

TEST_P(ChunkPlanSplit, ChunksStartOnKeyFramesAndCoverTheRangeOnce) {
    const Split& s = GetParam();
    const int n = static_cast<int>(s.chunks.size());
    int next = s.first;
    for (int k = 1; k <= n; ++k) {
        int a = -1, b = -1;
        std::string error;
        ASSERT_TRUE(MVNChunkPlan(k, n).range(s.first, s.last, s.interval, a, b, error)) << error;
        EXPECT_EQ(std::make_pair(a, b), s.chunks[k - 1]) << "chunk " << k << "/" << n;
        EXPECT_EQ(a, next) << "chunk " << k << " leaves a gap or overlaps";
        EXPECT_EQ((a - s.first) % s.interval, 0) << "chunk " << k << " starts inside a key-frame interval";
        next = b + 1;
    }
    EXPECT_EQ(next, s.last + 1);
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, ChunkPlanSplit,
    ::testing::Values(Split{0, 199, 50, {{0, 49}, {50, 99}, {100, 149}, {150, 199}}},
                      // Uneven: the earlier chunks take the extra interval.
                      Split{0, 199, 50, {{0, 99}, {100, 149}, {150, 199}}},
                      Split{0, 200, 50, {{0, 149}, {150, 200}}},
                      // A range that does not start at 0 is cut from its own first frame.
                      Split{10, 129, 50, {{10, 109}, {110, 129}}},
                      Split{0, 0, 50, {{0, 0}}},
                      Split{0, 7199, 50, {{0, 1799}, {1800, 3599}, {3600, 5399}, {5400, 7199}}}));

TEST(ChunkPlan, MoreChunksThanKeyFrameIntervalsAreRefused) {
    int a = -1, b = -1;
    std::string error;
    EXPECT_FALSE(MVNChunkPlan(4, 4).range(0, 119, 50, a, b, error));
    EXPECT_EQ(error, "--chunk 4/4: 120 frames make 3 key-frame intervals of 50; use at most 3 chunks");
    EXPECT_FALSE(MVNChunkPlan(1, 2).range(5, 5, 50, a, b, error));
    EXPECT_EQ(error, "--chunk 1/2: 1 frames make 1 key-frame intervals of 50; use at most 1 chunks");
}

TEST(ChunkPlan, ParsesKOfN) {
    MVNChunkPlan plan;
    std::string error;
    ASSERT_TRUE(MVNChunkPlan::parse("3/4", plan, error)) << error;
    EXPECT_EQ(plan.index(), 3);
    EXPECT_EQ(plan.count(), 4);
    ASSERT_TRUE(MVNChunkPlan::parse("10000/10000", plan, error)) << error;
    EXPECT_EQ(plan.index(), 10000);
}

class ChunkPlanBadText : public ::testing::TestWithParam<const char*> {};

TEST_P(ChunkPlanBadText, IsRefusedWithTheTextItGot) {
    MVNChunkPlan plan(2, 3);
    std::string error;
    EXPECT_FALSE(MVNChunkPlan::parse(GetParam(), plan, error));
    EXPECT_EQ(error, std::string("--chunk wants K/N with 1 <= K <= N <= 10000, got \"") + GetParam() + "\"");
    EXPECT_EQ(plan.index(), 2) << "a refused text leaves the plan alone";
}

INSTANTIATE_TEST_SUITE_P(Texts, ChunkPlanBadText,
                         ::testing::Values("", "4", "/4", "3/", "0/4", "5/4", "-1/4", "3/-4", "a/4", "3/4x", "3 /4",
                                           "1/2/3", "1/10001", "1/99999999999", "+1/4"));

TEST(ChunkPlan, SegmentsSitBesideTheOutputWithTheirPlaceInTheName) {
    EXPECT_EQ(MVNChunkPlan(2, 4).segmentPath("/renders/film.mp4"), "/renders/film.chunk-2-of-4.mp4");
    EXPECT_EQ(MVNChunkPlan(1, 1).segmentPath("/renders/a.b/film.mkv"), "/renders/a.b/film.chunk-1-of-1.mkv");
    EXPECT_EQ(MVNChunkPlan(3, 12).segmentPath("/renders/a.b/film"), "/renders/a.b/film.chunk-3-of-12");
}

}  // namespace
