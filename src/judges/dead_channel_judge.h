#ifndef ZEL_SRC_JUDGES_DEAD_CHANNEL_JUDGE_H_
#define ZEL_SRC_JUDGES_DEAD_CHANNEL_JUDGE_H_

#include <span>

#include "judges/quiet_bridge.h"
#include "judges/sound_meter.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Tells stretches in which the left or the right channel is dead: 40 dB below the other. Channels beyond
/// these two are not judged, as a centre, a bass or a surround channel may well be silent. One thread at a
/// time.
class DeadChannelJudge {
  public:
    /// The next chunk. Returns what is settled, valid until the next call: the value is how many dB one
    /// channel lies below the other (120 at most), the limit how many it may.
    std::span<const Stretch> feed(const SoundChunk& chunk);

    /// The end of the stream: settles the rest and begins anew.
    std::span<const Stretch> finish();

  private:
    QuietBridge bridge_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_DEAD_CHANNEL_JUDGE_H_
