#ifndef ZEL_SRC_ALGO_AUDIO_METER_H_
#define ZEL_SRC_ALGO_AUDIO_METER_H_

#include <zel/algo/algo_types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "algo/audio/chunk_meter.h"
#include "algo/audio/period_sums.h"
#include "algo/audio/sample_ring.h"

namespace ZELAlgo {

/// The measurement of a chunk that ends within an audio frame, with the chunk's end in samples of the frame.
struct MeasuredChunk {
    size_t end;
    ChunkMeasurement measured;
};

/// Measures one-channel sound of one sample rate, in frames of any length, once for all periods that it is to
/// be judged by. Sound slower than 100 Hz or faster than kMostHz is not heard, as by the audio handle.
class AudioMeter {
  public:
    static constexpr uint32_t kMostHz = SampleRing::kCapacity * ChunkMeter::kChunksPerSecond - 1;

    /// The rate is at least 1. Throws std::bad_alloc.
    explicit AudioMeter(uint32_t sample_rate);

    uint32_t sampleRate() const { return sample_rate_; }

    /// Takes in the next frame, and writes the measurements of the chunks that end in it to `chunks`.
    void measure(const int16_t* samples, size_t count, std::vector<MeasuredChunk>& chunks);

  private:
    uint32_t sample_rate_;
    ChunkMeter meter_;
    std::vector<int16_t> pending_;  // less than a chunk, from the frames before
};

/// Sums what a meter measured to periods of one length, and judges them.
class AudioPeriods {
  public:
    /// From `start_s` to `end_s` of the stream.
    using Sink = std::function<void(double start_s, double end_s, const ZELAudioResult& result)>;

    /// The period's length and the thresholds are those of `config`.
    AudioPeriods(const ZELAlgoConfig& config, uint32_t sample_rate);

    /// Takes in a frame of `samples` samples that starts at `time_s` of the stream, and what was measured of
    /// it.
    void add(const std::vector<MeasuredChunk>& chunks, size_t samples, double time_s, const Sink& sink);

    /// Sound is missing before `time_s`: the period at hand begins there.
    void skipTo(double time_s);

  private:
    ZELAlgoConfig config_;
    uint32_t sample_rate_;
    PeriodSums sums_;
    std::optional<double> start_s_;  // of the period at hand, once there is sound in it
};

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_METER_H_
