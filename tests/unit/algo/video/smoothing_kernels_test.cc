#include "algo/video/smoothing_kernels.h"

#include <algorithm>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

const ZELAlgo::GaussianKernel kKernel = ZELAlgo::gaussianKernel();

Bytes smoothed(const Bytes& source, size_t width) {
    Bytes smooth(source.size());
    ZELAlgo::smoothScalar(kKernel, source.data(), width, width, source.size() / width, smooth.data());
    return smooth;
}

Bytes row(const Bytes& frame, size_t width, size_t y) {
    const auto first = frame.begin() + static_cast<ptrdiff_t>(y * width);
    return {first, first + static_cast<ptrdiff_t>(width)};
}

TEST(Smoothing, KernelIsAGaussianOfOneStep) {
    EXPECT_NEAR(kKernel[0], 0.054489, 5e-7);
    EXPECT_NEAR(kKernel[1], 0.244201, 5e-7);
    EXPECT_NEAR(kKernel[2], 0.402620, 5e-7);
    EXPECT_EQ(kKernel[3], kKernel[1]);
    EXPECT_EQ(kKernel[4], kKernel[0]);
}

TEST(Smoothing, SpreadsAPixelOverItsRowAndReflectsTheEnds) {
    EXPECT_THAT(smoothed({0, 0, 0, 0, 200, 0, 0, 0, 0}, 9), ElementsAre(0, 0, 10, 48, 80, 48, 10, 0, 0));
    EXPECT_THAT(smoothed({0, 200, 0, 0, 0, 0}, 6), ElementsAre(97, 91, 48, 10, 0, 0));
    EXPECT_THAT(smoothed({0, 0, 0, 200, 0, 0}, 6), ElementsAre(0, 10, 48, 80, 48, 21));
}

TEST(Smoothing, RoundingTurns118FlatLevelsIntoTheLevelBelow) {
    int lower = 0;
    for (int level = 0; level < 256; ++level) {
        const Bytes smooth = smoothed(Bytes(8, static_cast<uint8_t>(level)), 8);
        EXPECT_THAT(smooth, testing::Each(testing::AnyOf(level, level - 1)));
        lower += smooth[3] < level ? 1 : 0;
    }
    EXPECT_EQ(lower, 118);
}

TEST(Smoothing, SecondPassRunsAlongTheRowsInPlace) {
    constexpr size_t kWidth = 9;
    Bytes source(5 * kWidth, 0);
    source[2 * kWidth + 4] = 200;
    const Bytes smooth = smoothed(source, kWidth);
    // Each pixel sees what the two before it have become.
    EXPECT_THAT(row(smooth, kWidth, 2), ElementsAre(0, 5, 21, 46, 56, 37, 16, 5, 2));
    EXPECT_THAT(row(smooth, kWidth, 1), testing::Each(0));
}

TEST(Smoothing, SecondPassTakesTheNeighbouringRowsForTheEndsOfARow) {
    constexpr size_t kWidth = 8;
    constexpr size_t kHeight = 7;
    Bytes source(kWidth * kHeight, 0);
    std::fill_n(source.begin() + 3 * kWidth, kWidth, uint8_t{200});
    const Bytes smooth = smoothed(source, kWidth);
    // 200 x (0.0545 + 0.2442) flow over from row 3 into the start of row 4; the end of row 2 sees the two
    // first pixels of row 3 after they have changed.
    EXPECT_EQ(row(smooth, kWidth, 4)[0], 59);
    EXPECT_EQ(row(smooth, kWidth, 2)[7], 45);
    // The two rows at either end have one pass only.
    EXPECT_THAT(row(smooth, kWidth, 1), testing::Each(0));
    EXPECT_THAT(row(smooth, kWidth, 5), testing::Each(0));
}

}  // namespace
