#ifndef ZEL_TOOLS_SERVE_JUMP_BRIDGE_H_
#define ZEL_TOOLS_SERVE_JUMP_BRIDGE_H_

#include <algorithm>
#include <cmath>

#include "input/per_track.h"

namespace zel_monitor {

/// Takes jumps ahead out of the stream time of a live input. In a file a gap in the timestamps is a gap;
/// where frames go on coming while their timestamps leap, as when a sender is set to another clock, none is
/// missing. All times in seconds.
class JumpBridge {
  public:
    /// An item of `track` at `time_s`, `length_s` long, is at hand at `now_s`. Gives the time at which it
    /// follows: its own, less the gaps of both tracks that were longer by `most_gap_s` than it took them to
    /// pass.
    double place(StreamTrack track, double time_s, double length_s, double now_s, double most_gap_s) {
        Lane& lane = lanes_[track];
        const double beyond_s = lanes_[siblingOf(track)].leapt_s;
        const double gap_s = time_s - lane.leapt_s - lane.end_s;
        // Both tracks leap, one a little before the other.
        if (gap_s > kLeastGapS && std::abs(time_s - beyond_s - lane.end_s) < gap_s) {
            lane.leapt_s = beyond_s;
        }
        const double ahead_s = time_s - lane.leapt_s - reached_s_;
        if (any_ && ahead_s - (now_s - reached_at_s_) > most_gap_s) {
            lane.leapt_s += ahead_s;
        }
        lane.start_s = std::max(time_s - lane.leapt_s, lane.start_s);
        lane.end_s = lane.start_s + length_s;
        if (!any_ || lane.end_s > reached_s_) {
            reached_s_ = lane.end_s;
            reached_at_s_ = now_s;
        }
        any_ = true;
        return lane.start_s;
    }

  private:
    static constexpr double kLeastGapS = 0.5;

    struct Lane {
        double leapt_s = 0.0;  ///< in all
        double start_s = 0.0;  ///< of the last item
        double end_s = 0.0;
    };
    PerTrack<Lane> lanes_{};
    bool any_ = false;
    double reached_s_ = 0.0;
    double reached_at_s_ = 0.0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_JUMP_BRIDGE_H_
