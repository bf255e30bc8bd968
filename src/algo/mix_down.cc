#include "algo/mix_down.h"

#include <cassert>
#include <numeric>

namespace ZELAlgo {
namespace {

/// A constant divisor makes the usual layouts several times faster.
template <int kChannels>
void mix(const int16_t* interleaved, size_t samples, int16_t* mixed) {
    for (size_t i = 0; i < samples; ++i, interleaved += kChannels) {
        int sum = 0;
        for (int channel = 0; channel < kChannels; ++channel) {
            sum += interleaved[channel];
        }
        mixed[i] = static_cast<int16_t>(sum / kChannels);
    }
}

void mixAny(const int16_t* interleaved, size_t samples, uint32_t channels, int16_t* mixed) {
    for (size_t i = 0; i < samples; ++i, interleaved += channels) {
        const int64_t sum = std::accumulate(interleaved, interleaved + channels, int64_t{0});
        mixed[i] = static_cast<int16_t>(sum / channels);
    }
}

}  // namespace

const int16_t* mixedDown(const int16_t* interleaved, size_t samples, uint32_t channels,
                         std::vector<int16_t>& buffer) {
    if (channels == 1 || interleaved == nullptr) {
        return interleaved;
    }
    assert(channels > 1);
    if (buffer.size() < samples) {
        buffer.resize(samples);
    }
    switch (channels) {
        case 2:
            mix<2>(interleaved, samples, buffer.data());
            break;
        case 6:
            mix<6>(interleaved, samples, buffer.data());
            break;
        default:
            mixAny(interleaved, samples, channels, buffer.data());
            break;
    }
    return buffer.data();
}

}  // namespace ZELAlgo
