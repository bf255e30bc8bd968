#include <zel/events/analyser.h>
#include <zel/events/stream_clock.h>
#include <zel/zel_c.h>

#include <cmath>
#include <optional>
#include <utility>

#include "c/calls.h"
#include "c/fed.h"

static_assert(ZELC_TRACK_VIDEO == static_cast<int>(ZEL::StreamTrack::kVideo) &&
              ZELC_TRACK_AUDIO == static_cast<int>(ZEL::StreamTrack::kAudio));

namespace {

/// Hands on to the caller's functions.
class Listener : public ZEL::EventListener {
  public:
    explicit Listener(const zelc_analyser_callbacks& callbacks) : callbacks_(callbacks) {}

    void onSuspected(ZEL::EventKind kind) override { call(callbacks_.on_suspected, numberOf(kind)); }

    void onRaised(ZEL::EventKind kind, double start_s, double noticed_s) override {
        call(callbacks_.on_raised, numberOf(kind), start_s, noticed_s);
    }

    void onCleared(const ZEL::Event& event) override {
        const ZEL::Evidence evidence = event.evidence.value_or(ZEL::Evidence());
        const zelc_event own{.struct_size = sizeof own,
                             .kind = numberOf(event.kind),
                             .start_s = event.span.start_s,
                             .end_s = event.span.end_s,
                             .share = event.share,
                             .is_open_at_end = event.open_at_end ? 1U : 0U,
                             .counts = event.counts() ? 1U : 0U,
                             .has_evidence = event.evidence ? 1U : 0U,
                             .reserved = 0,
                             .value = evidence.value,
                             .limit = evidence.limit};
        call(callbacks_.on_cleared, &own);
    }

    void onGap(ZEL::StreamTrack track, ZEL::TimeSpan span) override {
        call(callbacks_.on_gap, static_cast<uint32_t>(track), span.start_s, span.end_s);
    }

    void onFrame(const ZEL::FrameMeasurement& frame) override {
        const zelc_video_verdict verdict = ZELC::verdictOf(frame.verdicts);
        call(callbacks_.on_frame, frame.index, frame.start_s, &verdict);
    }

    void onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override {
        const zelc_audio_verdict verdict = ZELC::verdictOf(result);
        call(callbacks_.on_silence_period, period.start_s, period.end_s, &verdict);
    }

    void onVoicePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override {
        const zelc_audio_verdict verdict = ZELC::verdictOf(result);
        call(callbacks_.on_voice_period, period.start_s, period.end_s, &verdict);
    }

  private:
    template <typename... Parameters, typename... Arguments>
    void call(void (*function)(void*, Parameters...), Arguments... arguments) const {
        if (function != nullptr) {
            function(callbacks_.user, arguments...);
        }
    }

    static uint32_t numberOf(ZEL::EventKind kind) { return static_cast<uint32_t>(ZEL::indexOf(kind)); }

    const zelc_analyser_callbacks callbacks_;
};

zelc_analyser_options defaultOptions() {
    return {.struct_size = sizeof(zelc_analyser_options),
            .has_video = 1,
            .has_audio = 1,
            .is_still = 0,
            .reserved = 0,
            .late_after_s = -1.0};
}

ZEL::AnalyserOptions optionsOf(const zelc_analyser_options& options) {
    return {.tracks = {.video = options.has_video != 0,
                       .audio = options.has_audio != 0,
                       .still = options.is_still != 0},
            .late_after_s = options.late_after_s >= 0.0 ? std::optional(options.late_after_s) : std::nullopt};
}

}  // namespace

struct zelc_analyser {
    zelc_analyser(const zelc_analyser_options& options, const zelc_analyser_callbacks& callbacks)
        : listener(callbacks), analyser(listener, optionsOf(options)) {}

    Listener listener;
    ZEL::EventAnalyser analyser;
    ZELC::FrameReader frames;
    bool ended = false;
};

namespace {

/// Runs a feed. What one leaves that breaks off cannot be fed any more.
template <typename Feed>
int fed(zelc_analyser* analyser, double time_s, Feed feed) noexcept {
    return ZELC::guarded([&] {
        if (analyser == nullptr || !std::isfinite(time_s)) {
            return ZELC::failed(ZELC_INVALID, "no analyser, or a time that is not finite");
        }
        if (analyser->ended) {
            return ZELC::failed(ZELC_ENDED, "the stream has ended");
        }
        analyser->ended = true;
        const int code = feed();
        analyser->ended = false;
        return code;
    });
}

}  // namespace

int zelc_analyser_options_default(zelc_analyser_options* options) {
    if (!ZELC::isReadable(options)) {
        return ZELC::failed(ZELC_INVALID, "no options, or none that know their size");
    }
    ZELC::write(defaultOptions(), *options);
    return ZELC_OK;
}

int zelc_analyser_new(const zelc_analyser_options* options, const zelc_analyser_callbacks* callbacks,
                      zelc_analyser** analyser) {
    return ZELC::guarded([&] {
        if (analyser == nullptr) {
            return ZELC::failed(ZELC_INVALID, "nowhere to put the analyser");
        }
        *analyser = nullptr;
        zelc_analyser_options own_options = defaultOptions();
        zelc_analyser_callbacks own_callbacks{};
        if ((options != nullptr && !ZELC::isReadable(options)) ||
            (callbacks != nullptr && !ZELC::isReadable(callbacks))) {
            return ZELC::failed(ZELC_INVALID, "options or callbacks without their size");
        }
        if (options != nullptr) {
            ZELC::read(*options, own_options);
        }
        if (callbacks != nullptr) {
            ZELC::read(*callbacks, own_callbacks);
        }
        if (std::isnan(own_options.late_after_s)) {
            return ZELC::failed(ZELC_INVALID, "late_after_s is not a number");
        }
        *analyser = new zelc_analyser(own_options, own_callbacks);
        return int{ZELC_OK};
    });
}

void zelc_analyser_free(zelc_analyser* analyser) {
    delete analyser;
}

int zelc_analyser_video(zelc_analyser* analyser, const zelc_frame* frame, double time_s, double duration_s) {
    return fed(analyser, time_s, [&] {
        const auto own = analyser->frames.read(frame);
        if (!own) {
            return int{ZELC_INVALID};
        }
        const auto condition = own->is_damaged ? ZEL::FrameCondition::kDamaged : ZEL::FrameCondition::kWhole;
        return analyser->analyser.feedVideo(own->planes, time_s, duration_s, condition)
                   ? int{ZELC_OK}
                   : ZELC::failed(ZELC_NO_MEMORY, "no memory for the detectors");
    });
}

int zelc_analyser_audio(zelc_analyser* analyser, const zelc_audio* audio, double time_s) {
    return fed(analyser, time_s, [&] {
        const auto own = ZELC::readAudio(audio);
        if (!own) {
            return int{ZELC_INVALID};
        }
        return analyser->analyser.feedAudio(*own, time_s) ? int{ZELC_OK}
                                                          : ZELC::failed(ZELC_INTERNAL, "audio was refused");
    });
}

int zelc_analyser_end(zelc_analyser* analyser, double declared_s) {
    return ZELC::guarded([&] {
        if (analyser == nullptr) {
            return ZELC::failed(ZELC_INVALID, "no analyser");
        }
        if (std::exchange(analyser->ended, true)) {
            return int{ZELC_OK};
        }
        analyser->analyser.endOfStream(declared_s >= 0.0 ? std::optional(declared_s) : std::nullopt);
        return int{ZELC_OK};
    });
}

int zelc_analyser_set_rule(zelc_analyser* analyser, uint32_t kind, double min_s, double gap_s) {
    return ZELC::guarded([&] {
        if (analyser == nullptr || kind >= ZEL::kEventKinds) {
            return ZELC::failed(ZELC_INVALID, "no analyser, or no such kind of event");
        }
        return analyser->analyser.setRule(static_cast<ZEL::EventKind>(kind), {.min_s = min_s, .gap_s = gap_s})
                   ? int{ZELC_OK}
                   : ZELC::failed(ZELC_INVALID, "a length of time that is negative or not a number");
    });
}

double zelc_analyser_reached(const zelc_analyser* analyser) {
    return analyser != nullptr ? analyser->analyser.reached() : 0.0;
}

double zelc_unwrapped(double stamp_s, double expected_s, double period_s) {
    return ZEL::StreamClock::unwrapped(stamp_s, expected_s, period_s);
}
