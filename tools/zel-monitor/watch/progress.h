#ifndef ZEL_TOOLS_WATCH_PROGRESS_H_
#define ZEL_TOOLS_WATCH_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zel_monitor {

/// The status line of a running stream: a bar if the duration is known, position, speed over the last
/// seconds, what was fed.
class WatchProgress {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit WatchProgress(std::optional<double> duration) : duration_(duration) {}

    /// A new text, at most ten times a second. `position` is stream time in seconds.
    std::optional<std::string> update(TimePoint now, double position, uint64_t pictures, uint64_t sounds);

  private:
    struct Mark {
        TimePoint time;
        double position;
    };

    std::optional<double> duration_;
    std::optional<TimePoint> last_update_;
    std::optional<Mark> mark_;  ///< speed is measured from here
    double speed_ = 0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_PROGRESS_H_
