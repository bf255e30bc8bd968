#ifndef ZEL_TOOLS_SCAN_TIMELINE_H_
#define ZEL_TOOLS_SCAN_TIMELINE_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <deque>
#include <utility>

namespace zel_monitor::scan {

/// How far a track has come in stream time, and how that differs from its timestamps.
struct TrackClock {
    double shift_s = 0.0;     ///< added to the stamps since they last jumped back
    double last_s = 0.0;      ///< start of the item that was given last
    double expected_s = 0.0;  ///< and its end
    bool any = false;         ///< whether one was given
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
        if (jumps(time_s)) {
            others_end_s_ = other_.any ? other_.expected_s : clock_.expected_s;
        } else {
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
    static constexpr double kMostApartS = 5.0;  // of both tracks' stamps in one part

    struct Held {
        Item item;
        double time_s;
        double length_s;
    };

    bool jumps(double time_s) const {
        const double start_s = time_s + clock_.shift_s;
        return start_s < clock_.last_s || start_s - clock_.expected_s > kLeastJumpS;
    }

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
        const bool was_back = held_.front().time_s + clock_.shift_s < clock_.last_s;
        const bool returns = was_back || time_s < held_.back().time_s;
        if (returns && std::abs(time_s + clock_.shift_s - unmoved_s) < std::abs(time_s - moved_s)) {
            release(give, [this](const Held& /*held*/) { return clock_.expected_s; });
        } else if (held_.size() == most_held_) {
            acceptJump(give);
        }
    }

    template <typename Give>
    void acceptJump(const Give& give) {
        if (!held_.empty() && clock_.any && held_.front().time_s + clock_.shift_s < clock_.last_s) {
            jumpBack(held_.front().time_s);
        }
        releaseAtStamps(give);
    }

    /// The stamps go on with `time_s`. Where streams were joined both tracks jump, one a little before the
    /// other, and the new part begins for both when the longer one's old part ends.
    void jumpBack(double time_s) {
        const bool is_second = other_.any && other_.shift_s > clock_.shift_s &&
                               std::abs(time_s - (other_.last_s - other_.shift_s)) < kMostApartS;
        if (is_second) {
            clock_.shift_s = std::max(other_.shift_s, clock_.expected_s - time_s);
            other_.shift_s = clock_.shift_s;
        } else {
            clock_.shift_s = std::max(clock_.expected_s, others_end_s_) - time_s;
        }
    }

    template <typename Give>
    void releaseAtStamps(const Give& give) {
        release(give, [this](const Held& held) { return held.time_s + clock_.shift_s; });
    }

    template <typename Give, typename Place>
    void release(const Give& give, const Place& place) {
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
    double others_end_s_ = 0.0;  // of what the other track had given when the first item was held
};

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_TIMELINE_H_
