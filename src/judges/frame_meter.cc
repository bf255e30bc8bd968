#include "judges/frame_meter.h"

#include "judges/black_judge.h"
#include "judges/loss_judge.h"

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-3;
constexpr double kLookS = 0.155;        // from look to look at least: every fourth frame at 25 a second
constexpr size_t kMostPassedOver = 15;  // however little the timestamps grow

}  // namespace

void FrameMeter::measure(const FramePlanes& frame, double time_s, MeasuredFrame& measured) {
    measured.width = frame.width;
    measured.height = frame.height;
    measured.has_edges = wantsEdges(time_s);
    measureLuma(frame, measured.cells, measured.has_edges ? &strips_ : nullptr);
    const bool may_be_lost = blank_luma_.turnsUp(measured.cells);
    const bool may_be_black = BlackJudge::needsChroma(measured.cells);
    if (may_be_lost || may_be_black) {
        measureChroma(frame, measured.cells);
    }
    if (measured.has_edges) {
        measured.column_edges.clear(strips_.width);
        measured.row_edges.clear(strips_.height / 8 * 8);
        addColumnEdges(strips_, measured.column_edges);
        addRowEdges(strips_, measured.row_edges);
        measured.flat_steps = flat_steps_.count(measured.cells);
    }
}

bool FrameMeter::wantsEdges(double time_s) {
    const bool wants = !looked_s_ || time_s < *looked_s_ || time_s >= *looked_s_ + kLookS - kSlackS ||
                       passed_over_ == kMostPassedOver;
    if (wants) {
        looked_s_ = time_s;
    }
    passed_over_ = wants ? 0 : passed_over_ + 1;
    return wants;
}

}  // namespace ZELJudges
