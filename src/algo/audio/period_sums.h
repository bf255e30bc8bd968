#ifndef ZEL_SRC_ALGO_AUDIO_PERIOD_SUMS_H_
#define ZEL_SRC_ALGO_AUDIO_PERIOD_SUMS_H_

#include <zel/algo/algo_types.h>

#include <cstdint>

#include "algo/audio/chunk_meter.h"

namespace ZELAlgo {

/// The measurements of one period, added up.
struct PeriodSums {
    uint64_t voice_level = 0;  ///< of the voiced chunks
    uint64_t level = 0;        ///< of all chunks
    uint64_t voiced = 0;       ///< chunks, without silent ones
    uint64_t unvoiced = 0;
    uint64_t chunks = 0;  ///< all of them

    void add(const ChunkMeasurement& chunk);

    /// Writes the levels and the share of voice to `result`, where the voice level is kept as it was if it
    /// would be 0, and begins the next period.
    void close(ZELAudioResult& result);
};

/// Chunks that make a period: the integer part, within what a count can hold.
uint32_t periodChunks(const ZELAlgoConfig& config);

/// Writes the verdicts on a complete period's levels and share of voice, and its status, beside them.
void judgePeriod(const ZELAlgoConfig& config, ZELAudioResult& result);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_PERIOD_SUMS_H_
