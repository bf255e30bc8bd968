#ifndef ZEL_SRC_ALGO_VIDEO_EDGE_KERNELS_H_
#define ZEL_SRC_ALGO_VIDEO_EDGE_KERNELS_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

/// Weights of a pixel and its two neighbours on either side.
using GaussianKernel = std::array<double, 5>;

/// A bell of one pixel's deviation, its weights adding up to one.
GaussianKernel gaussianKernel();

/// Where a gradient points, as the thinning of edges tells apart.
enum class Direction : uint8_t { kNone, kHorizontal, kVertical, kDiagonal };

/// Smooths the width x height picture at `source`, whose rows lie `stride` bytes apart, into `smooth`, whose
/// rows touch: once along every row, with the ends reflected, then once more along the rows in place (see the
/// definition for its order).
void smoothScalar(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width,
                  size_t height, uint8_t* smooth);

/// Sobel gradient of `smooth`, with repeated borders: its direction and its rounded length, at most 255.
void gradientScalar(const uint8_t* smooth, size_t width, size_t height, Direction* direction,
                    uint8_t* magnitude);

/// Zeroes, in place, every inner magnitude that is smaller than one of its neighbours along the gradient.
void thinScalar(const Direction* direction, size_t width, size_t height, uint8_t* magnitude);

/// Largest of `count` bytes; 0 if there are none.
uint8_t maximumScalar(const uint8_t* data, size_t count);

/// 64-bit words that one row of an edge map takes: a bit per pixel from the lowest bit up, then at least 64
/// bits that are never set.
constexpr size_t edgeMapWords(size_t width) {
    return width / 64 + 2;
}

/// Double threshold, `maximum` being the largest magnitude, into an edge map. The bits of the border tell
/// where `smooth` is not zero.
void thresholdScalar(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
                     uint8_t maximum, uint64_t* edge_map);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_EDGE_KERNELS_H_
