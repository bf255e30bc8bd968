#include "judges/sound_meter.h"

#include <algorithm>
#include <cmath>

namespace ZELJudges {
namespace {

constexpr size_t kPiecesPerSecond = 20;
constexpr double kChunkS = 0.25;
constexpr double kMostGapS = 0.05;  // between frames that follow one another
constexpr int kFullScale = 32760;   // coders miss the last few steps
constexpr size_t kShortestRun = 3;
constexpr double kSquareOfFullScale = 32768.0 * 32768.0;

}  // namespace

void SoundMeter::measure(const SoundFrame& frame, std::vector<SoundPiece>& pieces) {
    if (frame.channels != runs_.size()) {
        runs_.assign(frame.channels, {});
    }
    const size_t longest = std::max<size_t>(1, frame.sample_rate / kPiecesPerSecond);
    for (size_t done = 0; done < frame.samples; done += pieces.back().samples) {
        pieces.push_back(
            measure(frame.data + done * frame.channels, std::min(frame.samples - done, longest)));
    }
}

SoundPiece SoundMeter::measure(const int16_t* data, size_t samples) {
    SoundPiece piece{.samples = samples};
    const size_t channels = runs_.size();
    for (size_t channel = 0; channel < channels; ++channel) {
        Run& run = runs_[channel];
        run.clipped = 0;
        for (size_t i = 0; i < samples; ++i) {
            const int sample = data[i * channels + channel];
            const int sign = (sample >= kFullScale ? 1 : 0) - (sample <= -kFullScale ? 1 : 0);
            if (sign == 0 || sign != run.sign) {
                run.length = 0;
                run.sign = sign;
            }
            if (sign != 0) {
                ++run.length;
                run.clipped += run.length == kShortestRun ? kShortestRun : run.length > kShortestRun ? 1 : 0;
            }
        }
        piece.clipped = std::max(piece.clipped, run.clipped);
    }
    for (size_t i = 0; channels > 1 && i < samples; ++i) {
        const int64_t left = data[i * channels];
        const int64_t right = data[i * channels + 1];
        piece.left += left * left;
        piece.right += right * right;
        piece.product += left * right;
    }
    return piece;
}

std::span<const SoundChunk> SoundChunker::feed(std::span<const SoundPiece> pieces, size_t channels,
                                               uint32_t sample_rate, double time_s) {
    chunks_.clear();
    const double expected_s = start_s_ + static_cast<double>(sum_.samples) / sample_rate_;
    if (channels != channels_ || sample_rate != sample_rate_ || std::abs(time_s - expected_s) > kMostGapS) {
        closeChunk();
        channels_ = channels;
        sample_rate_ = sample_rate;
        start_s_ = time_s;
    }
    for (const SoundPiece& piece : pieces) {
        sum_.samples += piece.samples;
        sum_.clipped += piece.clipped;
        sum_.left += piece.left;
        sum_.right += piece.right;
        sum_.product += piece.product;
        if (static_cast<double>(sum_.samples) >= kChunkS * sample_rate_) {
            closeChunk();
        }
    }
    return chunks_;
}

std::span<const SoundChunk> SoundChunker::finish() {
    chunks_.clear();
    closeChunk();
    channels_ = 0;
    return chunks_;
}

void SoundChunker::closeChunk() {
    if (sum_.samples > 0) {
        const auto samples = static_cast<double>(sum_.samples);
        const double end_s = start_s_ + samples / sample_rate_;
        const double squares = samples * kSquareOfFullScale;
        chunks_.push_back(
            {.start_s = start_s_,
             .end_s = end_s,
             .clipped = std::min(1.0F, static_cast<float>(sum_.clipped) / static_cast<float>(sum_.samples)),
             .has_pair = channels_ > 1,
             .left = static_cast<double>(sum_.left) / squares,
             .right = static_cast<double>(sum_.right) / squares,
             .product = static_cast<double>(sum_.product) / squares});
        start_s_ = end_s;
    }
    sum_ = {};
}

}  // namespace ZELJudges
