#include "algo/video/edge_kernels.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "algo/video/block_frame.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using ZELAlgo::Direction;
using Bytes = std::vector<uint8_t>;

const ZELAlgo::GaussianKernel kKernel = ZELAlgo::gaussianKernel();

Bytes smoothed(const Bytes& source, size_t width) {
    Bytes smooth(source.size());
    ZELAlgo::smoothScalar(kKernel, source.data(), width, width, source.size() / width, smooth.data());
    return smooth;
}

Bytes row(const Bytes& picture, size_t width, size_t y) {
    const auto first = picture.begin() + static_cast<ptrdiff_t>(y * width);
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

struct Gradient {
    std::vector<Direction> direction;
    Bytes magnitude;
};

Gradient gradient(const Bytes& smooth, size_t width) {
    Gradient result{std::vector<Direction>(smooth.size()), Bytes(smooth.size())};
    ZELAlgo::gradientScalar(smooth.data(), width, smooth.size() / width, result.direction.data(),
                            result.magnitude.data());
    return result;
}

TEST(Gradient, HasALengthAndADirection) {
    const Gradient steps = gradient({0, 0, 10, 10,  //
                                     0, 0, 10, 10,  //
                                     0, 0, 10, 10},
                                    4);
    EXPECT_THAT(row(steps.magnitude, 4, 1), ElementsAre(0, 40, 40, 0));
    EXPECT_EQ(steps.direction[5], Direction::kHorizontal);
    EXPECT_EQ(steps.direction[4], Direction::kNone);

    const Gradient corner = gradient({0, 0, 0,  //
                                      0, 0, 0,  //
                                      0, 0, 9},
                                     3);
    EXPECT_EQ(corner.direction[4], Direction::kDiagonal);
    EXPECT_EQ(corner.magnitude[4], 13) << "9 x sqrt(2) = 12.73";
    EXPECT_EQ(corner.magnitude[8], 38) << "27 x sqrt(2) = 38.18, with the border repeated";
}

TEST(Gradient, IsCutAt255) {
    EXPECT_THAT(gradient(Bytes{0, 255, 255}, 3).magnitude, ElementsAre(255, 255, 0));
    EXPECT_THAT(gradient(Bytes{0, 0, 63, 63}, 4).magnitude, ElementsAre(0, 252, 252, 0));
}

/// Thins one inner row. `directions`: '|' vertical, '-' horizontal, '/' diagonal, '.' none.
Bytes thinnedRow(const Bytes& above, const Bytes& middle, const Bytes& below, const std::string& directions) {
    const size_t width = middle.size();
    Bytes magnitude = above;
    magnitude.insert(magnitude.end(), middle.begin(), middle.end());
    magnitude.insert(magnitude.end(), below.begin(), below.end());
    std::vector<Direction> direction(magnitude.size(), Direction::kNone);
    std::transform(directions.begin(), directions.end(), direction.begin() + static_cast<ptrdiff_t>(width),
                   [](char c) {
                       return c == '|'   ? Direction::kVertical
                              : c == '-' ? Direction::kHorizontal
                              : c == '/' ? Direction::kDiagonal
                                         : Direction::kNone;
                   });
    ZELAlgo::thinScalar(direction.data(), width, 3, magnitude.data());
    return row(magnitude, width, 1);
}

TEST(Thinning, KeepsWhatIsNotSmallerThanItsNeighboursAlongTheGradient) {
    EXPECT_THAT(thinnedRow({9, 9, 4, 5, 9}, {9, 5, 5, 5, 9}, {9, 4, 9, 5, 9}, "|||||"),
                ElementsAre(9, 0, 0, 5, 9));
    EXPECT_THAT(thinnedRow({9, 9, 9, 9, 9}, {4, 5, 6, 6, 7}, {9, 9, 9, 9, 9}, "-----"),
                ElementsAre(4, 0, 6, 0, 7));
}

TEST(Thinning, SeesAnErasedNeighbourAsZero) {
    // Down a slope every second pixel survives, because the one before it has just been erased.
    EXPECT_THAT(thinnedRow(Bytes(8), {9, 8, 7, 6, 5, 4, 3, 2}, Bytes(8), "--------"),
                ElementsAre(9, 0, 7, 0, 5, 0, 3, 2));
}

TEST(Thinning, ComparesDiagonalsWithTheNeighboursLeftOver) {
    // At first with nothing, then with those of the last pixel that was not diagonal: here 3 and 6.
    EXPECT_THAT(thinnedRow({9, 9, 3, 9, 9, 9}, {9, 1, 6, 5, 6, 9}, {9, 9, 6, 9, 9, 9}, "//|///"),
                ElementsAre(9, 1, 6, 0, 6, 9));
    // A pixel of no magnitude is passed over and leaves them alone.
    EXPECT_THAT(thinnedRow({9, 5, 9, 9, 9}, {9, 5, 0, 4, 9}, {9, 1, 9, 9, 9}, "||.//"),
                ElementsAre(9, 5, 0, 0, 9));
    // Left of the horizontal pixel lies what has been erased by then.
    EXPECT_THAT(thinnedRow(Bytes(6), {9, 8, 7, 1, 1, 9}, Bytes(6), "---//-"), ElementsAre(9, 0, 7, 1, 1, 9));
}

TEST(Thinning, CarriesTheNeighboursLeftOverIntoTheNextRow) {
    Bytes magnitude{0, 0, 8, 0,  //
                    0, 1, 8, 0,  //
                    0, 7, 0, 0,  //
                    0, 0, 0, 0};
    std::vector<Direction> direction(magnitude.size(), Direction::kNone);
    direction[6] = Direction::kVertical;
    direction[9] = Direction::kDiagonal;
    ZELAlgo::thinScalar(direction.data(), 4, 4, magnitude.data());
    EXPECT_EQ(magnitude[9], 0) << "7 is less than the 8 above the last pixel of the row before";
}

/// The edge map as rows of '#' and '.'.
std::vector<std::string> edges(const Bytes& magnitude, const Bytes& smooth, size_t width, uint8_t maximum) {
    const size_t height = magnitude.size() / width;
    const size_t words = ZELAlgo::edgeMapWords(width);
    std::vector<uint64_t> map(words * height, ~uint64_t{0});
    ZELAlgo::thresholdScalar(magnitude.data(), smooth.data(), width, height, maximum, map.data());
    std::vector<std::string> rows(height);
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < 64 * words; ++x) {
            const bool set = (map[y * words + x / 64] >> x % 64 & 1U) != 0;
            if (x < width) {
                rows[y] += set ? '#' : '.';
            } else {
                EXPECT_FALSE(set) << "beyond the row";
            }
        }
    }
    return rows;
}

TEST(Threshold, DropsWeakPixelsAndThoseAmongStrongOnes) {
    // Of a largest magnitude of 100, 20 is the least that counts and 30 is strong; single precision puts both
    // limits a little above.
    const Bytes magnitude{30, 31, 31, 31, 31, 31, 0,  //
                          31, 31, 31, 31, 25, 19, 0,  //
                          31, 31, 25, 31, 31, 21, 0,  //
                          31, 31, 31, 31, 31, 30, 0,  //
                          31, 31, 31, 31, 31, 31, 0};
    EXPECT_THAT(edges(magnitude, Bytes(35, 0), 7, 100), ElementsAre(".......",  //
                                                                    ".####..",  //
                                                                    ".#.###.",  //
                                                                    ".#####.",  //
                                                                    "......."));
}

TEST(Threshold, KeepsTheSmoothedPictureOnTheBorder) {
    Bytes smooth(5 * 4, 0);
    smooth[2] = 1;
    smooth[5] = 200;
    smooth[19] = 7;
    EXPECT_THAT(edges(Bytes(20, 0), smooth, 5, 0), ElementsAre("..#..",  //
                                                               "#....",  //
                                                               ".....",  //
                                                               "....#"));
}

TEST(Threshold, FindsNoEdgeInAFlatPicture) {
    EXPECT_THAT(edges(Bytes(25, 0), Bytes(25, 0), 5, 0), testing::Each("....."));
}

}  // namespace
