#ifndef ZEL_SRC_ALGO_AUDIO_AUDIO_HANDLE_H_
#define ZEL_SRC_ALGO_AUDIO_AUDIO_HANDLE_H_

#include <array>
#include <cstdint>
#include <memory>

#include "algo/audio/sample_ring.h"
#include "algo/audio/spectrum.h"
#include "algo/audio/vad.h"

namespace ZELAlgo {

/// Loudness and voice share of one-channel sound, measured in chunks of 10 ms and summed over a period.
struct AudioAlgoHandle_t {
    uint32_t sample_rate = 0;  ///< Hz, of the first frame; later frames are taken as if they had it too
    uint32_t chunk = 0;        ///< samples per chunk
    std::array<int16_t, kFftSize> history{};                 ///< the newest samples, oldest first
    std::array<int16_t, SampleRing::kCapacity> chunk_buf{};  ///< the ring never holds more than fits
    SampleRing ring;
    Spectrum fft;
    std::unique_ptr<VadHandle_t, VadDestroyer> vad;
    uint64_t voice_level_sum = 0;   ///< of the voiced chunks
    uint64_t level_sum = 0;         ///< of all analysed chunks
    uint64_t voice_count = 0;       ///< voiced chunks
    uint64_t novoice_count = 0;     ///< unvoiced chunks
    uint64_t chunk_count = 0;       ///< all chunks, silent ones included
    uint32_t period_chunks = 1000;  ///< chunks that make a period
};

/// What a complete period gives.
struct AudioOutcome {
    uint32_t voice_level = 0;  ///< mean level of the voiced chunks; kept as it was if that is 0
    float voice_scale = 0.0F;  ///< share of voiced chunks among the analysed ones
    uint32_t audio_level = 0;  ///< mean level of all chunks
};

/// Null, after a log line, for a sample rate of 0 or without memory.
AudioAlgoHandle_t* AudioAlgoCreate(uint32_t sample_rate);

/// Takes in one frame. 0: a period is complete and `outcome` written; 1: the period is still filling; -1:
/// `samples` is null.
int32_t AudioAlgoExecute(AudioAlgoHandle_t* handle, const int16_t* samples, uint32_t count,
                         AudioOutcome& outcome);

/// 0, for null as well.
int32_t AudioAlgoDestroy(AudioAlgoHandle_t* handle);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_AUDIO_HANDLE_H_
