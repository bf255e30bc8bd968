#ifndef ZEL_SRC_ALGO_VIDEO_SMOOTHING_KERNELS_H_
#define ZEL_SRC_ALGO_VIDEO_SMOOTHING_KERNELS_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

/// Weights of a pixel and its two neighbours on either side.
using GaussianKernel = std::array<double, 5>;

/// A bell of one pixel's deviation, its weights adding up to one.
GaussianKernel gaussianKernel();

/// Bytes of scratch that smooth needs for a width x height frame.
size_t smoothingScratch(size_t width, size_t height);

/// Smooths the width x height frame at `source`, whose rows lie `stride` bytes apart, into `smooth`, whose
/// rows touch: once along every row, with the ends reflected, then once more along the rows in place (see the
/// plain definition for its order). Reads `width` bytes of each row and no others.
void smooth(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width, size_t height,
            uint8_t* scratch, uint8_t* smooth);
void smoothScalar(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width,
                  size_t height, uint8_t* smooth);

/// Weighted sum of five neighbours, every partial sum rounded to double from left to right, truncated.
uint8_t weightedSum(const GaussianKernel& kernel, const std::array<uint8_t, 5>& pixels);
/// The pixel at `x` of a row of `width` after the first pass.
uint8_t smoothedOnce(const GaussianKernel& kernel, const uint8_t* row, size_t width, size_t x);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_SMOOTHING_KERNELS_H_
