#include "algo/video/screen_type.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

using ZELAlgo::Histogram;
using ZELAlgo::isBlack;
using ZELAlgo::isChromaZero;
using ZELAlgo::isClearlyBlack;
using ZELAlgo::isLumaZero;

TEST(ScreenType, BlackCountsTheThirtyDarkestLevels) {
    Histogram histogram{};
    histogram[0] = 40;
    histogram[29] = 55;
    histogram[30] = 5;
    EXPECT_TRUE(isBlack(histogram, 100, 0.95F));
    histogram[29] = 54;
    histogram[30] = 6;
    EXPECT_FALSE(isBlack(histogram, 100, 0.95F));
}

TEST(ScreenType, BlackAddsUpRoundedShares) {
    // Thirty times the float nearest to 1/30 adds up to a little more than 1.
    Histogram histogram{};
    std::fill_n(histogram.begin(), 30, 1U);
    EXPECT_TRUE(isBlack(histogram, 30, 1.0F));
    EXPECT_TRUE(isBlack(histogram, 30, 1.0000001F));
}

TEST(ScreenType, GreenAsksForZeroLumaAndZeroChroma) {
    EXPECT_TRUE(isLumaZero(95, 100, 0.95F));
    EXPECT_FALSE(isLumaZero(94, 100, 0.95F));
    EXPECT_TRUE(isChromaZero(48, 100, 0.95F));
    EXPECT_FALSE(isChromaZero(47, 100, 0.95F));
}

TEST(ScreenType, LeavesDarkSharesBesideTheRatioToTheirRoundings) {
    EXPECT_EQ(isClearlyBlack(96, 100, 0.95F), true);
    EXPECT_EQ(isClearlyBlack(94, 100, 0.95F), false);
    EXPECT_EQ(isClearlyBlack(95, 100, 0.95F), std::nullopt);
    EXPECT_EQ(isClearlyBlack(0, 0, 0.95F), std::nullopt);
}

TEST(ScreenType, NothingIsFoundInAnEmptyFrame) {
    const Histogram empty{};
    EXPECT_FALSE(isLumaZero(0, 0, 0.0F));
    EXPECT_FALSE(isChromaZero(0, 0, 0.0F));
    EXPECT_FALSE(isBlack(empty, 0, 0.0F));
}

}  // namespace
