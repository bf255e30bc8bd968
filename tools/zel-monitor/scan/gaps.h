#ifndef ZEL_TOOLS_SCAN_GAPS_H_
#define ZEL_TOOLS_SCAN_GAPS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "scan/event.h"

namespace zel_monitor::scan {

enum class Track : uint8_t { kVideo, kAudio };

/// Which tracks a stream has.
struct Tracks {
    bool video = true;
    bool audio = true;
    bool still_picture = false;  ///< the video track is said to be one picture, such as a cover
};

/// Brings the gaps of a stream's tracks into one order. Each track tells its own in order; a gap is given out
/// once every track has come as far as its start, so that what is missing in both is not found twice.
class Gaps {
  public:
    explicit Gaps(Tracks tracks);

    /// `track` has nothing in `span`, and has come as far as its end.
    void add(Track track, Span span);
    /// `track` has come as far as `time_s`.
    void reach(Track track, double time_s);

    /// Takes out the gaps that no other can precede, by their start.
    std::vector<Span> takeSettled();
    /// How far every track has come.
    double settledTo() const;

  private:
    std::array<double, 2> reached_;  // by track; infinite for a track that does not exist
    std::vector<Span> waiting_;      // by start
};

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_GAPS_H_
