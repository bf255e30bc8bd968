#include "algo/audio/spectrum.h"

#include <cmath>
#include <complex>
#include <numbers>

#include <gtest/gtest.h>

#include "support/random.h"

namespace {

using ZELAlgo::analysisWindow;
using ZELAlgo::kFftSize;
using ZELAlgo::kPowerBins;
using ZELAlgo::Spectrum;

/// The power by definition, in double precision.
double powerOf(const std::array<int16_t, kFftSize>& history, size_t bin) {
    std::complex<double> sum;
    for (size_t i = 0; i < kFftSize; ++i) {
        const double angle = -2 * std::numbers::pi * static_cast<double>(bin * i % kFftSize) / kFftSize;
        sum += static_cast<double>(history[i]) * static_cast<double>(analysisWindow()[i]) *
               std::polar(1.0, angle);
    }
    return std::norm(sum);
}

TEST(Spectrum, IsThePowerOfTheWindowedFourierTransform) {
    support::Random random(1);
    Spectrum spectrum;
    ASSERT_TRUE(spectrum.ready());
    std::array<float, kPowerBins> power;
    for (int round = 0; round < 3; ++round) {
        std::array<int16_t, kFftSize> history;
        double total = 0.0;
        for (auto& sample : history) {
            sample = static_cast<int16_t>(random.next());
            total += static_cast<double>(sample * sample);
        }
        spectrum.analyse(history.data(), power.data());
        for (size_t k = 0; k < kPowerBins; ++k) {
            const double expected = powerOf(history, k);
            ASSERT_NEAR(static_cast<double>(power[k]), expected, 1e-5 * std::sqrt(expected * total)) << k;
        }
    }
}

}  // namespace
