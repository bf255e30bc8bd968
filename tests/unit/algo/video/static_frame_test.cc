#include "algo/video/static_frame.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "algo/video/planes.h"
#include "support/random.h"

namespace {

using ZELAlgo::comparedRegion;
using ZELAlgo::meanDifference;
using ZELAlgo::Region;
using ZELAlgo::StaticFrame_t;
using Bytes = std::vector<uint8_t>;

class StaticFrame : public testing::Test {
  protected:
    StaticFrame() : state_(ZELAlgo::StaticFrameCreate(kWidth, kHeight, 3), &ZELAlgo::StaticFrameDestroy) {}

    bool isStatic(const Bytes& luma, uint32_t width = kWidth, uint32_t height = kHeight) {
        bool flag = false;
        const int32_t status =
            StaticFrameExecute(state_.get(), ZELAlgo::planesOf(luma.data(), width, height), flag);
        EXPECT_EQ(status, flag ? 1 : 0) << "a static frame is a failure, too";
        return flag;
    }

    static constexpr uint32_t kWidth = 32;
    static constexpr uint32_t kHeight = 24;
    std::unique_ptr<StaticFrame_t, decltype(&ZELAlgo::StaticFrameDestroy)> state_;
};

TEST_F(StaticFrame, FlagsEveryThirdLikeFrameFromTheBlackStartOn) {
    const Bytes black(kWidth * kHeight, 0);
    const Bytes grey(kWidth * kHeight, 3);
    for (const bool want : {false, false, true, false, false, true}) {
        EXPECT_EQ(isStatic(black), want);
    }
    EXPECT_FALSE(isStatic(black));
    EXPECT_FALSE(isStatic(black));
    EXPECT_FALSE(isStatic(grey)) << "one other frame starts the run anew";
    for (const bool want : {false, false, true}) {
        EXPECT_EQ(isStatic(grey), want);
    }
}

TEST_F(StaticFrame, TruncatesTheMeanDifferenceOfEachRegion) {
    Bytes frame(kWidth * kHeight, 100);
    isStatic(frame);
    for (size_t i = 0; i < frame.size(); i += 2) {
        frame[i] = 105;  // mean difference 2.5
    }
    isStatic(frame);
    EXPECT_EQ(state_->score, 2.0F);
    EXPECT_EQ(state_->still_count, 1U);
}

TEST_F(StaticFrame, LooksAtTheMiddleOnly) {
    Bytes frame(kWidth * kHeight, 0);
    isStatic(frame);
    // Regions reach from 3 pixels above to 3 below the middle half.
    for (uint32_t y = 0; y < kHeight; ++y) {
        for (uint32_t x = 0; x < kWidth; ++x) {
            const bool middle = y >= 3 && y < 21 && x >= 5 && x < 27;
            frame[y * kWidth + x] = middle ? 0 : 255;
        }
    }
    isStatic(frame);
    EXPECT_EQ(state_->score, 0.0F);
}

TEST_F(StaticFrame, KeepsTheBytesThatFitWhenTheSizeChanges) {
    isStatic(Bytes(kWidth * kHeight, 200));
    // Twice as many rows of half the width are the same bytes; the rows that come on top are zero.
    isStatic(Bytes(16 * 48, 200), 16, 48);
    EXPECT_EQ(state_->score, 0.0F);
    Bytes taller(16 * 96, 200);
    std::fill_n(taller.begin() + 16 * 48, 16 * 48, uint8_t{0});
    isStatic(taller, 16, 96);
    EXPECT_EQ(state_->score, 0.0F);
    EXPECT_TRUE(isStatic(Bytes(8 * 8, 200), 8, 8)) << "the third like frame";
}

TEST(ComparedRegion, StaysInsideEveryFrame) {
    support::Random random(3);
    for (uint32_t width = 0; width < 70; ++width) {
        for (uint32_t height = 0; height < 70; ++height) {
            for (uint32_t draw = 0; draw < 80; ++draw) {
                const Region region = comparedRegion(width, height, draw);
                ASSERT_LE(region.top, region.bottom);
                ASSERT_LE(region.left, region.right);
                ASSERT_LE(region.bottom, height);
                ASSERT_LE(region.right, width);
            }
        }
    }
}

TEST(ComparedRegion, IsTheMiddleHalfMovedByUpToAnEighthOfTheShorterSide) {
    const Region first = comparedRegion(160, 80, 0);
    EXPECT_EQ(first.top, 10U);
    EXPECT_EQ(first.bottom, 50U);
    EXPECT_EQ(first.left, 30U);
    EXPECT_EQ(first.right, 110U);
    const Region last = comparedRegion(160, 80, 79);
    EXPECT_EQ(last.top, 29U);
    EXPECT_EQ(last.left, 49U);
    EXPECT_EQ(comparedRegion(160, 80, 80).top, first.top);
}

TEST(MeanDifference, IsTakenIn32SignedBits) {
    EXPECT_EQ(meanDifference(160 * 80 / 4 * 9 - 1, 160, 80), 8);
    EXPECT_EQ(meanDifference(0x2000'0000, 100, 100), -214748) << "four times that is negative";
    EXPECT_EQ(meanDifference(5, 0x10000, 0x10000), 0) << "no pixels that 32 bits can count";
    EXPECT_EQ(meanDifference(0, 0, 0), 0);
}

TEST(OffsetGenerator, ReachesEveryOffset) {
    ZELAlgo::OffsetGenerator generator;
    std::vector<int> seen(45);
    for (int i = 0; i < 4000; ++i) {
        ++seen[generator.next() % 180 / 4];
    }
    EXPECT_GT(*std::min_element(seen.begin(), seen.end()), 30);
}

}  // namespace
