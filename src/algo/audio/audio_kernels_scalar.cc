#include "algo/audio/audio_kernels.h"

#include <algorithm>

#include "algo/audio/vad.h"

namespace ZELAlgo {

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
