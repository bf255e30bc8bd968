#include "session/mix_down.h"

#include <cassert>
#include <numeric>

namespace ZEL {
namespace {

void mixStereo(const int16_t* interleaved, size_t samples, int16_t* mixed) {
    for (size_t i = 0; i < samples; ++i) {
        mixed[i] = static_cast<int16_t>((interleaved[2 * i] + interleaved[2 * i + 1]) / 2);
    }
}

void mixAny(const int16_t* interleaved, size_t samples, int32_t channels, int16_t* mixed) {
    for (size_t i = 0; i < samples; ++i, interleaved += channels) {
        const int64_t sum = std::accumulate(interleaved, interleaved + channels, int64_t{0});
        mixed[i] = static_cast<int16_t>(sum / channels);
    }
}

}  // namespace

const int16_t* mixedDown(const AudioFrame& frame, std::vector<int16_t>& buffer) {
    const int16_t* const interleaved = frame.data.get();
    if (frame.channels == 1 || interleaved == nullptr) {
        return interleaved;
    }
    assert(frame.channels > 1);
    if (buffer.size() < frame.samples) {
        buffer.resize(frame.samples);
    }
    if (frame.channels == 2) {
        mixStereo(interleaved, frame.samples, buffer.data());  // a constant divisor: several times faster
    } else {
        mixAny(interleaved, frame.samples, frame.channels, buffer.data());
    }
    return buffer.data();
}

}  // namespace ZEL
