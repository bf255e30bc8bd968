#include "judges/sound_meter.h"

#include <algorithm>
#include <cmath>

namespace ZELJudges {
namespace {

constexpr double kChunkS = 0.25;
constexpr double kMostGapS = 0.05;  // between blocks that follow one another
constexpr int kFullScale = 32760;   // coders miss the last few steps
constexpr size_t kShortestRun = 3;
constexpr double kSquareOfFullScale = 32768.0 * 32768.0;

}  // namespace

std::span<const SoundChunk> SoundMeter::feed(const SoundBlock& block, double time_s) {
    chunks_.clear();
    if (block.frames == 0 || block.channels == 0 || block.sample_rate == 0) {
        return chunks_;
    }
    const double expected_s = start_s_ + static_cast<double>(frames_) / sample_rate_;
    if (block.channels != runs_.size() || block.sample_rate != sample_rate_ ||
        std::abs(time_s - expected_s) > kMostGapS) {
        closeChunk();
        runs_.assign(block.channels, {});
        sample_rate_ = block.sample_rate;
        start_s_ = time_s;
    }
    const auto whole = std::max<size_t>(1, static_cast<size_t>(kChunkS * sample_rate_));
    for (size_t done = 0; done < block.frames;) {
        const size_t part = std::min(block.frames - done, whole - frames_);
        measure(block.samples + done * block.channels, part);
        done += part;
        if (frames_ == whole) {
            closeChunk();
        }
    }
    return chunks_;
}

std::span<const SoundChunk> SoundMeter::finish() {
    chunks_.clear();
    closeChunk();
    runs_.clear();
    return chunks_;
}

void SoundMeter::measure(const int16_t* samples, size_t frames) {
    const size_t channels = runs_.size();
    for (size_t channel = 0; channel < channels; ++channel) {
        Run& run = runs_[channel];
        for (size_t i = 0; i < frames; ++i) {
            const int sample = samples[i * channels + channel];
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
    }
    for (size_t i = 0; channels > 1 && i < frames; ++i) {
        const int64_t left = samples[i * channels];
        const int64_t right = samples[i * channels + 1];
        left_ += left * left;
        right_ += right * right;
        product_ += left * right;
    }
    frames_ += frames;
}

void SoundMeter::closeChunk() {
    if (frames_ > 0) {
        const auto frames = static_cast<double>(frames_);
        const double end_s = start_s_ + frames / sample_rate_;
        size_t clipped = 0;
        for (Run& run : runs_) {
            clipped = std::max(clipped, run.clipped);
            run.clipped = 0;
        }
        const double squares = frames * kSquareOfFullScale;
        chunks_.push_back(
            {.start_s = start_s_,
             .end_s = end_s,
             .clipped = std::min(1.0F, static_cast<float>(clipped) / static_cast<float>(frames_)),
             .has_pair = runs_.size() > 1,
             .left = static_cast<double>(left_) / squares,
             .right = static_cast<double>(right_) / squares,
             .product = static_cast<double>(product_) / squares});
        start_s_ = end_s;
    }
    frames_ = 0;
    left_ = right_ = product_ = 0;
}

}  // namespace ZELJudges
