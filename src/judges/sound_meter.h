#ifndef ZEL_SRC_JUDGES_SOUND_METER_H_
#define ZEL_SRC_JUDGES_SOUND_METER_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ZELJudges {

/// Interleaved signed 16-bit samples, borrowed for a call.
struct SoundFrame {
    const int16_t* data;
    size_t samples;  ///< of each channel
    size_t channels;
    uint32_t sample_rate;  ///< Hz
};

/// What was measured of a short piece of a frame, before any mix-down.
struct SoundPiece {
    size_t samples = 0;  ///< of each channel
    /// Samples in runs of three or more at full scale of one sign, in the channel that has most.
    size_t clipped = 0;
    int64_t left = 0;  ///< sum of squares; 0 unless there are a left and a right channel, the first two
    int64_t right = 0;
    int64_t product = 0;  ///< sum of left times right
};

/// Measures the sound of a stream in the order in which it is fed, in pieces that fill its frames. One thread
/// at a time.
class SoundMeter {
  public:
    /// Appends the pieces of the next frame.
    void measure(const SoundFrame& frame, std::vector<SoundPiece>& pieces);

  private:
    /// Samples at full scale of one sign that a channel has just had.
    struct Run {
        int sign = 0;
        size_t length = 0;
        size_t clipped = 0;  ///< samples of the piece in such runs
    };

    SoundPiece measure(const int16_t* data, size_t samples);

    std::vector<Run> runs_;  // one per channel
};

/// What the sound judges know of a quarter of a second or a little more.
struct SoundChunk {
    double start_s = 0.0;
    double end_s = 0.0;
    float clipped = 0.0F;   ///< share of clipped samples
    bool has_pair = false;  ///< whether there are a left and a right channel
    double left = 0.0;      ///< mean square, where full scale is 1
    double right = 0.0;
    double product = 0.0;  ///< mean of left times right
};

/// Joins pieces to chunks once their places in the stream are known. One thread at a time.
class SoundChunker {
  public:
    /// The pieces of the next frame, heard from `time_s` on. Returns the chunks that they complete, valid
    /// until the next call. Another format, a gap or an earlier time ends the chunk in work.
    std::span<const SoundChunk> feed(std::span<const SoundPiece> pieces, size_t channels,
                                     uint32_t sample_rate, double time_s);

    /// The end of the stream: the chunk in work, as short as it is.
    std::span<const SoundChunk> finish();

  private:
    void closeChunk();

    size_t channels_ = 0;
    uint32_t sample_rate_ = 1;
    double start_s_ = 0.0;  // of the chunk in work
    SoundPiece sum_;        // of its pieces
    std::vector<SoundChunk> chunks_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_SOUND_METER_H_
