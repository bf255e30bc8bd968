#include "events/sound_sights.h"

#include <zel/events/analyser.h>

#include <cmath>

namespace ZEL {
namespace {

constexpr double kMostJitterS = 0.05;  // between audio frames that follow one another

}  // namespace

SoundSights::SoundSights()
    : speech_(EventAnalyser::detectorConfig().low_voice_level,
              EventAnalyser::detectorConfig().high_voice_level) {}

const std::vector<Sighting>& SoundSights::audio(const MeasuredAudio& audio, double start_s) {
    settled_.clear();
    take(judges_.feed(audio.pieces, audio.channels, audio.sample_rate, start_s));
    const double chunk_s = 1.0 / ZELAlgo::ChunkMeter::kChunksPerSecond;
    for (const ZELAlgo::MeasuredChunk& chunk : audio.chunks) {
        const double end_s = start_s + static_cast<double>(chunk.end) / audio.sample_rate;
        // Rounded timestamps must not tear speech apart.
        const bool follows = std::abs(end_s - chunk_s - heard_s_) <= kMostJitterS && end_s > heard_s_;
        take(speech_.feed({.start_s = follows ? heard_s_ : end_s - chunk_s,
                           .end_s = end_s,
                           .voiced = chunk.measured.voiced,
                           .level = static_cast<float>(chunk.measured.level)}));
        heard_s_ = end_s;
    }
    return settled_;
}

Sighting SoundSights::silence(TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    return {EventKind::kMute, period, sightOf(result.is_mute != 0),
            Evidence{static_cast<double>(result.audio_level), EventAnalyser::detectorConfig().mute_level}};
}

const std::vector<Sighting>& SoundSights::finish() {
    settled_.clear();
    take(judges_.finish());
    take(speech_.finish());
    return settled_;
}

void SoundSights::take(const ZELJudges::SoundJudges::Settled& settled) {
    append(settled_, EventKind::kClipping, settled.clipping);
    append(settled_, EventKind::kDeadChannel, settled.dead_channel);
    append(settled_, EventKind::kAntiphase, settled.antiphase);
}

void SoundSights::take(const ZELJudges::SpeechJudge::Settled& settled) {
    append(settled_, EventKind::kNoVoice, settled.no_voice);
    append(settled_, EventKind::kLowVoice, settled.low_voice);
    append(settled_, EventKind::kHighVoice, settled.high_voice);
}

}  // namespace ZEL
