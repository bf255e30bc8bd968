#include "scan/event_maker.h"

#include <algorithm>

#include "scan/verdicts.h"

namespace zel_monitor::scan {

EventMaker::EventMaker(const EventRules& rules, EventListener& listener) : listener_(listener) {
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
    see(Kind::kStall, shown, Sight::kAbsent);
    like_start_ = freeze == Sight::kUnknown ? std::nullopt : std::optional(shown.start_s);
}

void EventMaker::silencePeriod(Span period, const ZELAlgo::ZELAudioResult& result) {
    see(Kind::kMute, period, sightsOf(result)[indexOf(Kind::kMute)]);
    see(Kind::kStall, period, Sight::kAbsent);
}

void EventMaker::voicePeriod(Span period, const ZELAlgo::ZELAudioResult& result) {
    const PerKind<Sight> sights = sightsOf(result);
    for (const Kind kind : {Kind::kLowVoice, Kind::kHighVoice, Kind::kNoVoice}) {
        see(kind, period, sights[indexOf(kind)]);
    }
}

void EventMaker::gap(Span span) {
    like_start_.reset();
    see(Kind::kStall, span, Sight::kPresent);
}

void EventMaker::finish(const StreamEnd& end) {
    const double reached_s = std::max(end.video_s, end.audio_s);
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

void EventMaker::report(const std::optional<Event>& event) {
    if (event) {
        listener_.onEvent(*event);
    }
}

}  // namespace zel_monitor::scan
