#ifndef ZEL_SRC_EVENTS_FRAME_SIGHTS_H_
#define ZEL_SRC_EVENTS_FRAME_SIGHTS_H_

#include <zel/algo/algo_types.h>
#include <zel/events/event.h>

#include <vector>

#include "events/sighting.h"
#include "judges/frame_meter.h"
#include "judges/video_judges.h"

namespace ZEL {

/// What the frames of a stream show of each kind: as the judges say, and of green, which no judge knows, as
/// the detector does. A judge tells late, but each kind's sightings come in order.
class FrameSights {
  public:
    explicit FrameSights(double freeze_min_s) : judges_(freeze_min_s) {}

    void setFreezeMinimum(double min_s) { judges_.setFreezeMinimum(min_s); }

    /// The next frame and how long it was shown. Returns what is settled by it, valid until the next call.
    const std::vector<Sighting>& frame(TimeSpan shown, const ZELAlgo::ZELVideoResult& verdicts,
                                       const ZELJudges::MeasuredFrame& measured);

    /// There are no more frames: the rest.
    const std::vector<Sighting>& finish();

  private:
    void take(const ZELJudges::VideoJudges::Settled& settled);

    ZELJudges::VideoJudges judges_;
    std::vector<Sighting> settled_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_FRAME_SIGHTS_H_
