#ifndef ZEL_SRC_ALGO_VIDEO_EDGE_KERNELS_H_
#define ZEL_SRC_ALGO_VIDEO_EDGE_KERNELS_H_

#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

// Planes that these kernels read or write may be read or written in whole vectors: their last row is
// followed, and that of the magnitudes also preceded, by kSpareBytes bytes that belong to the buffer.
constexpr size_t kSpareBytes = 64;

/// Bytes from one row of magnitudes to the next; what is beyond the row's own is zero or spare.
constexpr size_t magnitudeStride(size_t width) {
    return (width + 63) / 64 * 64 + kSpareBytes;
}

/// Bytes of scratch that thinnedMagnitude and threshold need for a width x height frame.
size_t edgeScratch(size_t width, size_t height);

/// Length of the Sobel gradient of `smooth`, whose rows touch, at most 255; borders are repeated. Then every
/// inner length that is smaller than one of its neighbours along the gradient becomes zero (see the plain
/// definition of thinScalar). Returns the largest length that is left.
uint8_t thinnedMagnitude(const uint8_t* smooth, size_t width, size_t height, uint8_t* scratch,
                         uint8_t* magnitude);
uint8_t thinnedMagnitudeScalar(const uint8_t* smooth, size_t width, size_t height, uint8_t* scratch,
                               uint8_t* magnitude);

/// Where a gradient points, as thinning tells apart.
enum Direction : uint8_t { kNowhere, kHorizontal, kVertical, kDiagonal };

/// The two steps of thinnedMagnitudeScalar. Rows of `direction` touch.
void gradientScalar(const uint8_t* smooth, size_t width, size_t height, uint8_t* direction,
                    uint8_t* magnitude);
void thinScalar(const uint8_t* direction, size_t width, size_t height, uint8_t* magnitude);

/// 64-bit words that one row of an edge map takes: a bit per pixel from the lowest bit up, then at least 64
/// bits that are never set.
constexpr size_t edgeMapWords(size_t width) {
    return width / 64 + 2;
}

/// Magnitudes that decide about an edge.
struct EdgeLevels {
    uint8_t weak;          ///< from here on an edge, unless among strong ones
    uint8_t strong;        ///< from here on strong
    uint8_t overwhelming;  ///< from here on an edge in any case
};

/// Levels for a largest magnitude of `maximum`.
EdgeLevels edgeLevels(uint8_t maximum);

/// Double threshold into an edge map. The bits of the first row tell where `smooth` is not zero; all others
/// of the border, where nobody looks, are not set.
void threshold(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
               EdgeLevels levels, uint8_t* scratch, uint64_t* edge_map);
void thresholdScalar(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
                     EdgeLevels levels, uint64_t* edge_map);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_EDGE_KERNELS_H_
