#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/tests/hwy_gtest.h>

#include "algo/video/edge_kernels.h"
#include "algo/video/luma_kernels.h"
#include "algo/video/smoothing_kernels.h"
#include "support/clip.h"
#include "support/patterns.h"
#include "support/random.h"

// Each fast kernel against its plain twin, byte for byte, with every instruction set of this machine. Sources
// are allocated to the byte, so that the address sanitizer sees every read outside; what lies around an
// output is compared as well.

namespace {

using support::Pattern;
using support::patternPlane;
using Bytes = std::vector<uint8_t>;

class VideoKernels : public hwy::TestWithParamTarget {
    // Without the base's check that a version was chosen: some kernels have a single one on AArch64.
    void TearDown() override { hwy::SetSupportedTargetsForTest(0); }
};
HWY_TARGET_INSTANTIATE_TEST_SUITE_P(VideoKernels);

constexpr size_t kGuard = 96;

/// Bytes that start `offset` past an aligned address and end where their memory ends.
class Exact {
  public:
    Exact(const Bytes& bytes, size_t offset) : offset_(offset), memory_(new uint8_t[offset + bytes.size()]) {
        std::copy(bytes.begin(), bytes.end(), memory_.get() + offset);
    }
    const uint8_t* data() const { return memory_.get() + offset_; }

  private:
    size_t offset_;
    std::unique_ptr<uint8_t[]> memory_;
};

/// The block detector's buffers after its three kernels.
struct Edges {
    Edges(size_t width, size_t height)
        : smooth(kGuard + width * height + ZELAlgo::kSpareBytes + kGuard, 0xA5),
          magnitude(2 * kGuard + ZELAlgo::magnitudeStride(width) * height),
          scratch(std::max(ZELAlgo::smoothingScratch(width, height), ZELAlgo::edgeScratch(width, height))),
          map(ZELAlgo::edgeMapWords(width) * height + 2, 0xA5A5) {}

    uint8_t* smoothed() { return smooth.data() + kGuard; }
    uint8_t* magnitudes() { return magnitude.data() + kGuard; }

    Bytes smooth;
    Bytes magnitude;
    Bytes scratch;
    std::vector<uint64_t> map;
    uint8_t maximum = 0;
};

Edges fastEdges(const uint8_t* source, size_t stride, size_t width, size_t height) {
    Edges edges(width, height);
    ZELAlgo::smooth(ZELAlgo::gaussianKernel(), source, stride, width, height, edges.scratch.data(),
                    edges.smoothed());
    edges.maximum =
        ZELAlgo::thinnedMagnitude(edges.smoothed(), width, height, edges.scratch.data(), edges.magnitudes());
    ZELAlgo::threshold(edges.magnitudes(), edges.smoothed(), width, height,
                       ZELAlgo::edgeLevels(edges.maximum), edges.scratch.data(), edges.map.data() + 1);
    return edges;
}

Edges plainEdges(const uint8_t* source, size_t stride, size_t width, size_t height) {
    Edges edges(width, height);
    ZELAlgo::smoothScalar(ZELAlgo::gaussianKernel(), source, stride, width, height, edges.smoothed());
    edges.maximum = ZELAlgo::thinnedMagnitudeScalar(edges.smoothed(), width, height, edges.scratch.data(),
                                                    edges.magnitudes());
    ZELAlgo::thresholdScalar(edges.magnitudes(), edges.smoothed(), width, height,
                             ZELAlgo::edgeLevels(edges.maximum), edges.map.data() + 1);
    return edges;
}

void compareEdges(const Exact& source, size_t stride, size_t width, size_t height) {
    Edges want = plainEdges(source.data(), stride, width, height);
    Edges have = fastEdges(source.data(), stride, width, height);
    ASSERT_EQ(want.smooth, have.smooth) << "smoothing";
    ASSERT_EQ(want.maximum, have.maximum);
    for (size_t y = 0; y < height; ++y) {
        const size_t at = y * ZELAlgo::magnitudeStride(width);
        ASSERT_EQ(0, std::memcmp(want.magnitudes() + at, have.magnitudes() + at, width))
            << "thinning, row " << y;
    }
    ASSERT_EQ(want.map, have.map) << "threshold";
}

void compareEdges(Pattern pattern, size_t width, size_t height, size_t offset) {
    SCOPED_TRACE(testing::Message() << "pattern " << static_cast<int>(pattern) << ", " << width << "x"
                                    << height << ", offset " << offset);
    const size_t stride = width + offset % 3;
    Bytes pixels = patternPlane(pattern, stride, height, width * 100 + height);
    pixels.erase(pixels.end() - static_cast<std::ptrdiff_t>(stride - width),
                 pixels.end());  // no gap at the end
    compareEdges(Exact(pixels, offset), stride, width, height);
}

/// Sweeps take every size in an ordinary build; instrumented ones are many times slower and skip through
/// them.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr size_t kSkip = 9;
#else
constexpr size_t kSkip = 1;
#endif

TEST_P(VideoKernels, FindEdgesLikeTheirTwinsInSmallFrames) {
    // An instrumented build skips so that all remainders meet.
    for (size_t width = 1; width <= 70; ++width) {
        for (size_t height = 1 + width % kSkip; height <= 70;
             height += kSkip == 1 ? 1 : (1 + (width * 7 + height) % 3) * kSkip) {
            for (const Pattern pattern : support::kPatterns) {
                ASSERT_NO_FATAL_FAILURE(compareEdges(pattern, width, height, (width + height) % 64));
            }
        }
    }
}

TEST_P(VideoKernels, FindEdgesLikeTheirTwinsAtEveryAlignment) {
    for (size_t offset = 0; offset < 64; offset += kSkip) {
        ASSERT_NO_FATAL_FAILURE(compareEdges(Pattern::kClouds, 131, 41, offset));
        ASSERT_NO_FATAL_FAILURE(compareEdges(Pattern::kFewLevels, 127, 67, offset));
    }
}

TEST_P(VideoKernels, FindEdgesLikeTheirTwinsInLargeFrames) {
    constexpr std::pair<size_t, size_t> kSizes[] = {
        {320, 180}, {640, 360}, {641, 363}, {960, 540}, {1920, 1080}};
    for (const auto& [width, height] : kSizes) {
        for (const Pattern pattern : support::kPatterns) {
            if (kSkip == 1 || width == 320) {
                ASSERT_NO_FATAL_FAILURE(compareEdges(pattern, width, height, 3));
            }
        }
    }
}

TEST_P(VideoKernels, FindEdgesLikeTheirTwinsInDecodedFrames) {
    constexpr size_t kWidth = 640;
    constexpr size_t kHeight = 360;
    constexpr size_t kFrames = 3;
    const support::ScratchDir scratch;
    const std::string clip = scratch.file("clip.mkv");
    support::ffmpeg("-f lavfi -i mandelbrot=s=640x360,noise=alls=12:allf=t -frames:v 3 -c:v libx264 -crf 34",
                    clip);
    support::ffmpeg("-i '" + clip + "' -f rawvideo -pix_fmt yuv420p", scratch.file("frames"));
    const std::vector<char> frames = support::readFile(scratch.file("frames"));
    ASSERT_EQ(kFrames * kWidth * kHeight * 3 / 2, frames.size());
    for (size_t frame = 0; frame < kFrames; ++frame) {
        const auto luma = frames.begin() + static_cast<std::ptrdiff_t>(frame * kWidth * kHeight * 3 / 2);
        const Exact source(Bytes(luma, luma + kWidth * kHeight), frame);
        ASSERT_NO_FATAL_FAILURE(compareEdges(source, kWidth, kWidth, kHeight));
    }
}

TEST_P(VideoKernels, RoundLengthsLikeTheirTwin) {
    // The first row is not thinned, so it shows every length. Contrasts from one level up to half the range.
    constexpr size_t kWidth = 4096;
    support::Random random(9);
    for (uint32_t contrast = 1; contrast < 128; contrast += kSkip) {
        Edges want(kWidth, 3);
        Edges have(kWidth, 3);
        std::generate_n(want.smoothed(), 3 * kWidth,
                        [&] { return static_cast<uint8_t>(random.below(contrast + 1)); });
        ZELAlgo::thinnedMagnitudeScalar(want.smoothed(), kWidth, 3, want.scratch.data(), want.magnitudes());
        ZELAlgo::thinnedMagnitude(want.smoothed(), kWidth, 3, have.scratch.data(), have.magnitudes());
        ASSERT_EQ(0, std::memcmp(want.magnitudes(), have.magnitudes(), kWidth)) << contrast;
    }
}

TEST_P(VideoKernels, CountSamplesLikeTheirTwins) {
    for (size_t count = 0; count < 300; ++count) {
        for (const Pattern pattern : {Pattern::kNoise, Pattern::kFlat, Pattern::kCheckerboard}) {
            const Exact even(patternPlane(pattern, 2 * count, 1, count), count % 64);
            ASSERT_EQ(ZELAlgo::histogramOfEvenBytesScalar(even.data(), count),
                      ZELAlgo::histogramOfEvenBytes(even.data(), count))
                << count;
            ASSERT_EQ(ZELAlgo::summaryOfEvenBytesScalar(even.data(), count),
                      ZELAlgo::summaryOfEvenBytes(even.data(), count))
                << count;
            Bytes pixels = patternPlane(pattern, count > 0 ? 4 * count - 3 : 0, 1, count);
            for (uint8_t& pixel : pixels) {
                pixel &= 0x81;  // a quarter of them zero
            }
            const Exact fourth(pixels, count % 64);
            ASSERT_EQ(ZELAlgo::zerosOfEveryFourthByteScalar(fourth.data(), count),
                      ZELAlgo::zerosOfEveryFourthByte(fourth.data(), count))
                << count;
        }
    }
}

TEST_P(VideoKernels, SummarizeTheDarkestAndBrightestFramesLikeTheirTwin) {
    for (const int level : {0, 1, 29, 30, 60, 61, 127, 128, 199, 200, 255}) {
        const Bytes pixels(2 * 40'000, static_cast<uint8_t>(level));  // longer than the sums of 32 bits last
        ASSERT_EQ(ZELAlgo::summaryOfEvenBytesScalar(pixels.data(), 40'000),
                  ZELAlgo::summaryOfEvenBytes(pixels.data(), 40'000))
            << level;
    }
}

TEST_P(VideoKernels, ReplaceAndCompareLikeTheirTwin) {
    support::Random random(4);
    for (size_t round = 0; round < 2000; ++round) {
        const size_t width = 1 + random.below(round % 8 == 0 ? 700 : 90);
        const size_t stride = width + random.below(3) * random.below(40);
        const size_t rows = 1 + random.below(5);
        std::array<size_t, 8> cuts{0, width};
        for (size_t i = 2; i < cuts.size(); ++i) {
            cuts[i] = random.below(static_cast<uint32_t>(width) + 1);
        }
        std::sort(cuts.begin(), cuts.end());
        Bytes pixels = patternPlane(Pattern::kNoise, stride, rows, round);
        pixels.resize(stride * (rows - 1) + width);
        const Exact current(pixels, round % 64);
        Bytes want(kGuard + width * rows + kGuard, 0xA5);
        const Bytes before =
            patternPlane(round % 5 == 0 ? Pattern::kFlat : Pattern::kNoise, width, rows, round + 1);
        std::copy(before.begin(), before.end(), want.begin() + kGuard);
        Bytes have = want;
        std::array<uint32_t, 7> want_sums{5, 0xFFFFFFFF};
        std::array<uint32_t, 7> have_sums = want_sums;
        ZELAlgo::replaceAndCompareScalar(current.data(), stride, rows, cuts, want.data() + kGuard,
                                         want_sums.data());
        ZELAlgo::replaceAndCompare(current.data(), stride, rows, cuts, have.data() + kGuard,
                                   have_sums.data());
        ASSERT_EQ(want_sums, have_sums) << "round " << round;
        ASSERT_EQ(want, have) << "round " << round;
    }
}

}  // namespace
