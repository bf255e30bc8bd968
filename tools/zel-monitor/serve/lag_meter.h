#ifndef ZEL_TOOLS_SERVE_LAG_METER_H_
#define ZEL_TOOLS_SERVE_LAG_METER_H_

#include <optional>

namespace zel_monitor {

/// How far a reader is behind what its input holds ready. What an input says of time is its own business, so
/// the reader is taken to be on time whenever it had to wait for the input, or was never as quick before.
class LagMeter {
  public:
    /// An item of `stream_s` seconds of stream time is at hand at `now_s`, after the input took `took_s`
    /// seconds to give it. Seconds behind.
    double update(double stream_s, double now_s, double took_s) {
        const double offset_s = now_s - stream_s;
        if (!on_time_s_ || took_s >= kWaitS || offset_s < *on_time_s_) {
            on_time_s_ = offset_s;
        }
        return offset_s - *on_time_s_;
    }

  private:
    static constexpr double kWaitS = 0.25;  // longer than a frame takes, shorter than an input that stalls

    std::optional<double> on_time_s_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_LAG_METER_H_
