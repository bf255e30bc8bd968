#include "algo/video/edge_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ZELAlgo {
namespace {

constexpr float kLowShare = 0.2F;
constexpr float kHighShare = 0.3F;

// Every partial sum is rounded to double in this order, the result truncated.
template <typename Pixel>
uint8_t weightedSum(const GaussianKernel& kernel, Pixel&& pixel) {
    double sum = 0.0;
    for (size_t j = 0; j < kernel.size(); ++j) {
        sum += kernel[j] * pixel(j);
    }
    return static_cast<uint8_t>(sum);
}

// Index of the pixel at `x`, from -2 to width + 1, with the ends reflected about the end pixels. Rows too
// short to be reflected stop at their far end.
size_t reflected(ptrdiff_t x, ptrdiff_t width) {
    const ptrdiff_t inside = x < 0 ? -x : x >= width ? 2 * (width - 1) - x : x;
    return static_cast<size_t>(std::clamp<ptrdiff_t>(inside, 0, width - 1));
}

uint8_t roundedLength(int32_t gx, int32_t gy) {
    constexpr int32_t kLongest = 255 * 255;
    return static_cast<uint8_t>(std::sqrt(static_cast<double>(std::min(gx * gx + gy * gy, kLongest))) + 0.5);
}

Direction directionOf(int32_t gx, int32_t gy) {
    const int32_t along = std::abs(gx);
    const int32_t across = std::abs(gy);
    if (along == across) {
        return along == 0 ? Direction::kNone : Direction::kDiagonal;
    }
    return along > across ? Direction::kHorizontal : Direction::kVertical;
}

}  // namespace

GaussianKernel gaussianKernel() {
    GaussianKernel kernel;
    double sum = 0.0;
    for (size_t i = 0; i < kernel.size(); ++i) {
        const double distance = static_cast<double>(i) - 2.0;
        kernel[i] = std::exp(-(distance * distance) / (2.0 * 1.0 * 1.0));
        sum += kernel[i];
    }
    for (double& weight : kernel) {
        weight /= sum;
    }
    return kernel;
}

void smoothScalar(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width,
                  size_t height, uint8_t* smooth) {
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* const row = source + y * stride;
        for (size_t x = 0; x < width; ++x) {
            smooth[y * width + x] = weightedSum(kernel, [&](size_t j) {
                return row[reflected(static_cast<ptrdiff_t>(x + j) - 2, static_cast<ptrdiff_t>(width))];
            });
        }
    }
    // The second pass runs along the rows as well, which is intended, column by column over the picture as
    // one linear array: near the ends of a row it reads its neighbours' pixels, and it reads what it has
    // written.
    for (size_t x = 0; x < width; ++x) {
        for (size_t y = 2; y + 2 < height; ++y) {
            uint8_t* const at = smooth + y * width + x;
            *at = weightedSum(kernel, [&](size_t j) { return at[static_cast<ptrdiff_t>(j) - 2]; });
        }
    }
}

void gradientScalar(const uint8_t* smooth, size_t width, size_t height, Direction* direction,
                    uint8_t* magnitude) {
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
            magnitude[y * width + x] = roundedLength(gx, gy);
        }
    }
}

void thinScalar(const Direction* direction, size_t width, size_t height, uint8_t* magnitude) {
    // A diagonal gradient is compared with the neighbours of the last pixel that was not diagonal, be it in
    // another row: intended.
    uint8_t before = 0;
    uint8_t after = 0;
    for (size_t y = 1; y + 1 < height; ++y) {
        for (size_t x = 1; x + 1 < width; ++x) {
            uint8_t* const at = magnitude + y * width + x;
            const Direction along = direction[y * width + x];
            if (along == Direction::kNone) {
                continue;
            }
            if (along == Direction::kVertical) {
                before = *(at - width);
                after = *(at + width);
            } else if (along == Direction::kHorizontal) {
                before = *(at - 1);
                after = *(at + 1);
            }
            if (*at < before || *at < after) {
                *at = 0;
            }
        }
    }
}

uint8_t maximumScalar(const uint8_t* data, size_t count) {
    return count == 0 ? uint8_t{0} : *std::max_element(data, data + count);
}

void thresholdScalar(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
                     uint8_t maximum, uint64_t* edge_map) {
    const float low = static_cast<float>(maximum) * kLowShare;
    const float high = static_cast<float>(maximum) * kHighShare;
    const size_t words = edgeMapWords(width);
    std::fill_n(edge_map, words * height, 0);
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            const uint8_t* const at = magnitude + y * width + x;
            bool edge = false;
            if (y == 0 || y + 1 == height || x == 0 || x + 1 == width) {
                edge = smooth[y * width + x] != 0;
            } else if (*at >= low) {
                const auto strong = [&](const uint8_t* neighbour) { return *neighbour >= high; };
                const uint8_t* const above = at - width;
                const uint8_t* const below = at + width;
                const bool surrounded = strong(above - 1) && strong(above) && strong(above + 1) &&
                                        strong(at - 1) && strong(at + 1) &&  //
                                        strong(below - 1) && strong(below) && strong(below + 1);
                edge = *at > high || !surrounded;
            }
            edge_map[y * words + x / 64] |= static_cast<uint64_t>(edge) << x % 64;
        }
    }
}

}  // namespace ZELAlgo
