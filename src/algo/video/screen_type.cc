#include "algo/video/screen_type.h"

#include <cmath>

namespace ZELAlgo {
namespace {

constexpr size_t kDarkLevels = 30;  // luma 0 to 29; video black is 16

// Not a number for an empty frame, so that every comparison with it fails.
float share(uint32_t count, uint32_t samples) {
    return static_cast<float>(count) / static_cast<float>(samples);
}

}  // namespace

bool isLumaZero(uint32_t zeros, uint32_t samples, float ratio) {
    return share(zeros, samples) >= ratio;
}

bool isChromaZero(uint32_t zeros, uint32_t samples, float ratio) {
    return share(2 * zeros, samples) >= ratio;
}

bool isBlack(const Histogram& histogram, uint32_t samples, float ratio) {
    // Every bin is divided on its own: the verdict beside the ratio depends on these roundings.
    float dark = 0.0F;
    for (size_t level = 0; level < kDarkLevels; ++level) {
        dark += share(histogram[level], samples);
    }
    return dark >= ratio;
}

std::optional<bool> isClearlyBlack(uint32_t dark, uint32_t samples, float ratio) {
    // 30 divisions and 30 additions of shares up to 1, each wrong by 2^-24 at most, stay far below this.
    constexpr double kDoubt = 1e-4;
    const double distance = static_cast<double>(dark) / samples - static_cast<double>(ratio);
    if (std::abs(distance) > kDoubt) {
        return distance > 0;
    }
    return std::nullopt;
}

}  // namespace ZELAlgo
