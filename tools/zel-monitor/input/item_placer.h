#ifndef ZEL_TOOLS_INPUT_ITEM_PLACER_H_
#define ZEL_TOOLS_INPUT_ITEM_PLACER_H_

#include <algorithm>
#include <deque>
#include <optional>

#include "input/media_item.h"
#include "input/per_track.h"

namespace zel_monitor {

/// Turns the times of items from timestamps into stream time, by one clock for both tracks. What the clock
/// holds, because its timestamp jumps, comes a little after its sibling's items, but soon.
class ItemPlacer {
  public:
    ItemPlacer() = default;
    ItemPlacer(const ItemPlacer&) = delete;
    ItemPlacer& operator=(const ItemPlacer&) = delete;

    void take(MediaItem item);
    /// Nothing more comes.
    void finish();

    /// The next item whose place is certain.
    std::optional<MediaItem> next();

    /// Where what has been placed ends, in stream time.
    double reached() const { return std::max(ends_s_.video, ends_s_.audio); }

  private:
    void place(StreamTrack track, double start_s);
    void settleIfLate(StreamTrack track, double passed_s);

    ZEL::StreamClock clock_;
    ZEL::StreamClock::Place place_ = [this](StreamTrack track, double start_s) { place(track, start_s); };
    PerTrack<std::deque<MediaItem>> held_;
    PerTrack<double> late_s_{};  // what has passed of the sibling since the oldest item held came
    PerTrack<double> ends_s_{};
    std::deque<MediaItem> placed_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_ITEM_PLACER_H_
