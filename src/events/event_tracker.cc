#include "events/event_tracker.h"

#include <algorithm>

namespace ZEL {
namespace {

// A stretch in which the fault was seen less than half of the time is not one event.
constexpr double kLeastShare = 0.5;

}  // namespace

EventTracker::Step EventTracker::see(TimeSpan span, Sight sight) {
    const bool present = sight == Sight::kPresent;
    Step step;
    if (open_ && (present ? span.start_s : span.end_s) - run_.end_s > rule_.gap_s + kSlackS) {
        step.ended = close(false);
    }
    step.began = present && !open_;
    if (present) {
        extend(span);
    } else if (open_ && sight == Sight::kUnknown) {
        pending_unknown_s_ += span.length();
    }
    last_present_ = present;
    return step;
}

std::optional<Event> EventTracker::finish(double end_s) {
    if (!open_) {
        return std::nullopt;
    }
    if (last_present_ && end_s > run_.end_s) {
        extend({run_.end_s, end_s});
    }
    return close(last_present_);
}

void EventTracker::extend(TimeSpan span) {
    if (!open_) {
        open_ = true;
        run_ = {span.start_s, span.start_s};
        present_s_ = unknown_s_ = pending_unknown_s_ = 0.0;
    }
    present_s_ += std::max(run_.start_s - span.start_s, 0.0);
    run_.start_s = std::min(run_.start_s, span.start_s);
    const double new_from = std::max(span.start_s, run_.end_s);
    present_s_ += std::max(span.end_s - new_from, 0.0);
    unknown_s_ += std::min(pending_unknown_s_, new_from - run_.end_s);
    pending_unknown_s_ = 0.0;
    run_.end_s = std::max(run_.end_s, span.end_s);
}

std::optional<Event> EventTracker::close(bool at_end) {
    open_ = false;
    if (run_.length() + kSlackS < rule_.min_s) {
        return std::nullopt;
    }
    const double known_s = run_.length() - unknown_s_;
    const double share = known_s > 0.0 ? std::min(present_s_ / known_s, 1.0) : 1.0;
    return share < kLeastShare ? std::nullopt : std::optional(Event{kind_, run_, share, at_end});
}

}  // namespace ZEL
