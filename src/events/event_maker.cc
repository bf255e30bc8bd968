#include "events/event_maker.h"

#include <algorithm>

#include "events/verdicts.h"

namespace ZEL {

EventMaker::EventMaker(const EventRules& rules, StreamTracks tracks, EventListener& listener)
    : listener_(listener), gaps_(tracks) {
    trackers_.reserve(kEventKinds);
    for (const EventKindInfo& info : eventKinds()) {
        trackers_.emplace_back(info.kind, rules[indexOf(info.kind)]);
    }
}

void EventMaker::picture(TimeSpan shown, const ZELAlgo::ZELVideoResult& result) {
    PerEventKind<Sight> sights = sightsOf(result);
    Sight& freeze = sights[indexOf(EventKind::kFreeze)];
    if (!any_picture_ && freeze == Sight::kPresent) {
        freeze = Sight::kAbsent;  // the detector has compared it with an empty picture
    }
    any_picture_ = true;
    for (const EventKindInfo& info : eventKinds()) {
        if (info.source != EventSource::kVideo) {
            continue;
        }
        // The detector finds a picture like the one before it, so the freeze began with that one.
        const bool reaches_back = info.kind == EventKind::kFreeze && freeze == Sight::kPresent && like_start_;
        see(info.kind, {reaches_back ? *like_start_ : shown.start_s, shown.end_s},
            sights[indexOf(info.kind)]);
    }
    gaps_.reach(StreamTrack::kVideo, shown.end_s);
    seeStalls(gaps_.settledTo());
    like_start_ = freeze == Sight::kUnknown ? std::nullopt : std::optional(shown.start_s);
}

void EventMaker::silencePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    see(EventKind::kMute, period, sightsOf(result)[indexOf(EventKind::kMute)]);
    gaps_.reach(StreamTrack::kAudio, period.end_s);
    seeStalls(gaps_.settledTo());
}

void EventMaker::voicePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    const PerEventKind<Sight> sights = sightsOf(result);
    for (const EventKind kind : {EventKind::kLowVoice, EventKind::kHighVoice, EventKind::kNoVoice}) {
        see(kind, period, sights[indexOf(kind)]);
    }
}

void EventMaker::gap(StreamTrack track, TimeSpan span) {
    if (track == StreamTrack::kVideo) {
        like_start_.reset();
    }
    gaps_.add(track, span);
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
        if (end.still_picture && info.source == EventSource::kVideo) {
            tracker.waiveMinimum();
        }
        report(tracker.finish(info.source == EventSource::kVideo   ? end.video_s
                              : info.source == EventSource::kAudio ? end.audio_s
                                                                   : reached_s));
    }
}

void EventMaker::see(EventKind kind, TimeSpan span, Sight sight) {
    const EventTracker::Step step = trackers_[indexOf(kind)].see(span, sight);
    report(step.ended);
    if (step.began) {
        listener_.onRunBegan(kind);
    }
}

/// Sees the gaps up to `settled_s`, which no track can add anything to.
void EventMaker::seeStalls(double settled_s) {
    for (const TimeSpan& gap : gaps_.takeSettled()) {
        see(EventKind::kStall, gap, Sight::kPresent);
        missing_to_s_ = std::max(missing_to_s_, gap.end_s);
    }
    if (settled_s > missing_to_s_) {
        see(EventKind::kStall, {settled_s, settled_s}, Sight::kAbsent);
    }
}

void EventMaker::report(const std::optional<Event>& event) {
    if (event) {
        listener_.onEvent(*event);
    }
}

}  // namespace ZEL
