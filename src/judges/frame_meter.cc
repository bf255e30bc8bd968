#include "judges/frame_meter.h"

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-3;
constexpr double kLookS = 0.075;        // from look to look at least: every second frame at 25 a second
constexpr size_t kMostPassedOver = 15;  // however little the timestamps grow

}  // namespace

void FrameMeter::measure(const FramePlanes& frame, double time_s, MeasuredFrame& measured) {
    measured.width = frame.width;
    measured.height = frame.height;
    measured.has_edges = wantsEdges(time_s);
    ZELJudges::measure(frame, measured.cells, measured.has_edges ? &strips_ : nullptr);
    if (measured.has_edges) {
        measured.column_edges.clear(strips_.width);
        measured.row_edges.clear(strips_.height / 8 * 8);
        addColumnEdges(strips_, measured.column_edges);
        addRowEdges(strips_, measured.row_edges);
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
