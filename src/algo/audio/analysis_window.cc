#include "algo/audio/analysis_window.h"

#include <cmath>
#include <numbers>

namespace ZELAlgo {
namespace {

/// sin(pi/2 * sin^2) with two corrections: `bend` moves weight along the slopes, `tilt` pulls the flat top,
/// which single precision could not tell apart, to a peak at entry kPeak.
double bell(size_t entry) {
    constexpr double kPeak = 158.0;
    constexpr double kTilt = 0.003;
    constexpr std::array<double, 4> kBend = {0.03325, -0.19655, 0.39953, -0.24668};

    const double step = std::numbers::pi / static_cast<double>(kWindowSpan);
    const double n = static_cast<double>(entry);
    const double s = std::pow(std::sin(step * n), 2);
    const double bend = ((kBend[3] * s + kBend[2]) * s + kBend[1]) * s + kBend[0];
    const double tilt = kTilt * std::pow(std::sin(step * (n - kPeak)), 2);
    return std::sin(std::numbers::pi / 2 * (s + s * (1 - s) * bend)) * (1 - tilt);
}

}  // namespace

const std::array<float, kFftSize>& analysisWindow() {
    static const std::array<float, kFftSize> window = [] {
        std::array<float, kFftSize> entries{};
        for (size_t n = 1; n < kWindowSpan; ++n) {
            entries[n] = static_cast<float>(bell(n));
        }
        return entries;
    }();
    return window;
}

}  // namespace ZELAlgo
