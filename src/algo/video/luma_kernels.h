#ifndef ZEL_SRC_ALGO_VIDEO_LUMA_KERNELS_H_
#define ZEL_SRC_ALGO_VIDEO_LUMA_KERNELS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ZELAlgo {

// The loops of the video road, each twice: the plain one, ending in Scalar, says what is computed; the other
// gives the same bits with the widest instructions of the processor, or is the plain one if those are
// switched off. The same holds for smoothing_kernels.h and edge_kernels.h.

using Histogram = std::array<uint32_t, 256>;

/// Counts the values of the `count` bytes at even positions: data[0], data[2], ... The bytes in between, and
/// the one after the last, may be read.
Histogram histogramOfEvenBytes(const uint8_t* data, size_t count);
Histogram histogramOfEvenBytesScalar(const uint8_t* data, size_t count);

/// What can be said about samples without counting each value.
struct LumaSummary {
    uint32_t zero = 0;      ///< samples of 0
    uint32_t below_30 = 0;  ///< samples below 30, and so on
    uint32_t below_61 = 0;
    uint32_t below_200 = 0;
    // Sums over all samples of their distance to 128, its square and its cube.
    int64_t first = 0;
    int64_t second = 0;
    int64_t third = 0;

    LumaSummary& operator+=(const LumaSummary& other);
    friend bool operator==(const LumaSummary&, const LumaSummary&) = default;
};

/// Summary of the bytes that histogramOfEvenBytes counts, at a fraction of its price.
LumaSummary summaryOfEvenBytes(const uint8_t* data, size_t count);
LumaSummary summaryOfEvenBytesScalar(const uint8_t* data, size_t count);

/// How many of the `count` bytes data[0], data[4], data[8], ... are zero. The bytes in between may be read.
uint32_t zerosOfEveryFourthByte(const uint8_t* data, size_t count);
uint32_t zerosOfEveryFourthByteScalar(const uint8_t* data, size_t count);

/// Copies `rows` rows that lie `stride` bytes apart in `current` to `previous`, where they touch, and adds
/// what has changed: with columns cut at cuts[0] = 0, cuts[1], ..., cuts[n] = width, sums[i] grows by
/// |current - previous| of all bytes between cuts[i] and cuts[i + 1], modulo 2^32. Cuts do not descend.
void replaceAndCompare(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                       uint8_t* previous, uint32_t* sums);
void replaceAndCompareScalar(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                             uint8_t* previous, uint32_t* sums);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_LUMA_KERNELS_H_
