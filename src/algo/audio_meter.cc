#include "algo/audio_meter.h"

#include <algorithm>
#include <new>

namespace ZELAlgo {

AudioMeter::AudioMeter(uint32_t sample_rate) : sample_rate_(sample_rate) {
    if (!meter_.create(sample_rate)) {
        throw std::bad_alloc();
    }
}

void AudioMeter::measure(const int16_t* samples, size_t count, std::vector<MeasuredChunk>& chunks) {
    chunks.clear();
    const size_t chunk = meter_.chunk();
    if (chunk == 0 || sample_rate_ > kMostHz) {
        return;
    }
    size_t at = 0;
    if (!pending_.empty()) {
        at = std::min(chunk - pending_.size(), count);
        pending_.insert(pending_.end(), samples, samples + at);
        if (pending_.size() < chunk) {
            return;
        }
        chunks.push_back({at, meter_.measure(pending_.data())});
        pending_.clear();
    }
    for (; count - at >= chunk; at += chunk) {
        chunks.push_back({at + chunk, meter_.measure(samples + at)});
    }
    pending_.assign(samples + at, samples + count);
}

AudioPeriods::AudioPeriods(const ZELAlgoConfig& config, uint32_t sample_rate)
    : config_(config), sample_rate_(sample_rate) {}

void AudioPeriods::add(const std::vector<MeasuredChunk>& chunks, size_t samples, double time_s,
                       const Sink& sink) {
    const auto time_of = [&](size_t sample) { return time_s + static_cast<double>(sample) / sample_rate_; };
    const uint32_t period_chunks = periodChunks(config_);
    size_t at = 0;
    for (const MeasuredChunk& chunk : chunks) {
        if (!start_s_) {
            start_s_ = time_of(at);
        }
        sums_.add(chunk.measured);
        at = chunk.end;
        if (sums_.chunks >= period_chunks) {
            ZELAudioResult result{};
            sums_.close(result);
            judgePeriod(config_, result);
            const double start_s = *start_s_;
            start_s_.reset();
            sink(start_s, std::max(time_of(at), start_s), result);  // later frames may overlap earlier ones
        }
    }
    if (!start_s_ && at < samples) {
        start_s_ = time_of(at);
    }
}

void AudioPeriods::skipTo(double time_s) {
    if (start_s_) {
        start_s_ = time_s;
    }
}

}  // namespace ZELAlgo
