#ifndef ZEL_TOOLS_WATCH_PACER_H_
#define ZEL_TOOLS_WATCH_PACER_H_

#include <atomic>
#include <chrono>
#include <optional>

namespace zel_monitor {

/// Ties stream time to wall time, as a player does: an item is due when as much time has passed since the
/// start as lies between the two in the stream, divided by the speed. After a long gap in the stream, and
/// when the input could not keep up, the two are tied anew instead of waiting or hurrying.
class Pacer {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit Pacer(double speed) : speed_(speed) {}

    /// When the item at `stream_time` seconds, which is at hand `now`, is due.
    TimePoint due(double stream_time, TimePoint now);

    /// How late items were, in all, when the input could not keep up.
    std::chrono::duration<double> stalled() const { return stalled_; }

  private:
    struct Tie {
        double stream_time;
        TimePoint wall_time;
    };

    double speed_;
    std::optional<Tie> tie_;
    double latest_ = 0;  ///< furthest stream time so far
    std::chrono::duration<double> stalled_{0};
};

/// Sleeps until `due`; returns early, within a tenth of a second, once `stop` is set.
void sleepUntil(Pacer::TimePoint due, const std::atomic<bool>& stop);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_PACER_H_
