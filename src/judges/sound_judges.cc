#include "judges/sound_judges.h"

namespace ZELJudges {
namespace {

void append(std::vector<Stretch>& all, std::span<const Stretch> some) {
    all.insert(all.end(), some.begin(), some.end());
}

}  // namespace

SoundJudges::Settled SoundJudges::feed(std::span<const SoundPiece> pieces, size_t channels,
                                       uint32_t sample_rate, double time_s) {
    clear();
    judge(chunker_.feed(pieces, channels, sample_rate, time_s));
    return settled();
}

SoundJudges::Settled SoundJudges::finish() {
    clear();
    judge(chunker_.finish());
    append(clipping_, clipping_judge_.finish());
    append(dead_channel_, dead_channel_judge_.finish());
    append(antiphase_, antiphase_judge_.finish());
    return settled();
}

void SoundJudges::clear() {
    clipping_.clear();
    dead_channel_.clear();
    antiphase_.clear();
}

void SoundJudges::judge(std::span<const SoundChunk> chunks) {
    for (const SoundChunk& chunk : chunks) {
        append(clipping_, clipping_judge_.feed(chunk));
        append(dead_channel_, dead_channel_judge_.feed(chunk));
        append(antiphase_, antiphase_judge_.feed(chunk));
    }
}

}  // namespace ZELJudges
