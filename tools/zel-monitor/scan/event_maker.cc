#include "scan/event_maker.h"

#include <algorithm>

#include "scan/verdicts.h"

namespace zel_monitor::scan {

EventMaker::EventMaker(const EventRules& rules, Tracks tracks, EventListener& listener)
    : listener_(listener), gaps_(tracks) {
    trackers_.reserve(kKindCount);
    for (const KindInfo& info : kinds()) {
        trackers_.emplace_back(info.kind, rules[indexOf(info.kind)]);
    }
}

void EventMaker::picture(Span shown, const ZELAlgo::ZELVideoResult& result) {
    PerKind<Sight> sights = sightsOf(result);
    Sight& freeze = sights[indexOf(Kind::kFreeze)];
    if (!any_picture_ && freeze == Sight::kPresent) {
        freeze = Sight::kAbsent;  // the detector has compared it with an empty picture
    }
    any_picture_ = true;
    for (const KindInfo& info : kinds()) {
        if (info.source != Source::kVideo) {
            continue;
        }
        // The detector finds a picture like the one before it, so the freeze began with that one.
        const bool reaches_back = info.kind == Kind::kFreeze && freeze == Sight::kPresent && like_start_;
        see(info.kind, {reaches_back ? *like_start_ : shown.start_s, shown.end_s},
            sights[indexOf(info.kind)]);
    }
    gaps_.reach(Track::kVideo, shown.end_s);
    seeStalls(gaps_.settledTo());
    like_start_ = freeze == Sight::kUnknown ? std::nullopt : std::optional(shown.start_s);
}

void EventMaker::silencePeriod(Span period, const ZELAlgo::ZELAudioResult& result) {
    see(Kind::kMute, period, sightsOf(result)[indexOf(Kind::kMute)]);
    gaps_.reach(Track::kAudio, period.end_s);
    seeStalls(gaps_.settledTo());
}

void EventMaker::voicePeriod(Span period, const ZELAlgo::ZELAudioResult& result) {
    const PerKind<Sight> sights = sightsOf(result);
    for (const Kind kind : {Kind::kLowVoice, Kind::kHighVoice, Kind::kNoVoice}) {
        see(kind, period, sights[indexOf(kind)]);
    }
}

void EventMaker::gap(Track track, Span span) {
    if (track == Track::kVideo) {
        like_start_.reset();
    }
    gaps_.add(track, span);
    seeStalls(gaps_.settledTo());
}

void EventMaker::finish(const StreamEnd& end) {
    const double reached_s = std::max(end.video_s, end.audio_s);
    gaps_.reach(Track::kVideo, reached_s);
    gaps_.reach(Track::kAudio, reached_s);
    seeStalls(reached_s);
    if (end.declared_s && *end.declared_s > reached_s) {
        see(Kind::kShort, {reached_s, *end.declared_s}, Sight::kPresent);
        see(Kind::kShort, {*end.declared_s, *end.declared_s}, Sight::kAbsent);
    }
    for (const KindInfo& info : kinds()) {
        EventTracker& tracker = trackers_[indexOf(info.kind)];
        if (end.still_picture && info.source == Source::kVideo) {
            tracker.waiveMinimum();
        }
        report(tracker.finish(info.source == Source::kVideo   ? end.video_s
                              : info.source == Source::kAudio ? end.audio_s
                                                              : reached_s));
    }
}

void EventMaker::see(Kind kind, Span span, Sight sight) {
    const EventTracker::Step step = trackers_[indexOf(kind)].see(span, sight);
    report(step.ended);
    if (step.began) {
        listener_.onRunBegan(kind);
    }
}

/// Sees the gaps up to `settled_s`, which no track can add anything to.
void EventMaker::seeStalls(double settled_s) {
    for (const Span& gap : gaps_.takeSettled()) {
        see(Kind::kStall, gap, Sight::kPresent);
        missing_to_s_ = std::max(missing_to_s_, gap.end_s);
    }
    if (settled_s > missing_to_s_) {
        see(Kind::kStall, {settled_s, settled_s}, Sight::kAbsent);
    }
}

void EventMaker::report(const std::optional<Event>& event) {
    if (event) {
        listener_.onEvent(*event);
    }
}

}  // namespace zel_monitor::scan
