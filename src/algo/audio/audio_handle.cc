#include "algo/audio/audio_handle.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>

#include "base/log_format.h"

namespace ZELAlgo {
namespace {

constexpr uint32_t kChunksPerSecond = 100;

/// Zero if and only if the chunk is silent. Cannot overflow: the ring holds less than 2^16 samples.
uint32_t magnitudeSum(const AudioAlgoHandle_t& handle) {
    uint32_t sum = 0;
    for (uint32_t i = 0; i < handle.chunk; ++i) {
        sum += static_cast<uint32_t>(std::abs(int{handle.chunk_buf[i]}));
    }
    return sum;
}

/// Moves the chunk in at the end. Of one longer than the history (above 96 kHz) the newest samples stay.
void remember(AudioAlgoHandle_t& handle) {
    auto& history = handle.history;
    const size_t kept = std::min<size_t>(handle.chunk, history.size());
    const auto moved = static_cast<std::ptrdiff_t>(kept);
    std::copy(history.begin() + moved, history.end(), history.begin());
    std::copy_n(handle.chunk_buf.begin() + (handle.chunk - moved), kept, history.end() - moved);
}

/// Mean absolute sample of the chunk, from a sum in single precision taken sample by sample.
uint32_t meanLevel(const AudioAlgoHandle_t& handle, uint32_t magnitude_sum) {
    // Up to 2^24 every whole number is a float, so each partial sum is exact and equals the integer one.
    // Chunks of up to 512 samples never get further (512 * 32768 = 2^24); longer, loud ones are rounded
    // sample by sample.
    if (magnitude_sum <= 1U << 24U) {
        return magnitude_sum / handle.chunk;
    }
    float sum = 0.0F;
    for (uint32_t i = 0; i < handle.chunk; ++i) {
        sum += std::abs(static_cast<float>(handle.chunk_buf[i]));
    }
    return static_cast<uint32_t>(sum) / handle.chunk;
}

void analyse(AudioAlgoHandle_t& handle, uint32_t magnitude_sum) {
    VadHandle_t::Bins power;
    remember(handle);
    handle.fft.analyse(handle.history.data(), power.data());
    const float voice = VadProcess(*handle.vad, power.data());
    const uint32_t level = meanLevel(handle, magnitude_sum);
    if (voice > 0.5F) {  // not so for the not-a-number of an empty band
        ++handle.voice_count;
        handle.voice_level_sum += level;
    } else {
        ++handle.novoice_count;
    }
    handle.level_sum += level;
}

uint64_t atLeastOne(uint64_t count) {
    return std::max<uint64_t>(count, 1);
}

void closePeriod(AudioAlgoHandle_t& handle, AudioOutcome& outcome) {
    const uint64_t voice_level = handle.voice_level_sum / atLeastOne(handle.voice_count);
    if (voice_level >= 1) {
        outcome.voice_level = static_cast<uint32_t>(voice_level);
    }
    outcome.voice_scale = static_cast<float>(handle.voice_count) /
                          static_cast<float>(atLeastOne(handle.voice_count + handle.novoice_count));
    outcome.audio_level = static_cast<uint32_t>(handle.level_sum / atLeastOne(handle.chunk_count));

    handle.voice_level_sum = 0;
    handle.level_sum = 0;
    handle.voice_count = 0;
    handle.novoice_count = 0;
    handle.chunk_count = 0;
}

}  // namespace

AudioAlgoHandle_t* AudioAlgoCreate(uint32_t sample_rate) {
    std::unique_ptr<AudioAlgoHandle_t> handle(new (std::nothrow) AudioAlgoHandle_t);
    if (handle == nullptr) {
        return nullptr;
    }
    handle->sample_rate = sample_rate;
    handle->chunk = sample_rate / kChunksPerSecond;
    if (!handle->fft.ready()) {
        ZEL::zel_log("fft handle create failed\n");
        return nullptr;
    }
    handle->vad.reset(VadCreate(sample_rate));
    if (handle->vad == nullptr) {
        ZEL::zel_log("vad handle create failed\n");
        return nullptr;
    }
    return handle.release();
}

int32_t AudioAlgoExecute(AudioAlgoHandle_t* handle, const int16_t* samples, uint32_t count,
                         AudioOutcome& outcome) {
    if (samples == nullptr) {
        return -1;
    }
    handle->ring.write(samples, count);  // a frame that does not fit is dropped without a word
    // A chunk too long for the ring never comes together. An empty one (below 100 Hz) counts as silence.
    while (handle->ring.available() >= handle->chunk) {
        handle->ring.read(handle->chunk_buf.data(), handle->chunk);
        ++handle->chunk_count;
        const uint32_t magnitude_sum = magnitudeSum(*handle);
        if (magnitude_sum == 0) {
            break;  // intended: one silent chunk per frame, the rest of the ring waits for the next
        }
        analyse(*handle, magnitude_sum);
    }
    if (handle->chunk_count < handle->period_chunks) {
        return 1;
    }
    closePeriod(*handle, outcome);
    return 0;
}

int32_t AudioAlgoDestroy(AudioAlgoHandle_t* handle) {
    delete handle;
    return 0;
}

}  // namespace ZELAlgo
