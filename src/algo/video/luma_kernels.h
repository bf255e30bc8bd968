#ifndef ZEL_SRC_ALGO_VIDEO_LUMA_KERNELS_H_
#define ZEL_SRC_ALGO_VIDEO_LUMA_KERNELS_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

using Histogram = std::array<uint32_t, 256>;

/// Counts the values of the `count` bytes at even positions: data[0], data[2], ...
Histogram histogramOfEvenBytesScalar(const uint8_t* data, size_t count);

/// How many of the `count` bytes data[0], data[4], data[8], ... are zero.
uint32_t zerosOfEveryFourthByteScalar(const uint8_t* data, size_t count);

/// Sum of |a[i] - b[i]|, modulo 2^32.
uint32_t sumAbsDiffScalar(const uint8_t* a, const uint8_t* b, size_t count);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_LUMA_KERNELS_H_
