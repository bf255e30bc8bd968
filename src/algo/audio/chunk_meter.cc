#include "algo/audio/chunk_meter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "base/log_format.h"

namespace ZELAlgo {
namespace {

/// Zero if and only if the chunk is silent.
uint32_t magnitudeSum(const int16_t* samples, uint32_t count) {
    uint32_t sum = 0;
    for (uint32_t i = 0; i < count; ++i) {
        sum += static_cast<uint32_t>(std::abs(int{samples[i]}));
    }
    return sum;
}

}  // namespace

bool ChunkMeter::create(uint32_t sample_rate) {
    chunk_ = sample_rate / kChunksPerSecond;
    if (!fft_.ready()) {
        ZEL::zel_log("fft handle create failed\n");
        return false;
    }
    vad_.reset(VadCreate(sample_rate));
    if (vad_ == nullptr) {
        ZEL::zel_log("vad handle create failed\n");
        return false;
    }
    return true;
}

ChunkMeasurement ChunkMeter::measure(const int16_t* samples) {
    const uint32_t magnitude_sum = magnitudeSum(samples, chunk_);
    if (magnitude_sum == 0) {
        return {};
    }
    VadHandle_t::Bins power;
    remember(samples);
    fft_.analyse(history_.data(), power.data());
    const float voice = VadProcess(*vad_, power.data());
    return {.level = meanLevel(samples, magnitude_sum),
            .silent = false,
            .voiced = voice > 0.5F};  // not so for the not-a-number of an empty band
}

/// Moves the chunk in at the end. Of one longer than the history (above 96 kHz) the newest samples stay.
void ChunkMeter::remember(const int16_t* samples) {
    const size_t kept = std::min<size_t>(chunk_, history_.size());
    const auto moved = static_cast<std::ptrdiff_t>(kept);
    std::copy(history_.begin() + moved, history_.end(), history_.begin());
    std::copy_n(samples + (chunk_ - kept), kept, history_.end() - moved);
}

/// Mean absolute sample of the chunk, from a sum in single precision taken sample by sample.
uint32_t ChunkMeter::meanLevel(const int16_t* samples, uint32_t magnitude_sum) const {
    // Up to 2^24 every whole number is a float, so each partial sum is exact and equals the integer one.
    // Chunks of up to 512 samples never get further (512 * 32768 = 2^24); longer, loud ones are rounded
    // sample by sample.
    if (magnitude_sum <= 1U << 24U) {
        return magnitude_sum / chunk_;
    }
    float sum = 0.0F;
    for (uint32_t i = 0; i < chunk_; ++i) {
        sum += std::abs(static_cast<float>(samples[i]));
    }
    return static_cast<uint32_t>(sum) / chunk_;
}

}  // namespace ZELAlgo
