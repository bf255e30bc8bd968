#ifndef ZEL_TESTS_SUPPORT_PATTERNS_H_
#define ZEL_TESTS_SUPPORT_PATTERNS_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/random.h"

namespace support {

/// Kinds of grey planes, each of which drives the video kernels through other branches.
enum class Pattern {
    kNoise,          ///< every byte for itself
    kFewLevels,      ///< noise of three neighbouring levels: many equal and diagonal gradients
    kFlat,           ///< all pixels alike
    kRamp,           ///< a slope in some direction, cut at white
    kDiagonalRamp,   ///< a slope of one level per pixel in both directions
    kCheckerboard,   ///< black and white, two or three pixels a field
    kMosaic,         ///< flat cells of 4 to 12 pixels
    kGrid,           ///< thin light frames on a dark ground
    kNearThreshold,  ///< steps whose gradients lie around each threshold
    kSteps,          ///< long rows of falling magnitudes: every second one is thinned
    kClouds,         ///< noise of several scales, as in filmed frames
};
constexpr Pattern kPatterns[] = {Pattern::kNoise,  Pattern::kFewLevels,    Pattern::kFlat,
                                 Pattern::kRamp,   Pattern::kDiagonalRamp, Pattern::kCheckerboard,
                                 Pattern::kMosaic, Pattern::kGrid,         Pattern::kNearThreshold,
                                 Pattern::kSteps,  Pattern::kClouds};

constexpr const char* name(Pattern pattern) {
    constexpr const char* kNames[] = {"noise",          "few levels",   "flat",   "ramp",
                                      "diagonal ramp",  "checkerboard", "mosaic", "grid",
                                      "near threshold", "steps",        "clouds"};
    return kNames[static_cast<size_t>(pattern)];
}

namespace detail {

/// Smooth noise of one scale: random values on a lattice of `cell` pixels, interpolated between.
inline double cloud(uint64_t seed, size_t x, size_t y, size_t cell) {
    const auto corner = [&](size_t cx, size_t cy) {
        return static_cast<double>(Random(seed + cx * 7919 + cy * 104729 + cell).byte());
    };
    const size_t cx = x / cell;
    const size_t cy = y / cell;
    const double fx = static_cast<double>(x % cell) / static_cast<double>(cell);
    const double fy = static_cast<double>(y % cell) / static_cast<double>(cell);
    const double upper = std::lerp(corner(cx, cy), corner(cx + 1, cy), fx);
    const double lower = std::lerp(corner(cx, cy + 1), corner(cx + 1, cy + 1), fx);
    return std::lerp(upper, lower, fy);
}

}  // namespace detail

/// `width` x `height` bytes of a pattern, the same for the same seed everywhere.
inline std::vector<uint8_t> patternPlane(Pattern pattern, size_t width, size_t height, uint64_t seed) {
    Random random(seed);
    const uint32_t a = random.below(256);
    const uint32_t b = random.below(9);
    const size_t cell = 4 + random.below(9);
    std::vector<uint8_t> bytes(width * height);
    for (size_t i = 0; i < bytes.size(); ++i) {
        const size_t x = i % width;
        const size_t y = i / width;
        size_t value = 0;
        switch (pattern) {
            case Pattern::kNoise:
                value = random.byte();
                break;
            case Pattern::kFewLevels:
                value = a / 2 + random.below(3);
                break;
            case Pattern::kFlat:
                value = a;
                break;
            case Pattern::kRamp:
                value = std::min<size_t>((x * (b + 1) + y * (8 - b)) / 3, 255);
                break;
            case Pattern::kDiagonalRamp:
                value = (x + y) % 256;
                break;
            case Pattern::kCheckerboard:
                value = (x / (2 + b % 2) + y / (2 + b % 2)) % 2 * 255;
                break;
            case Pattern::kMosaic:
                value = Random(seed + x / cell * 1000 + y / cell).byte();
                break;
            case Pattern::kGrid:
                value = x % (cell + 4) < 2 || y % (cell + 4) < 2 ? 220 : 30;
                break;
            case Pattern::kNearThreshold:
                value = 100 + (x / 8 + y / 8) % 2 * (9 + Random(seed + x / 8 + 99 * (y / 8)).below(11));
                break;
            case Pattern::kSteps:
                value = 255 / (1 + x % 37 / 2) + y % 3;
                break;
            case Pattern::kClouds:
                value = static_cast<size_t>(0.5 * detail::cloud(seed, x, y, 61) +
                                            0.3 * detail::cloud(seed, x, y, 17) +
                                            0.15 * detail::cloud(seed, x, y, 5) + 0.05 * random.byte());
                break;
        }
        bytes[i] = static_cast<uint8_t>(std::min<size_t>(value, 255));
    }
    return bytes;
}

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_PATTERNS_H_
