#ifndef ZEL_EVENTS_EVENT_H_
#define ZEL_EVENTS_EVENT_H_

#include <zel/events/kinds.h>

#include <optional>

namespace ZEL {

/// Timestamps are sums of rounded fractions; a microsecond decides nothing.
inline constexpr double kSlackS = 1e-6;

/// A stretch of stream time: seconds on the clock of the stream's first timestamps, which runs on where later
/// ones jump.
struct TimeSpan {
    double start_s = 0.0;
    double end_s = 0.0;

    double length() const { return end_s - start_s; }
    double middle() const { return (start_s + end_s) / 2.0; }
};

/// A stretch in which the fault was there less than half of the time is not one event.
inline constexpr double kLeastShare = 0.5;

/// What was measured of a fault, in the unit of its kind, and the limit that it was held against.
struct Evidence {
    double value = 0.0;
    double limit = 0.0;
};

/// One stretch of a stream in which something was wrong.
struct Event {
    EventKind kind = EventKind::kBlack;
    TimeSpan span;
    double share = 1.0;        ///< share of the stretch in which the fault was measured, 0 to 1
    bool open_at_end = false;  ///< the fault was still there when the stream ended
    /// The mean over the time in which the fault was measured. Where that was done in two ways, the one that
    /// told of it longer.
    std::optional<Evidence> evidence = {};

    /// Whether it is to be reported. An event that was raised does not count in the end if the fault thinned
    /// out so much that it was there less than half of the time.
    bool counts() const { return share >= kLeastShare; }
};

}  // namespace ZEL

#endif  // ZEL_EVENTS_EVENT_H_
