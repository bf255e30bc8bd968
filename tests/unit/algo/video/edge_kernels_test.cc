#include "algo/video/edge_kernels.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

/// A plane of magnitudes with the spare bytes that its kernels ask for.
class Magnitudes {
  public:
    explicit Magnitudes(const Bytes& pixels, size_t width)
        : width_(width),
          stride_(ZELAlgo::magnitudeStride(width)),
          height_(pixels.size() / width),
          bytes_(stride_ * height_ + 2 * ZELAlgo::kSpareBytes) {
        for (size_t y = 0; y < height_; ++y) {
            std::copy_n(pixels.begin() + static_cast<ptrdiff_t>(y * width), width, data() + y * stride_);
        }
    }
    uint8_t* data() { return bytes_.data() + ZELAlgo::kSpareBytes; }
    size_t height() const { return height_; }
    Bytes row(size_t y) { return {data() + y * stride_, data() + y * stride_ + width_}; }

  private:
    size_t width_;
    size_t stride_;
    size_t height_;
    Bytes bytes_;
};

struct Gradient {
    Bytes direction;
    Magnitudes magnitude;
};

Gradient gradient(const Bytes& smooth, size_t width) {
    Gradient result{Bytes(smooth.size()), Magnitudes(smooth, width)};
    ZELAlgo::gradientScalar(smooth.data(), width, smooth.size() / width, result.direction.data(),
                            result.magnitude.data());
    return result;
}

TEST(Gradient, HasALengthAndADirection) {
    Gradient steps = gradient({0, 0, 10, 10,  //
                               0, 0, 10, 10,  //
                               0, 0, 10, 10},
                              4);
    EXPECT_THAT(steps.magnitude.row(1), ElementsAre(0, 40, 40, 0));
    EXPECT_EQ(steps.direction[5], ZELAlgo::kHorizontal);
    EXPECT_EQ(steps.direction[4], ZELAlgo::kNowhere);

    Gradient corner = gradient({0, 0, 0,  //
                                0, 0, 0,  //
                                0, 0, 9},
                               3);
    EXPECT_EQ(corner.direction[4], ZELAlgo::kDiagonal);
    EXPECT_EQ(corner.magnitude.row(1)[1], 13) << "9 x sqrt(2) = 12.73";
    EXPECT_EQ(corner.magnitude.row(2)[2], 38) << "27 x sqrt(2) = 38.18, with the border repeated";
}

TEST(Gradient, IsCutAt255) {
    EXPECT_THAT(gradient({0, 255, 255}, 3).magnitude.row(0), ElementsAre(255, 255, 0));
    EXPECT_THAT(gradient({0, 0, 63, 63}, 4).magnitude.row(0), ElementsAre(0, 252, 252, 0));
}

/// Thins one inner row. `directions`: '|' vertical, '-' horizontal, '/' diagonal, '.' none.
Bytes thinnedRow(const Bytes& above, const Bytes& middle, const Bytes& below, const std::string& directions) {
    const size_t width = middle.size();
    Bytes all = above;
    all.insert(all.end(), middle.begin(), middle.end());
    all.insert(all.end(), below.begin(), below.end());
    Magnitudes magnitude(all, width);
    Bytes direction(all.size(), ZELAlgo::kNowhere);
    std::transform(directions.begin(), directions.end(), direction.begin() + static_cast<ptrdiff_t>(width),
                   [](char c) {
                       return c == '|'   ? ZELAlgo::kVertical
                              : c == '-' ? ZELAlgo::kHorizontal
                              : c == '/' ? ZELAlgo::kDiagonal
                                         : ZELAlgo::kNowhere;
                   });
    ZELAlgo::thinScalar(direction.data(), width, 3, magnitude.data());
    return magnitude.row(1);
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
    Magnitudes magnitude({0, 0, 8, 0,  //
                          0, 1, 8, 0,  //
                          0, 7, 0, 0,  //
                          0, 0, 0, 0},
                         4);
    Bytes direction(16, ZELAlgo::kNowhere);
    direction[6] = ZELAlgo::kVertical;
    direction[9] = ZELAlgo::kDiagonal;
    ZELAlgo::thinScalar(direction.data(), 4, 4, magnitude.data());
    EXPECT_EQ(magnitude.row(2)[1], 0) << "7 is less than the 8 above the last pixel of the row before";
}

/// The edge map as rows of '#' and '.'.
std::vector<std::string> edges(const Bytes& pixels, const Bytes& smooth, size_t width, uint8_t maximum) {
    Magnitudes magnitude(pixels, width);
    const size_t height = magnitude.height();
    const size_t words = ZELAlgo::edgeMapWords(width);
    std::vector<uint64_t> map(words * height, ~uint64_t{0});
    ZELAlgo::thresholdScalar(magnitude.data(), smooth.data(), width, height, ZELAlgo::edgeLevels(maximum),
                             map.data());
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

TEST(Threshold, KeepsTheSmoothedFrameInTheFirstRow) {
    Bytes smooth(5 * 4, 7);
    smooth[2] = 0;
    EXPECT_THAT(edges(Bytes(20, 0), smooth, 5, 0), ElementsAre("##.##",  //
                                                               ".....",  //
                                                               ".....",  //
                                                               "....."));
}

TEST(Threshold, HasLevelsInSinglePrecision) {
    for (int maximum = 0; maximum < 256; ++maximum) {
        const ZELAlgo::EdgeLevels levels = ZELAlgo::edgeLevels(static_cast<uint8_t>(maximum));
        const float low = static_cast<float>(maximum) * 0.2F;
        const float high = static_cast<float>(maximum) * 0.3F;
        for (int v = 0; v < 256; ++v) {
            const auto magnitude = static_cast<float>(v);
            ASSERT_EQ(v >= levels.weak, !(magnitude < low)) << v << " of " << maximum;
            ASSERT_EQ(v >= levels.strong, magnitude >= high) << v << " of " << maximum;
            ASSERT_EQ(v >= levels.overwhelming, magnitude > high) << v << " of " << maximum;
        }
    }
}

TEST(Threshold, FindsNoEdgeInAFlatFrame) {
    EXPECT_THAT(edges(Bytes(25, 0), Bytes(25, 0), 5, 0), testing::Each("....."));
}

}  // namespace
