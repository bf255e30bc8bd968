#ifndef ZEL_SRC_JUDGES_PAIR_JUDGE_H_
#define ZEL_SRC_JUDGES_PAIR_JUDGE_H_

#include <optional>
#include <span>
#include <vector>

#include "judges/sound_meter.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// What one chunk of the left and the right channel says of a fault.
struct PairVerdict {
    bool present;
    float value;  ///< see the function that measured it
    float limit;
};

/// Left and right are of opposite phase, so that a mono downmix loses them: the value is their correlation,
/// -1 to 1, the limit how low it may be. None of a chunk that is too quiet to be judged.
std::optional<PairVerdict> antiphaseOf(const SoundChunk& chunk);

/// Left or right is dead, 40 dB below the other: the value is how many dB it lies below (120 at most), the
/// limit how many it may. Channels beyond these two are not judged, as a centre, a bass or a surround channel
/// may well be silent. None of a chunk that is too quiet to be judged.
std::optional<PairVerdict> deadChannelOf(const SoundChunk& chunk);

/// Tells stretches of a fault of left and right. Chunks that are too quiet to be judged are like those around
/// them if these agree and the pause is short, else without the fault. One thread at a time.
class PairJudge {
  public:
    using Measure = std::optional<PairVerdict> (*)(const SoundChunk& chunk);

    explicit PairJudge(Measure measure) : measure_(measure) {}

    /// The next chunk. Returns what is settled, valid until the next call.
    std::span<const Stretch> feed(const SoundChunk& chunk);

    /// The end of the stream: settles the rest and begins anew.
    std::span<const Stretch> finish();

  private:
    void settle(const Stretch& stretch);
    void settlePause(bool present);

    Measure measure_;
    Stretch last_{};
    double pause_end_s_ = 0.0;  // where the pause after the last stretch has come to
    std::vector<Stretch> settled_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_PAIR_JUDGE_H_
