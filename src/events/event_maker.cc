#include "events/event_maker.h"

#include <algorithm>

namespace ZEL {

EventMaker::EventMaker(const EventRules& rules, StreamTracks tracks, EventListener& listener)
    : listener_(listener), rules_(rules), gaps_(tracks) {
    trackers_.reserve(kEventKinds);
    for (const EventKindInfo& info : eventKinds()) {
        trackers_.emplace_back(info.kind, rules[indexOf(info.kind)]);
    }
}

void EventMaker::frame(TimeSpan shown, const ZELAlgo::ZELVideoResult& result) {
    Sights sights = frameSights(result);
    std::optional<Sight>& freeze = sights[indexOf(EventKind::kFreeze)];
    if (!any_frame_ && freeze == Sight::kPresent) {
        freeze = Sight::kAbsent;  // the detector has compared it with an empty frame
    }
    any_frame_ = true;
    for (const EventKindInfo& info : eventKinds()) {
        if (const std::optional<Sight> sight = sights[indexOf(info.kind)]) {
            // The detector finds a frame like the one before it, so the freeze began with that one.
            const bool reaches_back =
                info.kind == EventKind::kFreeze && sight == Sight::kPresent && like_start_;
            see(info.kind, {reaches_back ? *like_start_ : shown.start_s, shown.end_s}, *sight);
        }
    }
    gaps_.reach(StreamTrack::kVideo, shown.end_s);
    seeStalls(gaps_.settledTo());
    like_start_ = freeze == Sight::kUnknown ? std::nullopt : std::optional(shown.start_s);
}

void EventMaker::silencePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    see(period, silenceSights(result));
    gaps_.reach(StreamTrack::kAudio, period.end_s);
    seeStalls(gaps_.settledTo());
}

void EventMaker::voicePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    see(period, voiceSights(result));
}

void EventMaker::gap(StreamTrack track, TimeSpan span) {
    listener_.onGap(track, span);
    if (track == StreamTrack::kVideo) {
        like_start_.reset();
    }
    gaps_.add(track, span);
    seeStalls(gaps_.settledTo());
}

void EventMaker::late(StreamTrack track, TimeSpan span) {
    gaps_.reach(track, span.end_s);
    seeMissing(span);
    seeStalls(gaps_.settledTo());
}

void EventMaker::finish(const StreamEnd& end) {
    const double reached_s = std::max(end.video_s, end.audio_s);
    gaps_.reach(StreamTrack::kVideo, reached_s);
    gaps_.reach(StreamTrack::kAudio, reached_s);
    seeStalls(reached_s);
    if (end.declared_s && *end.declared_s > reached_s) {
        see(EventKind::kShort, {reached_s, *end.declared_s}, Sight::kPresent);
        see(EventKind::kShort, {*end.declared_s, *end.declared_s}, Sight::kAbsent);
    }
    for (const EventKindInfo& info : eventKinds()) {
        EventTracker& tracker = trackers_[indexOf(info.kind)];
        if (end.still && info.source == EventSource::kVideo) {
            setRule(info.kind, {.min_s = 0.0, .gap_s = rules_[indexOf(info.kind)].gap_s});
        }
        const double end_s = info.source == EventSource::kVideo   ? end.video_s
                             : info.source == EventSource::kAudio ? end.audio_s
                                                                  : reached_s;
        tell(info.kind, tracker.extendTo(end_s));
        tell(tracker.finish(end_s));
    }
}

void EventMaker::setRule(EventKind kind, EventRule rule) {
    rules_[indexOf(kind)] = rule;
    tell(kind, trackers_[indexOf(kind)].setRule(rule));
}

void EventMaker::see(TimeSpan span, const Sights& sights) {
    for (const EventKindInfo& info : eventKinds()) {
        if (const std::optional<Sight> sight = sights[indexOf(info.kind)]) {
            see(info.kind, span, *sight);
        }
    }
}

void EventMaker::see(EventKind kind, TimeSpan span, Sight sight) {
    const EventTracker::Step step = trackers_[indexOf(kind)].see(span, sight);
    tell(step.ended);
    if (step.began) {
        listener_.onSuspected(kind);
    }
    tell(kind, step.raised);
}

/// Sees the gaps up to `settled_s`, which no track can add anything to.
void EventMaker::seeStalls(double settled_s) {
    for (const TimeSpan& gap : gaps_.takeSettled()) {
        seeMissing(gap);
    }
    if (settled_s > missing_to_s_) {
        see(EventKind::kStall, {settled_s, settled_s}, Sight::kAbsent);
    }
}

void EventMaker::seeMissing(TimeSpan span) {
    see(EventKind::kStall, span, Sight::kPresent);
    missing_to_s_ = std::max(missing_to_s_, span.end_s);
}

void EventMaker::tell(EventKind kind, const std::optional<EventTracker::Raise>& raise) {
    if (raise) {
        listener_.onRaised(kind, raise->start_s, raise->noticed_s);
    }
}

void EventMaker::tell(const std::optional<Event>& cleared) {
    if (cleared) {
        listener_.onCleared(*cleared);
    }
}

}  // namespace ZEL
