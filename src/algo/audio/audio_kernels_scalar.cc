#include "algo/audio/audio_kernels.h"

#include <algorithm>
#include <cstdlib>

#include "algo/audio/vad.h"

namespace ZELAlgo {

uint32_t magnitudeSumScalar(const int16_t* samples, size_t count) {
    uint32_t sum = 0;
    for (size_t i = 0; i < count; ++i) {
        sum += static_cast<uint32_t>(std::abs(int{samples[i]}));
    }
    return sum;
}

void applyWindowScalar(const int16_t* samples, const float* window, size_t count, float* weighted) {
    for (size_t i = 0; i < count; ++i) {
        weighted[i] = static_cast<float>(samples[i]) * window[i];
    }
}

void pairPowersScalar(const float* pairs, size_t count, float* power) {
    for (size_t k = 0; k < count; ++k) {
        const float re = pairs[2 * k];
        const float im = pairs[2 * k + 1];
        power[k] = re * re + im * im;
    }
}

void trackBinsScalar(VadHandle_t& vad, const float* power, bool new_period, size_t first) {
    for (size_t k = first; k < kPowerBins; ++k) {
        vad.smooth[k] = 0.2F * power[k] + 0.8F * vad.smooth[k];
        if (new_period) {
            vad.minimum[k] = std::min(vad.minimum_tmp[k], vad.smooth[k]);
            vad.minimum_tmp[k] = vad.smooth[k];
        } else {
            vad.minimum[k] = std::min(vad.minimum[k], vad.smooth[k]);
            vad.minimum_tmp[k] = std::min(vad.minimum_tmp[k], vad.smooth[k]);
        }
        // The one step in double precision.
        vad.ratio[k] = static_cast<float>(double{vad.smooth[k]} / (double{vad.minimum[k]} + 0.0001));
        const float speech = vad.ratio[k] > 30.0F ? 1.0F : 0.0F;
        vad.presence[k] = 0.8F * speech + 0.2F * vad.presence[k];
        vad.alpha[k] = 0.95F + 0.05F * vad.presence[k];
        vad.noise[k] = (1.0F - vad.alpha[k]) * power[k] + vad.alpha[k] * vad.noise[k];
    }
}

}  // namespace ZELAlgo
