#ifndef ZEL_SRC_EVENTS_GAPS_H_
#define ZEL_SRC_EVENTS_GAPS_H_

#include <zel/events/analyser.h>
#include <zel/events/event.h>
#include <zel/events/stream_clock.h>

#include <array>
#include <cstddef>
#include <vector>

namespace ZEL {

/// Brings the gaps of a stream's tracks into one order. Each track tells its own in order; a gap is given out
/// once every track has come as far as its start, so that what is missing in both is not found twice.
class Gaps {
  public:
    /// So many gaps wait for a track that does not come, then the oldest wait no longer.
    static constexpr size_t kMostWaiting = 1024;

    explicit Gaps(StreamTracks tracks);

    /// `track` has nothing in `span`, and has come as far as its end.
    void add(StreamTrack track, TimeSpan span);
    /// `track` has come as far as `time_s`.
    void reach(StreamTrack track, double time_s);

    /// Takes out the gaps that no other can precede, by their start, and those that are too many.
    std::vector<TimeSpan> takeSettled();
    /// How far every track has come.
    double settledTo() const;

  private:
    std::array<double, 2> reached_;  // by track; infinite for a track that does not exist
    std::vector<TimeSpan> waiting_;  // by start
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_GAPS_H_
