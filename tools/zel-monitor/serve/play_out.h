#ifndef ZEL_TOOLS_SERVE_PLAY_OUT_H_
#define ZEL_TOOLS_SERVE_PLAY_OUT_H_

#include <algorithm>
#include <optional>

namespace zel_monitor {

/// For how long what has come lasts a viewer. Some inputs come a segment of seconds at a time, and are silent
/// until the next one is there: that is no loss of the signal. All times in seconds.
class PlayOut {
  public:
    /// An item at `stream_s` of stream time is at hand at `now_s`, after the input took `took_s` to give it.
    /// When it is to be shown: now, or later if it was stored.
    double update(double stream_s, double now_s, double took_s) {
        if (!tie_ || took_s >= kWaitS) {
            refilled_ = tie_.has_value();
            tie_ = {stream_s, now_s};
        }
        const double due_s = tie_->now_s + stream_s - tie_->stream_s;
        // Two clocks are never quite as fast, so that they are tied anew now and then.
        if (due_s < now_s || (due_s < now_s + kStoredS && now_s > tie_->now_s + kTieLastsS)) {
            tie_ = {stream_s, now_s};
        }
        live_ = refilled_ || due_s < now_s + kStoredS;
        return std::clamp(due_s, now_s, now_s + kMostStoredS);
    }

    /// Whether the last item tells that somebody sends now. What a dead sender left behind comes all at once
    /// to whoever connects, and then no more.
    bool isLive() const { return live_; }

  private:
    static constexpr double kWaitS = 0.25;
    static constexpr double kStoredS = 1.0;
    static constexpr double kMostStoredS = 60.0;
    static constexpr double kTieLastsS = 10.0;

    struct Tie {
        double stream_s;
        double now_s;
    };
    std::optional<Tie> tie_;
    bool refilled_ = false;  ///< something came after a wait
    bool live_ = false;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_PLAY_OUT_H_
