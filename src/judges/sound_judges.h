#ifndef ZEL_SRC_JUDGES_SOUND_JUDGES_H_
#define ZEL_SRC_JUDGES_SOUND_JUDGES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "judges/clipping_judge.h"
#include "judges/pair_judge.h"
#include "judges/sound_meter.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// All judges of the channels of one stream; see SpeechJudge for its words. One thread at a time.
class SoundJudges {
  public:
    /// What a call has settled, judge by judge; valid until the next one.
    struct Settled {
        std::span<const Stretch> clipping;
        std::span<const Stretch> dead_channel;
        std::span<const Stretch> antiphase;
    };

    /// What a SoundMeter measured of the next frame, which is heard from `time_s` on.
    Settled feed(std::span<const SoundPiece> pieces, size_t channels, uint32_t sample_rate, double time_s);

    /// The end of the stream: settles the rest and begins anew.
    Settled finish();

  private:
    void clear();
    void judge(std::span<const SoundChunk> chunks);
    Settled settled() const {
        return {.clipping = clipping_, .dead_channel = dead_channel_, .antiphase = antiphase_};
    }

    SoundChunker chunker_;
    ClippingJudge clipping_judge_;
    PairJudge dead_channel_judge_{&deadChannelOf};
    PairJudge antiphase_judge_{&antiphaseOf};
    std::vector<Stretch> clipping_;
    std::vector<Stretch> dead_channel_;
    std::vector<Stretch> antiphase_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_SOUND_JUDGES_H_
