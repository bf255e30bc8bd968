#ifndef ZEL_SRC_JUDGES_ANTIPHASE_JUDGE_H_
#define ZEL_SRC_JUDGES_ANTIPHASE_JUDGE_H_

#include <span>

#include "judges/quiet_bridge.h"
#include "judges/sound_meter.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Tells stretches in which left and right are of opposite phase, so that a mono downmix loses them. One
/// thread at a time.
class AntiphaseJudge {
  public:
    /// The next chunk. Returns what is settled, valid until the next call: the value is the correlation of
    /// left and right, -1 to 1, the limit how low it may be.
    std::span<const Stretch> feed(const SoundChunk& chunk);

    /// The end of the stream: settles the rest and begins anew.
    std::span<const Stretch> finish();

  private:
    QuietBridge bridge_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_ANTIPHASE_JUDGE_H_
