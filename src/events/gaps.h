#ifndef ZEL_SRC_EVENTS_GAPS_H_
#define ZEL_SRC_EVENTS_GAPS_H_

#include <zel/events/event.h>
#include <zel/events/stream_clock.h>

#include <array>
#include <cstddef>
#include <vector>

namespace ZEL {

/// Which tracks a stream has.
struct StreamTracks {
    bool video = true;
    bool audio = true;
    bool still_picture = false;  ///< the video track is said to be one picture, such as a cover
};

/// Brings the gaps of a stream's tracks into one order. Each track tells its own in order; a gap is given out
/// once every track has come as far as its start, so that what is missing in both is not found twice.
class Gaps {
  public:
    explicit Gaps(StreamTracks tracks);

    /// `track` has nothing in `span`, and has come as far as its end.
    void add(StreamTrack track, TimeSpan span);
    /// `track` has come as far as `time_s`.
    void reach(StreamTrack track, double time_s);

    /// Takes out the gaps that no other can precede, by their start.
    std::vector<TimeSpan> takeSettled();
    /// How far every track has come.
    double settledTo() const;

  private:
    std::array<double, 2> reached_;  // by track; infinite for a track that does not exist
    std::vector<TimeSpan> waiting_;  // by start
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_GAPS_H_
