#include "algo/audio/analysis_window.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace {

using ZELAlgo::analysisWindow;
using ZELAlgo::kWindowSpan;

TEST(AnalysisWindow, HasTheKnownValuesToSixDecimals) {
    const auto sixDecimals = [](size_t n) { return std::llround(double{analysisWindow()[n]} * 1e6); };
    EXPECT_EQ(sixDecimals(1), 156);
    EXPECT_EQ(sixDecimals(2), 624);
    EXPECT_EQ(sixDecimals(3), 1403);
    EXPECT_EQ(sixDecimals(158), 1'000'000);
    EXPECT_EQ(sixDecimals(200), 973'330);
    EXPECT_EQ(sixDecimals(240), 707'119);
    EXPECT_EQ(sixDecimals(300), 61'083);
}

TEST(AnalysisWindow, IsExactlyZeroAtBothEnds) {
    EXPECT_EQ(analysisWindow()[0], 0.0F);
    for (size_t n = kWindowSpan; n < analysisWindow().size(); ++n) {
        ASSERT_EQ(analysisWindow()[n], 0.0F) << n;
    }
}

TEST(AnalysisWindow, RisesStrictlyToEntry158AndFallsStrictlyAfterIt) {
    for (size_t n = 0; n < kWindowSpan; ++n) {
        if (n < 158) {
            ASSERT_LT(analysisWindow()[n], analysisWindow()[n + 1]) << n;
        } else {
            ASSERT_GT(analysisWindow()[n], analysisWindow()[n + 1]) << n;
        }
    }
}

TEST(AnalysisWindow, StaysCloseToThePowerComplementarySine) {
    for (size_t n = 0; n <= kWindowSpan; ++n) {
        const double s = std::sin(std::numbers::pi * static_cast<double>(n) / kWindowSpan);
        ASSERT_NEAR(double{analysisWindow()[n]}, std::sin(std::numbers::pi / 2 * s * s), 0.003) << n;
    }
}

}  // namespace
