#include "algo/audio/period_sums.h"

#include <algorithm>
#include <limits>

namespace ZELAlgo {
namespace {

uint64_t atLeastOne(uint64_t count) {
    return std::max<uint64_t>(count, 1);
}

/// A level as the thresholds see it.
float asSigned(uint32_t level) {
    return static_cast<float>(static_cast<int32_t>(level));
}

}  // namespace

void PeriodSums::add(const ChunkMeasurement& chunk) {
    ++chunks;
    if (chunk.silent) {
        return;
    }
    if (chunk.voiced) {
        ++voiced;
        voice_level += chunk.level;
    } else {
        ++unvoiced;
    }
    level += chunk.level;
}

void PeriodSums::close(ZELAudioResult& result) {
    const uint64_t voice_mean = voice_level / atLeastOne(voiced);
    if (voice_mean >= 1) {
        result.voice_level_longtime = static_cast<uint32_t>(voice_mean);
    }
    result.voice_scale_longtime =
        static_cast<float>(voiced) / static_cast<float>(atLeastOne(voiced + unvoiced));
    result.audio_level = static_cast<uint32_t>(level / atLeastOne(chunks));
    *this = {};
}

uint32_t periodChunks(const ZELAlgoConfig& config) {
    const double chunks = config.longtime_period_s * 100.0;
    constexpr double kMost = std::numeric_limits<uint32_t>::max();
    return chunks > 0.0 ? static_cast<uint32_t>(std::min(chunks, kMost)) : 0;
}

void judgePeriod(const ZELAlgoConfig& config, ZELAudioResult& result) {
    const float voice_level = asSigned(result.voice_level_longtime);
    result.is_mute = config.mute_level >= asSigned(result.audio_level) ? 1 : 0;
    result.is_low_voicelevel = config.low_voice_level >= voice_level ? 1 : 0;
    result.is_high_voicelevel = voice_level >= config.high_voice_level ? 1 : 0;
    result.is_novoice_longtime = config.novoice_scale >= result.voice_scale_longtime ? 1 : 0;
    result.status = kAudioComplete;
}

}  // namespace ZELAlgo
