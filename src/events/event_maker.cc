#include "events/event_maker.h"

#include <algorithm>

namespace ZEL {
namespace {

constexpr double kLingersS = 1.0;  // damage is copied from frame to frame until one comes that refers to none

}  // namespace

EventMaker::EventMaker(const EventRules& rules, StreamTracks tracks, EventListener& listener)
    : listener_(listener), rules_(rules), frames_(rules[indexOf(EventKind::kFreeze)].min_s), gaps_(tracks) {
    trackers_.reserve(kEventKinds);
    for (const EventKindInfo& info : eventKinds()) {
        trackers_.emplace_back(info.kind, rules[indexOf(info.kind)]);
    }
}

void EventMaker::frame(TimeSpan shown, const ZELAlgo::ZELVideoResult& verdicts,
                       const ZELJudges::MeasuredFrame& measured) {
    reached_s_ = std::max(reached_s_, shown.end_s);
    see(frames_.frame(shown, verdicts, measured));
    gaps_.reach(StreamTrack::kVideo, shown.end_s);
    seeStalls(gaps_.settledTo());
}

void EventMaker::silencePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    reached_s_ = std::max(reached_s_, period.end_s);
    see({SoundSights::silence(period, result)});
    gaps_.reach(StreamTrack::kAudio, period.end_s);
    seeStalls(gaps_.settledTo());
}

void EventMaker::audio(const MeasuredAudio& audio, double start_s) {
    see(sound_.audio(audio, start_s));
}

void EventMaker::damage(TimeSpan span) {
    implied_.cover(EventKind::kDamage, {span.start_s, span.end_s + kLingersS});
}

void EventMaker::gap(StreamTrack track, TimeSpan span) {
    listener_.onGap(track, span);
    if (track == StreamTrack::kVideo) {
        implied_.cover(EventKind::kStall, span);
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
    see(frames_.finish());
    see(sound_.finish());
    seeSettled(implied_.takeRest());
    const double reached_s = std::max(end.video_s, end.audio_s);
    reached_s_ = std::max(reached_s_, reached_s);
    gaps_.reach(StreamTrack::kVideo, reached_s);
    gaps_.reach(StreamTrack::kAudio, reached_s);
    seeStalls(reached_s);
    if (end.declared_s && *end.declared_s > reached_s) {
        track({EventKind::kShort, {reached_s, *end.declared_s}, Sight::kPresent});
        track({EventKind::kShort, {*end.declared_s, *end.declared_s}, Sight::kAbsent});
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
    if (kind == EventKind::kFreeze) {
        frames_.setFreezeMinimum(rule.min_s);
    }
    tell(kind, trackers_[indexOf(kind)].setRule(rule));
}

void EventMaker::see(const std::vector<Sighting>& sightings) {
    for (const Sighting& sighting : sightings) {
        implied_.see(sighting);
    }
    seeSettled(implied_.takeSettled());
}

void EventMaker::seeSettled(const std::vector<Sighting>& sightings) {
    for (const Sighting& sighting : sightings) {
        track(sighting);
    }
}

void EventMaker::track(const Sighting& sighting) {
    const EventKind kind = sighting.kind;
    const EventTracker::Step step =
        trackers_[indexOf(kind)].see(sighting.span, sighting.sight, sighting.evidence, sighting.apart);
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
        track({EventKind::kStall, {settled_s, settled_s}, Sight::kAbsent});
    }
}

void EventMaker::seeMissing(TimeSpan span) {
    track({EventKind::kStall, span, Sight::kPresent});
    missing_to_s_ = std::max(missing_to_s_, span.end_s);
}

void EventMaker::tell(EventKind kind, const std::optional<EventTracker::Raise>& raise) {
    if (raise) {
        listener_.onRaised(kind, raise->start_s, std::max(raise->noticed_s, reached_s_));
    }
}

void EventMaker::tell(std::optional<Event> cleared) {
    if (!cleared) {
        return;
    }
    cleared->evidence = evidenceOf(*cleared);
    listener_.onCleared(*cleared);
}

std::optional<Evidence> EventMaker::evidence(EventKind kind) const {
    const auto raised = trackers_[indexOf(kind)].raised();
    return raised ? evidenceOf(*raised) : std::nullopt;
}

/// What was measured; of kinds that lie in the timestamps that is the time itself.
std::optional<Evidence> EventMaker::evidenceOf(const Event& event) const {
    return infoOf(event.kind).source == EventSource::kTimestamps
               ? Evidence{event.span.length(), rules_[indexOf(event.kind)].min_s}
               : event.evidence;
}

}  // namespace ZEL
