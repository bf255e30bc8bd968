#ifndef ZEL_SRC_JUDGES_FRAME_METER_H_
#define ZEL_SRC_JUDGES_FRAME_METER_H_

#include <cstddef>
#include <cstdint>
#include <optional>

#include "judges/cells.h"
#include "judges/flat_steps.h"
#include "judges/frame_planes.h"
#include "judges/grid_kernels.h"
#include "judges/loss_judge.h"

namespace ZELJudges {

/// What the judges read of one frame in place of its samples, so that they may judge it when these are gone.
struct MeasuredFrame {
    uint32_t width = 0;  ///< of the luma
    uint32_t height = 0;
    Cells cells;
    bool has_edges = false;    ///< the edges of some frames of a second are enough
    EdgeProfile column_edges;  ///< by column; what an earlier frame left, if this one has no edges
    EdgeProfile row_edges;     ///< by row, the same
    FlatSteps flat_steps;      ///< the same
};

/// Measures the frames of one stream in the order in which they are fed. One thread at a time.
class FrameMeter {
  public:
    /// `time_s` is the frame's timestamp, whatever its origin. Takes memory only when the size has changed.
    void measure(const FramePlanes& frame, double time_s, MeasuredFrame& measured);

  private:
    bool wantsEdges(double time_s);

    std::optional<double> looked_s_;  // when edges were looked for last
    size_t passed_over_ = 0;          // frames since then
    Strips strips_;
    FlatStepCounter flat_steps_;
    BlankLuma blank_luma_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_FRAME_METER_H_
