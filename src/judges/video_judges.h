#ifndef ZEL_SRC_JUDGES_VIDEO_JUDGES_H_
#define ZEL_SRC_JUDGES_VIDEO_JUDGES_H_

#include <span>

#include "judges/black_judge.h"
#include "judges/block_judge.h"
#include "judges/either.h"
#include "judges/exposure_judge.h"
#include "judges/frame_meter.h"
#include "judges/freeze_judge.h"
#include "judges/loss_judge.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// All judges of the frames of one stream, which share what a FrameMeter measured of a frame. A steady stream
/// allocates nothing large. One thread at a time.
class VideoJudges {
  public:
    /// What a call has settled, judge by judge; valid until the next one.
    struct Settled {
        std::span<const Stretch> black;
        std::span<const Stretch> block;  ///< a coding grid all over, or areas that were never decoded
        std::span<const Stretch> freeze;
        std::span<const Stretch> under;
        std::span<const Stretch> over;
    };

    /// `freeze_min_s`: shorter runs are not frozen, seconds.
    explicit VideoJudges(double freeze_min_s = 2.0) : freeze_(freeze_min_s) {}

    void setFreezeMinimum(double min_s) { freeze_.setMinimum(min_s); }

    /// The next frame, shown from `time_s` for `duration_s`. Times ascend; where they do not, or where the
    /// size changes, the judges begin anew.
    Settled feed(const MeasuredFrame& frame, double time_s, double duration_s);

    /// The end of the stream: settles the rest and begins anew.
    Settled finish();

  private:
    BlackJudge black_;
    BlockJudge grid_;
    LossJudge loss_;
    Either block_;
    FreezeJudge freeze_;
    ExposureJudge exposure_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_VIDEO_JUDGES_H_
