#ifndef ZEL_SRC_ALGO_AUDIO_CHUNK_METER_H_
#define ZEL_SRC_ALGO_AUDIO_CHUNK_METER_H_

#include <array>
#include <cstdint>
#include <memory>

#include "algo/audio/spectrum.h"
#include "algo/audio/vad.h"

namespace ZELAlgo {

/// What 10 ms of sound were like.
struct ChunkMeasurement {
    uint32_t level = 0;   ///< mean absolute sample value
    bool silent = true;   ///< every sample is zero: nothing else was looked at
    bool voiced = false;  ///< speech is more likely than not
};

/// Measures one-channel sound of one sample rate chunk by chunk. Each chunk counts against those before it.
class ChunkMeter {
  public:
    static constexpr uint32_t kChunksPerSecond = 100;

    /// Comes first. False, after a log line, for a sample rate of 0 or without memory.
    bool create(uint32_t sample_rate);

    /// Samples per chunk; 0 below 100 Hz.
    uint32_t chunk() const { return chunk_; }

    /// Measures chunk() samples, of which there must be less than 2^17.
    ChunkMeasurement measure(const int16_t* samples);

  private:
    void remember(const int16_t* samples);
    uint32_t meanLevel(const int16_t* samples, uint32_t magnitude_sum) const;

    uint32_t chunk_ = 0;
    std::array<int16_t, kFftSize> history_{};  // the newest samples, oldest first
    Spectrum fft_;
    std::unique_ptr<VadHandle_t, VadDestroyer> vad_;
};

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_CHUNK_METER_H_
