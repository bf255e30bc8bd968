#ifndef ZEL_TOOLS_WATCH_PATIENCE_H_
#define ZEL_TOOLS_WATCH_PATIENCE_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "cli/console.h"

namespace zel_monitor {

/// Looks at the clock while an input keeps its reader waiting: tells people of it, and gives the input up
/// after a time-out or at a stop. On a thread of its own, since the reader is caught in the input.
class Patience {
  public:
    /// Of seconds; then people are told.
    static constexpr double kToldAfterS = 5.0;

    /// `console` and `stop` outlive this object. `name` is what people know the input by.
    Patience(Console& console, const std::string& name, const std::atomic<bool>& stop);
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;
    ~Patience();

    /// Set once the input is to be given up: what a MediaSource takes as `interrupted`.
    const std::atomic<bool>& givenUp() const { return given_up_; }

    /// A wait begins, for ever without a time-out.
    void begin(std::optional<double> timeout_s);
    /// It is over; whether it was given up because it took too long.
    bool end();
    /// Whatever happened is forgotten, for another attempt.
    void reset();

  private:
    using TimePoint = std::chrono::steady_clock::time_point;

    void run();
    void look(TimePoint now);

    Console& console_;
    const std::string name_;
    const std::atomic<bool>& stop_;
    std::atomic<bool> given_up_{false};
    std::mutex mutex_;
    std::condition_variable ended_;
    std::optional<TimePoint> since_;  // guarded by mutex_, like all below
    std::optional<double> timeout_s_;
    bool told_ = false;
    bool timed_out_ = false;
    bool ending_ = false;
    std::thread thread_;  // last: uses every field above
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_PATIENCE_H_
