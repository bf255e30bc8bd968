#include "algo/audio/vad.h"

#include <algorithm>
#include <new>
#include <numeric>

#include "algo/audio/audio_kernels.h"

namespace ZELAlgo {
namespace {

constexpr uint32_t kMinimumPeriod = 100;  // updates, one second of chunks

/// The speech band, 200 Hz to 4 kHz, as the bin of a kFftSize-point transform times the sample rate. Both
/// constants lie a fifth of a percent above the nominal edges (192'000 and 3'840'000), and are meant as they
/// are: verdicts hang on the bins that they give.
constexpr uint32_t kBandLow = 192'400;
constexpr uint32_t kBandHigh = 3'848'000;

/// At low sample rates the band would reach past the spectrum; it is cut there.
uint32_t bandEdge(uint32_t scaled, uint32_t sample_rate) {
    return std::min(scaled / sample_rate, static_cast<uint32_t>(kPowerBins));
}

void takeFirst(VadHandle_t& vad, const float* power) {
    for (size_t k = 0; k < kPowerBins; ++k) {
        vad.smooth[k] = power[k];
        vad.minimum[k] = 2 * power[k];  // twice the power, intended: the floor has yet to be found
        vad.minimum_tmp[k] = 2 * power[k];
        vad.noise[k] = power[k];
    }
    vad.first = 0;
}

}  // namespace

VadHandle_t* VadCreate(uint32_t sample_rate) {
    if (sample_rate == 0) {
        return nullptr;
    }
    auto* const vad = new (std::nothrow) VadHandle_t;
    if (vad != nullptr) {
        vad->sample_rate = sample_rate;
        vad->band_lo = bandEdge(kBandLow, sample_rate);
        vad->band_hi = bandEdge(kBandHigh, sample_rate);
    }
    return vad;
}

float VadProcess(VadHandle_t& vad, const float* power) {
    if (vad.first != 0) {
        takeFirst(vad, power);
    } else {
        ++vad.frame_count;
        trackBins(vad, power, vad.frame_count % kMinimumPeriod == 0);
    }
    const float sum =
        std::accumulate(vad.presence.begin() + vad.band_lo, vad.presence.begin() + vad.band_hi, 0.0F);
    return sum / static_cast<float>(vad.band_hi - vad.band_lo);
}

void VadDestroy(VadHandle_t* vad) {
    delete vad;
}

}  // namespace ZELAlgo
