#include "algo/audio/audio_kernels.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/tests/hwy_gtest.h>

#include "algo/audio/vad.h"
#include "support/random.h"

// Each fast loop against its plain twin, to the bit, with every instruction set of this machine.

namespace {

using ZELAlgo::kPowerBins;
using ZELAlgo::VadHandle_t;

class AudioKernels : public hwy::TestWithParamTarget {};
HWY_TARGET_INSTANTIATE_TEST_SUITE_P(AudioKernels);

/// Noise, with extremes in between.
std::vector<int16_t> samples(support::Random& random, size_t count) {
    std::vector<int16_t> result(count);
    for (auto& sample : result) {
        constexpr int16_t kExtremes[] = {INT16_MIN, INT16_MIN + 1, -1, 0, 1, INT16_MAX};
        sample = random.below(4) == 0 ? kExtremes[random.below(6)] : static_cast<int16_t>(random.next());
    }
    return result;
}

/// Values over many magnitudes, 0 among them; never negative.
std::vector<float> powers(support::Random& random, size_t count) {
    std::vector<float> result(count);
    for (auto& power : result) {
        const auto mantissa = static_cast<float>(random.below(1U << 20U));
        power = std::ldexp(mantissa, static_cast<int>(random.below(64)) - 40);
    }
    return result;
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

TEST_P(AudioKernels, SumMagnitudesLikeTheirTwin) {
    support::Random random(1);
    for (size_t count = 0; count < 200; ++count) {
        const auto input = samples(random, count + 1);
        ASSERT_EQ(ZELAlgo::magnitudeSum(input.data() + 1, count),
                  ZELAlgo::magnitudeSumScalar(input.data() + 1, count))
            << count;
    }
    const std::vector<int16_t> loudest(65'536, INT16_MIN);
    EXPECT_EQ(ZELAlgo::magnitudeSum(loudest.data(), loudest.size()), 0x8000'0000U);
}

TEST_P(AudioKernels, ApplyTheWindowLikeTheirTwin) {
    support::Random random(2);
    for (size_t count = 0; count < 100; ++count) {
        const auto input = samples(random, count);
        const auto window = powers(random, count);
        std::vector<float> want(count + 1, -1.0F);
        std::vector<float> have = want;
        ZELAlgo::applyWindowScalar(input.data(), window.data(), count, want.data());
        ZELAlgo::applyWindow(input.data(), window.data(), count, have.data());
        ASSERT_TRUE(sameBits(want, have)) << count;
    }
}

TEST_P(AudioKernels, SquareLikeTheirTwin) {
    support::Random random(3);
    for (size_t count = 0; count < 100; ++count) {
        auto pairs = powers(random, 2 * count);
        for (auto& value : pairs) {
            value = random.below(2) == 0 ? value : -value;
        }
        std::vector<float> want(count + 1, -1.0F);
        std::vector<float> have = want;
        ZELAlgo::pairPowersScalar(pairs.data(), count, want.data());
        ZELAlgo::pairPowers(pairs.data(), count, have.data());
        ASSERT_TRUE(sameBits(want, have)) << count;
    }
}

TEST_P(AudioKernels, TrackEveryBinLikeTheirTwin) {
    support::Random random(4);
    VadHandle_t want;
    VadHandle_t have;
    for (int update = 0; update < 300; ++update) {
        auto power = powers(random, kPowerBins);
        if (update % 3 == 0) {  // a smoothed power of 30 times the floor, or a few floats off
            for (size_t k = 0; k < kPowerBins; ++k) {
                const float at_threshold = 150.0F * want.minimum[k] - 4.0F * want.smooth[k];
                power[k] =
                    std::max(0.0F, at_threshold * (1.0F + 1e-7F * static_cast<float>(random.below(9))));
            }
        }
        ZELAlgo::trackBinsScalar(want, power.data(), update % 100 == 99);
        ZELAlgo::trackBins(have, power.data(), update % 100 == 99);
        ASSERT_EQ(std::memcmp(&want, &have, sizeof(want)), 0) << update;
    }
}

}  // namespace
