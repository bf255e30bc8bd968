#ifndef ZEL_SRC_JUDGES_CLIPPING_JUDGE_H_
#define ZEL_SRC_JUDGES_CLIPPING_JUDGE_H_

#include <cstddef>
#include <span>
#include <vector>

#include "judges/sound_meter.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Tells stretches of clipped sound: those between the first and the last clipped chunk of a second in which
/// enough samples are clipped. Music that is untouched or properly limited stays below 0.003 in every second;
/// driven by 12 dB or more it is above 0.005. Settled a second late. One thread at a time.
class ClippingJudge {
  public:
    /// The next chunk. Returns what is settled, valid until the next call: the value is the share of clipped
    /// samples in the worst second around, the limit how much is too much.
    std::span<const Stretch> feed(const SoundChunk& chunk);

    /// The end of the stream: settles the rest and begins anew.
    std::span<const Stretch> finish();

  private:
    struct Chunk {
        Stretch stretch;
        float clipped;
    };

    void settleUpTo(double time_s);
    void judge();

    std::vector<Chunk> window_;  // the last second, not settled
    std::vector<Stretch> settled_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_CLIPPING_JUDGE_H_
