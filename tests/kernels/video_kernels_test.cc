#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/tests/hwy_gtest.h>

#include "algo/video/edge_kernels.h"
#include "algo/video/luma_kernels.h"
#include "algo/video/smoothing_kernels.h"
#include "support/pictures.h"
#include "support/random.h"

// Each fast kernel against its plain twin, byte for byte, with every instruction set of this machine. Sources
// are allocated to the byte, so that the address sanitizer sees every read outside; what lies around an
// output is compared as well.

namespace {

using support::Pattern;
using support::picture;
using Bytes = std::vector<uint8_t>;

class VideoKernels : public hwy::TestWithParamTarget {};
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

void compareEdges(Pattern pattern, size_t width, size_t height, size_t offset) {
    SCOPED_TRACE(testing::Message() << "pattern " << static_cast<int>(pattern) << ", " << width << "x"
                                    << height << ", offset " << offset);
    const size_t stride = width + offset % 3;
    Bytes pixels = picture(pattern, stride, height, width * 100 + height);
    pixels.resize(pixels.size() - (stride - width));  // nothing behind the last row
    const Exact source(pixels, offset);
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

TEST_P(VideoKernels, FindEdgesLikeTheirTwinsInSmallPictures) {
    for (size_t width = 1; width <= 70; ++width) {
        for (size_t height = 1; height <= 70; height += 1 + (width * 7 + height) % 5) {
            for (const Pattern pattern : support::kPatterns) {
                ASSERT_NO_FATAL_FAILURE(compareEdges(pattern, width, height, (width + height) % 64));
            }
        }
    }
}

}  // namespace
