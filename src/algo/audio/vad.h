#ifndef ZEL_SRC_ALGO_AUDIO_VAD_H_
#define ZEL_SRC_ALGO_AUDIO_VAD_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "algo/audio/analysis_window.h"

namespace ZELAlgo {

inline constexpr size_t kPowerBins = kFftSize / 2 + 1;

/// Voice activity detector: follows the noise floor of every bin as the minimum of its smoothed power, takes
/// a bin well above its floor for speech, and averages that over the speech band.
struct VadHandle_t {
    using Bins = std::array<float, kPowerBins>;

    uint32_t sample_rate = 0;
    uint32_t frame_count = 0;  ///< updates since the first spectrum
    uint32_t first = 1;        ///< 1 until the first spectrum was taken in
    uint32_t band_lo = 0;      ///< the speech band is band_lo <= bin < band_hi
    uint32_t band_hi = 0;
    Bins smooth{};       ///< smoothed power
    Bins minimum{};      ///< its running minimum, the noise floor
    Bins minimum_tmp{};  ///< the minimum collected in the current period
    Bins alpha{};        ///< smoothing factor of `noise`
    Bins presence{};     ///< smoothed speech presence, 0 to 1
    Bins ratio{};        ///< last smooth / minimum
    Bins noise{};        ///< noise power estimate
};

/// Null for a sample rate of 0 or without memory.
VadHandle_t* VadCreate(uint32_t sample_rate);

/// Takes in the kPowerBins powers of one chunk; the probability that it holds speech, or not-a-number if the
/// speech band has no bin at this sample rate.
float VadProcess(VadHandle_t& vad, const float* power);

void VadDestroy(VadHandle_t* vad);

struct VadDestroyer {
    void operator()(VadHandle_t* vad) const { VadDestroy(vad); }
};

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_VAD_H_
