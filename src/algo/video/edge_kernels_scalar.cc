#include "algo/video/edge_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ZELAlgo {
namespace {

uint8_t roundedLength(int32_t gx, int32_t gy) {
    constexpr int32_t kLongest = 255 * 255;
    const double length = std::sqrt(static_cast<double>(std::min(gx * gx + gy * gy, kLongest)));
    return static_cast<uint8_t>(std::floor(length + 0.5));
}

Direction directionOf(int32_t gx, int32_t gy) {
    const int32_t along = std::abs(gx);
    const int32_t across = std::abs(gy);
    if (along == across) {
        return along == 0 ? kNowhere : kDiagonal;
    }
    return along > across ? kHorizontal : kVertical;
}

}  // namespace

size_t edgeScratch(size_t width, size_t height) {
    // Directions in the plain version; in the fast one some rows of bytes, of shorts, and of bits.
    const size_t stride = magnitudeStride(width);
    return std::max(width * height, 7 * stride + 16 * stride / 8 + 512);
}

void gradientScalar(const uint8_t* smooth, size_t width, size_t height, uint8_t* direction,
                    uint8_t* magnitude) {
    const size_t stride = magnitudeStride(width);
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* const row = smooth + y * width;
        const uint8_t* const above = y > 0 ? row - width : row;
        const uint8_t* const below = y + 1 < height ? row + width : row;
        for (size_t x = 0; x < width; ++x) {
            const size_t l = x > 0 ? x - 1 : x;
            const size_t r = x + 1 < width ? x + 1 : x;
            const int32_t gx = 2 * (row[l] - row[r]) + above[l] - above[r] + below[l] - below[r];
            const int32_t gy = 2 * (above[x] - below[x]) + above[l] + above[r] - below[l] - below[r];
            direction[y * width + x] = directionOf(gx, gy);
            magnitude[y * stride + x] = roundedLength(gx, gy);
        }
    }
}

void thinScalar(const uint8_t* direction, size_t width, size_t height, uint8_t* magnitude) {
    const size_t stride = magnitudeStride(width);
    // A diagonal gradient is compared with the neighbours of the last pixel that was not diagonal, be it in
    // another row: intended.
    uint8_t before = 0;
    uint8_t after = 0;
    for (size_t y = 1; y + 1 < height; ++y) {
        for (size_t x = 1; x + 1 < width; ++x) {
            uint8_t* const at = magnitude + y * stride + x;
            const uint8_t along = direction[y * width + x];
            if (along == kNowhere) {
                continue;
            }
            if (along == kVertical) {
                before = *(at - stride);
                after = *(at + stride);
            } else if (along == kHorizontal) {
                before = *(at - 1);
                after = *(at + 1);
            }
            if (*at < before || *at < after) {
                *at = 0;
            }
        }
    }
}

uint8_t thinnedMagnitudeScalar(const uint8_t* smooth, size_t width, size_t height, uint8_t* scratch,
                               uint8_t* magnitude) {
    gradientScalar(smooth, width, height, scratch, magnitude);
    thinScalar(scratch, width, height, magnitude);
    uint8_t maximum = 0;
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* const row = magnitude + y * magnitudeStride(width);
        maximum = std::max(maximum, *std::max_element(row, row + width));
    }
    return maximum;
}

EdgeLevels edgeLevels(uint8_t maximum) {
    // The shares are single precision, and so is the comparison of a magnitude with them: whole numbers on
    // either side of the product decide.
    const float low = static_cast<float>(maximum) * 0.2F;
    const float high = static_cast<float>(maximum) * 0.3F;
    return {.weak = static_cast<uint8_t>(std::ceil(low)),
            .strong = static_cast<uint8_t>(std::ceil(high)),
            .overwhelming = static_cast<uint8_t>(std::floor(high) + 1.0F)};
}

void thresholdScalar(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
                     EdgeLevels levels, uint64_t* edge_map) {
    const size_t stride = magnitudeStride(width);
    const size_t words = edgeMapWords(width);
    std::fill_n(edge_map, words * height, 0);
    const auto set = [&](size_t y, size_t x) { edge_map[y * words + x / 64] |= uint64_t{1} << x % 64; };
    for (size_t x = 0; x < width && height > 0; ++x) {
        if (smooth[x] != 0) {
            set(0, x);
        }
    }
    for (size_t y = 1; y + 1 < height; ++y) {
        for (size_t x = 1; x + 1 < width; ++x) {
            const uint8_t* const at = magnitude + y * stride + x;
            if (*at < levels.weak) {
                continue;
            }
            const auto strong = [&](const uint8_t* neighbour) { return *neighbour >= levels.strong; };
            const auto three = [&](const uint8_t* middle) {
                return strong(middle - 1) && strong(middle) && strong(middle + 1);
            };
            const bool surrounded =
                three(at - stride) && strong(at - 1) && strong(at + 1) && three(at + stride);
            if (*at >= levels.overwhelming || !surrounded) {
                set(y, x);
            }
        }
    }
}

}  // namespace ZELAlgo
