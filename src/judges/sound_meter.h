#ifndef ZEL_SRC_JUDGES_SOUND_METER_H_
#define ZEL_SRC_JUDGES_SOUND_METER_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ZELJudges {

/// Interleaved signed 16-bit samples, borrowed for a call.
struct SoundBlock {
    const int16_t* samples;
    size_t frames;  ///< samples of each channel
    size_t channels;
    uint32_t sample_rate;  ///< Hz
};

/// What the sound judges know of a quarter of a second, before any mix-down.
struct SoundChunk {
    double start_s = 0.0;
    double end_s = 0.0;
    /// Share of samples in runs of three or more at full scale of one sign, in the channel that has most.
    float clipped = 0.0F;
    bool has_pair = false;  ///< whether there are a left and a right channel, the first two
    double left = 0.0;      ///< mean square, where full scale is 1
    double right = 0.0;
    double product = 0.0;  ///< mean of left times right
};

/// Cuts the sound of a stream into chunks. One thread at a time.
class SoundMeter {
  public:
    /// The next block, heard from `time_s` on. Returns the chunks that it completes, valid until the next
    /// call. Another format, a gap or an earlier time ends the chunk in work.
    std::span<const SoundChunk> feed(const SoundBlock& block, double time_s);

    /// The end of the stream: the chunk in work, as short as it is.
    std::span<const SoundChunk> finish();

  private:
    /// Samples at full scale of one sign that a channel has just had.
    struct Run {
        int sign = 0;
        size_t length = 0;
        size_t clipped = 0;  ///< samples of the chunk in such runs
    };

    void begin(const SoundBlock& block, double time_s);
    void measure(const int16_t* samples, size_t frames);
    void closeChunk();

    std::vector<Run> runs_;  // one per channel
    uint32_t sample_rate_ = 0;
    double start_s_ = 0.0;  // of the chunk in work
    size_t frames_ = 0;     // in it
    int64_t left_ = 0;
    int64_t right_ = 0;
    int64_t product_ = 0;
    std::vector<SoundChunk> chunks_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_SOUND_METER_H_
