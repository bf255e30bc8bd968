#include "scan/audio_periods.h"

#include <numeric>

namespace zel_monitor {
namespace {

constexpr int kChunksPerSecond = 100;
constexpr uint32_t kComplete = 2;

}  // namespace

AudioPeriods::AudioPeriods(const ZELAlgo::ZELAlgoConfig& config, int sample_rate)
    : facade_(config),
      sample_rate_(sample_rate),
      chunk_(static_cast<size_t>(sample_rate / kChunksPerSecond)) {
    pending_.reserve(chunk_);
}

void AudioPeriods::feed(const Sound& sound, double time_s, const Sink& sink) {
    if (chunk_ == 0) {  // slower than a sample in 10 ms: nothing to hear
        return;
    }
    for (int i = 0; i < sound.samples; ++i) {
        if (!start_s_) {
            start_s_ = time_s + static_cast<double>(i) / sample_rate_;
        }
        const int16_t* const first = sound.data + static_cast<ptrdiff_t>(i) * sound.channels;
        const int sum = std::accumulate(first, first + sound.channels, 0);
        pending_.push_back(static_cast<int16_t>(sum / sound.channels));
        if (pending_.size() < chunk_) {
            continue;
        }
        ZELAlgo::ZELAudioResult result{};
        facade_.detectAudio({.sample_rate = static_cast<uint32_t>(sample_rate_),
                             .samples = static_cast<uint32_t>(chunk_),
                             .channels = 1,
                             .data = pending_.data()},
                            result);
        pending_.clear();
        if (result.status == kComplete) {
            sink({*start_s_, time_s + static_cast<double>(i + 1) / sample_rate_}, result);
            start_s_.reset();
        }
    }
}

void AudioPeriods::skipTo(double time_s) {
    if (start_s_) {
        start_s_ = time_s;
    }
}

}  // namespace zel_monitor
