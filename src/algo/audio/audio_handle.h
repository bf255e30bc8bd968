#ifndef ZEL_SRC_ALGO_AUDIO_AUDIO_HANDLE_H_
#define ZEL_SRC_ALGO_AUDIO_AUDIO_HANDLE_H_

#include <zel/algo/algo_types.h>

#include <array>
#include <cstdint>

#include "algo/audio/chunk_meter.h"
#include "algo/audio/period_sums.h"
#include "algo/audio/sample_ring.h"

namespace ZELAlgo {

/// Loudness and voice share of one-channel sound, measured in chunks of 10 ms and summed over a period. The
/// sample rate is that of the first frame; later frames are taken as if they had it too.
struct AudioAlgoHandle_t {
    std::array<int16_t, SampleRing::kCapacity> chunk_buf{};  ///< the ring never holds more than fits
    SampleRing ring;
    ChunkMeter meter;
    PeriodSums sums;
    uint32_t period_chunks = 0;  ///< chunks that make a period
};

/// Null, after a log line, for a sample rate of 0 or without memory.
AudioAlgoHandle_t* AudioAlgoCreate(const ZELAlgoConfig& config, uint32_t sample_rate);

/// Takes in one frame. 0: a period is complete, and its levels and its share of voice are written as
/// PeriodSums::close() does; 1: the period is still filling; -1: `samples` is null.
int32_t AudioAlgoExecute(AudioAlgoHandle_t* handle, const int16_t* samples, uint32_t count,
                         ZELAudioResult& result);

/// 0, for null as well.
int32_t AudioAlgoDestroy(AudioAlgoHandle_t* handle);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_AUDIO_HANDLE_H_
