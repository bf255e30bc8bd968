#ifndef ZEL_TOOLS_SCAN_TIMELINE_H_
#define ZEL_TOOLS_SCAN_TIMELINE_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <deque>
#include <optional>
#include <utility>

namespace zel_monitor {

/// How far a track has come in stream time, and how that differs from its timestamps.
struct TrackClock {
    double shift_s = 0.0;                  ///< added to the stamps since they last jumped back
    double last_s = 0.0;                   ///< start of the item that was given last
    double expected_s = 0.0;               ///< and its end
    bool any = false;                      ///< whether one was given
    std::optional<double> back_at_s = {};  ///< where it was when its stamps jumped back last
    std::optional<double> back_to_s = {};  ///< stamp of the first item that is held since it jumps back
};

/// Makes stream time out of one track's timestamps, which may jump. Places never run backwards.
///
/// Items whose stamps jump, back or far ahead, are held until a later one tells what happened. If that one
/// goes on from before the jump, the held stamps were wrong, and their items are placed one after another as
/// if nothing had happened. Otherwise the jump holds: a jump ahead is a gap, and after a jump back the stream
/// goes on where it was. The first item's stamp is wrong if the second one's lies before it.
template <typename Item>
class Timeline {
  public:
    /// Holds no more than `most_held` items of the track whose clock is `own`; `other` is the stream's other
    /// track's. One thread drives both.
    Timeline(size_t most_held, TrackClock& own, TrackClock& other)
        : most_held_(most_held), clock_(own), other_(other) {}

    /// Takes the next item, with the timestamp `time_s` and `length_s` long, and calls `give(item, start_s)`
    /// for all whose places are certain.
    template <typename Give>
    void take(Item item, double time_s, double length_s, const Give& give) {
        if (!held_.empty()) {
            resolve(time_s, give);
        }
        held_.push_back({std::move(item), time_s, length_s});
        if (held_.size() > 1 || !clock_.any) {
            return;
        }
        if (jumpsBack(time_s)) {
            clock_.back_to_s = time_s;
        } else if (!jumpsAhead(time_s)) {
            releaseAtStamps(give);
        }
    }

    /// Gives what is still held.
    template <typename Give>
    void finish(const Give& give) {
        acceptJump(give);
    }

  private:
    static constexpr double kLeastJumpS = 0.05;
    static constexpr double kMostApartS = 5.0;  // between the tracks where one part begins

    struct Held {
        Item item;
        double time_s;
        double length_s;
    };

    bool jumpsBack(double time_s) const { return time_s + clock_.shift_s < clock_.last_s; }
    bool jumpsAhead(double time_s) const { return time_s + clock_.shift_s - clock_.expected_s > kLeastJumpS; }

    /// Decides on what is held if the stamp that follows tells enough.
    template <typename Give>
    void resolve(double time_s, const Give& give) {
        if (!clock_.any) {
            Held& first = held_.front();
            first.time_s = first.time_s > time_s ? time_s - first.length_s : first.time_s;
            releaseAtStamps(give);
            return;
        }
        double unmoved_s = clock_.expected_s;  // where the track would be if the held stamps were wrong
        for (const Held& held : held_) {
            unmoved_s += held.length_s;
        }
        const double moved_s = held_.back().time_s + held_.back().length_s;
        const bool returns = jumpsBack(held_.front().time_s) || time_s < held_.back().time_s;
        if (returns && std::abs(time_s + clock_.shift_s - unmoved_s) < std::abs(time_s - moved_s)) {
            release(give, [this](const Held& /*held*/) { return clock_.expected_s; });
        } else if (held_.size() == most_held_) {
            acceptJump(give);
        }
    }

    template <typename Give>
    void acceptJump(const Give& give) {
        if (!held_.empty() && clock_.any && jumpsBack(held_.front().time_s)) {
            goBackTo(held_.front().time_s);
        }
        releaseAtStamps(give);
    }

    /// The stamps go on with `time_s`. Where streams were joined both tracks jump, one a little before the
    /// other, and the new part begins for both when the longer one's old part ends.
    void goBackTo(double time_s) {
        const double former_shift_s = std::exchange(clock_.shift_s, clock_.expected_s - time_s);
        const auto is_near = [time_s](double stamp_s) { return std::abs(time_s - stamp_s) < kMostApartS; };
        if (other_.back_to_s && is_near(*other_.back_to_s)) {
            clock_.shift_s = std::max(clock_.shift_s, other_.expected_s - *other_.back_to_s);
        } else if (other_.back_at_s && other_.last_s - *other_.back_at_s < kMostApartS &&
                   other_.shift_s > former_shift_s && is_near(other_.last_s - other_.shift_s)) {
            clock_.shift_s = std::max(clock_.shift_s, other_.shift_s);
            other_.shift_s = clock_.shift_s;
        }
        clock_.back_at_s = clock_.expected_s;
    }

    template <typename Give>
    void releaseAtStamps(const Give& give) {
        release(give, [this](const Held& held) { return held.time_s + clock_.shift_s; });
    }

    template <typename Give, typename Place>
    void release(const Give& give, const Place& place) {
        clock_.back_to_s.reset();
        for (; !held_.empty(); held_.pop_front()) {
            Held& held = held_.front();
            clock_.last_s = clock_.any ? std::max(place(held), clock_.last_s) : place(held);
            clock_.expected_s = clock_.last_s + held.length_s;
            clock_.any = true;
            give(std::move(held.item), clock_.last_s);
        }
    }

    const size_t most_held_;
    std::deque<Held> held_;
    TrackClock& clock_;
    TrackClock& other_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_TIMELINE_H_
