#include "algo/audio/audio_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/tests/hwy_gtest.h>

#include "algo/audio/vad.h"
#include "support/random.h"

// The fast loop against its plain twin, to the bit, with every instruction set of this machine.

namespace {

using ZELAlgo::kPowerBins;
using ZELAlgo::VadHandle_t;

class AudioKernels : public hwy::TestWithParamTarget {};
HWY_TARGET_INSTANTIATE_TEST_SUITE_P(AudioKernels);

/// Values over many magnitudes, 0 among them; never negative.
VadHandle_t::Bins powers(support::Random& random) {
    VadHandle_t::Bins result;
    for (auto& power : result) {
        const auto mantissa = static_cast<float>(random.below(1U << 20U));
        power = std::ldexp(mantissa, static_cast<int>(random.below(64)) - 40);
    }
    return result;
}

TEST_P(AudioKernels, TrackEveryBinLikeTheirTwin) {
    support::Random random(4);
    VadHandle_t want;
    VadHandle_t have;
    for (int update = 0; update < 300; ++update) {
        auto power = powers(random);
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
