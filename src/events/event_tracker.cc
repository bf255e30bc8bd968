#include "events/event_tracker.h"

#include <algorithm>
#include <utility>

namespace ZEL {

EventTracker::Step EventTracker::see(TimeSpan span, Sight sight, const std::optional<Evidence>& evidence,
                                     bool apart) {
    const bool present = sight == Sight::kPresent;
    Step step;
    const double without_s = (present ? span.start_s : span.end_s) - run_.end_s;
    if (open_ && (without_s > rule_.gap_s + kSlackS || (present && apart && without_s > -kSlackS))) {
        step.ended = clear(false);
    }
    step.began = present && !open_;
    if (present) {
        extend(span);
        if (evidence) {
            evidence_.add(*evidence, span.length());
        }
    } else if (open_ && sight == Sight::kUnknown) {
        pending_unknown_s_ += span.length();
    }
    last_present_ = present;
    seen_to_s_ = span.end_s;
    step.raised = raise();
    return step;
}

std::optional<EventTracker::Raise> EventTracker::setRule(EventRule rule) {
    rule_ = rule;
    return raise();
}

std::optional<EventTracker::Raise> EventTracker::extendTo(double end_s) {
    if (open_ && last_present_ && end_s > run_.end_s) {
        extend({run_.end_s, end_s});
    }
    return raise();
}

std::optional<Event> EventTracker::finish(double end_s) {
    extendTo(end_s);
    return clear(last_present_);
}

/// Raises the run at hand if it is an event by now.
std::optional<EventTracker::Raise> EventTracker::raise() {
    if (!open_ || raised_ || run_.length() + kSlackS < rule_.min_s || share() < kLeastShare) {
        return std::nullopt;
    }
    raised_ = true;
    return Raise{.start_s = run_.start_s, .noticed_s = std::max(run_.end_s, seen_to_s_)};
}

std::optional<Event> EventTracker::raised() const {
    return raised_ ? std::optional(Event{kind_, run_, share(), false, evidence_.mean()}) : std::nullopt;
}

std::optional<Event> EventTracker::clear(bool at_end) {
    std::optional<Event> event = raised();
    if (event) {
        event->open_at_end = at_end;
    }
    open_ = raised_ = false;
    return event;
}

void EventTracker::extend(TimeSpan span) {
    if (!open_) {
        open_ = true;
        run_ = {span.start_s, span.start_s};
        present_s_ = unknown_s_ = pending_unknown_s_ = 0.0;
        evidence_ = {};
    }
    present_s_ += std::max(run_.start_s - span.start_s, 0.0);
    run_.start_s = std::min(run_.start_s, span.start_s);
    const double new_from = std::max(span.start_s, run_.end_s);
    present_s_ += std::max(span.end_s - new_from, 0.0);
    unknown_s_ += std::min(pending_unknown_s_, new_from - run_.end_s);
    pending_unknown_s_ = 0.0;
    run_.end_s = std::max(run_.end_s, span.end_s);
}

double EventTracker::share() const {
    const double known_s = run_.length() - unknown_s_;
    return known_s > 0.0 ? std::min(present_s_ / known_s, 1.0) : 1.0;
}

}  // namespace ZEL
