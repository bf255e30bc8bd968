#ifndef ZEL_TOOLS_SCAN_TIMELINE_H_
#define ZEL_TOOLS_SCAN_TIMELINE_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <deque>
#include <utility>

namespace zel_monitor::scan {

/// Makes stream time out of one track's timestamps, which may jump. Places never run backwards.
///
/// Items whose stamps jump, back or far ahead, are held until a later one tells what happened. If that one
/// goes on from before the jump, the held stamps were wrong, and their items are placed one after another as
/// if nothing had happened. Otherwise the jump holds: a jump ahead is a gap, and after a jump back the stream
/// goes on where it was.
template <typename Item>
class Timeline {
  public:
    /// Holds no more than `most_held` items.
    explicit Timeline(size_t most_held) : most_held_(most_held) {}

    /// Takes the next item, with the timestamp `time_s` and `length_s` long, and calls `give(item, start_s)`
    /// for all whose places are certain.
    template <typename Give>
    void take(Item item, double time_s, double length_s, const Give& give) {
        if (!held_.empty()) {
            resolve(time_s, give);
        }
        held_.push_back({std::move(item), time_s, length_s});
        if (held_.size() == 1 && !jumps(time_s)) {
            release(give, [this](const Held& held) { return held.time_s + shift_s_; });
        }
    }

    /// Gives what is still held.
    template <typename Give>
    void finish(const Give& give) {
        acceptJump(give);
    }

  private:
    static constexpr double kLeastJumpS = 0.05;

    struct Held {
        Item item;
        double time_s;
        double length_s;
    };

    bool jumps(double time_s) const {
        const double start_s = time_s + shift_s_;
        return any_ && (start_s < last_s_ || start_s - expected_s_ > kLeastJumpS);
    }

    /// Decides on what is held if the stamp that follows tells enough.
    template <typename Give>
    void resolve(double time_s, const Give& give) {
        double unmoved_s = expected_s_;  // where the track would be if the held stamps were wrong
        for (const Held& held : held_) {
            unmoved_s += held.length_s;
        }
        const double moved_s = held_.back().time_s + held_.back().length_s;
        const bool was_back = held_.front().time_s + shift_s_ < last_s_;
        const bool returns = was_back || time_s < held_.back().time_s;
        if (returns && std::abs(time_s + shift_s_ - unmoved_s) < std::abs(time_s - moved_s)) {
            release(give, [this](const Held& /*held*/) { return expected_s_; });
        } else if (held_.size() == most_held_) {
            acceptJump(give);
        }
    }

    template <typename Give>
    void acceptJump(const Give& give) {
        if (!held_.empty() && held_.front().time_s + shift_s_ < last_s_) {
            shift_s_ = expected_s_ - held_.front().time_s;
        }
        release(give, [this](const Held& held) { return held.time_s + shift_s_; });
    }

    template <typename Give, typename Place>
    void release(const Give& give, const Place& place) {
        for (; !held_.empty(); held_.pop_front()) {
            Held& held = held_.front();
            last_s_ = any_ ? std::max(place(held), last_s_) : place(held);
            expected_s_ = last_s_ + held.length_s;
            any_ = true;
            give(std::move(held.item), last_s_);
        }
    }

    const size_t most_held_;
    std::deque<Held> held_;
    double shift_s_ = 0.0;     // added to the stamps since they last jumped back
    double last_s_ = 0.0;      // start of the item that was given last
    double expected_s_ = 0.0;  // and its end
    bool any_ = false;         // whether one was given
};

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_TIMELINE_H_
