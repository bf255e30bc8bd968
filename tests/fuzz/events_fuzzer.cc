// Streams whose timestamps, lengths, formats and content are anything: whatever they do, stream time runs
// forward, and each kind of event is raised and cleared in turn, over stretches that do not overlap.
#include <zel/base/log.h>
#include <zel/events/analyser.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "fuzz/bytes.h"

namespace {

using fuzz::Bytes;

class Listener : public ZEL::EventListener {
  public:
    void onRaised(ZEL::EventKind kind, double start_s, double noticed_s) override {
        State& state = of(kind);
        MUST_HOLD(!state.raised);
        MUST_HOLD(start_s <= noticed_s + ZEL::kSlackS);
        state.raised = true;
    }
    void onCleared(const ZEL::Event& event) override {
        State& state = of(event.kind);
        MUST_HOLD(state.raised);
        MUST_HOLD(event.span.start_s <= event.span.end_s);
        MUST_HOLD(event.span.start_s >= state.last_end_s - ZEL::kSlackS);
        MUST_HOLD(event.share >= 0.0 && event.share <= 1.0);
        state = {.raised = false, .last_end_s = event.span.end_s};
    }
    void onGap(ZEL::StreamTrack /*track*/, ZEL::TimeSpan span) override { MUST_HOLD(span.length() > 0.0); }
    void onFrame(const ZEL::FrameMeasurement& frame) override {
        MUST_HOLD(std::isfinite(frame.start_s));
        MUST_HOLD(!last_frame_s_ || frame.start_s >= *last_frame_s_);
        last_frame_s_ = frame.start_s;
    }
    void onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& /*result*/) override {
        MUST_HOLD(period.start_s <= period.end_s);
    }

    bool anyOpen() const {
        bool open = false;
        for (const State& state : states_) {
            open = open || state.raised;
        }
        return open;
    }

  private:
    struct State {
        bool raised = false;
        double last_end_s = -HUGE_VAL;
    };
    State& of(ZEL::EventKind kind) { return states_[ZEL::indexOf(kind)]; }

    ZEL::PerEventKind<State> states_;
    std::optional<double> last_frame_s_;
};

/// Mostly one step on, sometimes a jump, seldom nonsense.
double nextTime(Bytes& bytes, double& clock_s, double step_s) {
    switch (bytes.next() % 16) {
        case 0:
            return clock_s += bytes.number();
        case 1:
            return clock_s += bytes.number() * 1000.0;
        case 2:
            return clock_s + bytes.number() / 100.0;
        case 3:
            return clock_s;
        case 4:
            return bytes.next() % 2 == 0 ? NAN : 1e300 * bytes.number();
        default:
            return clock_s += step_s;
    }
}

void feedVideo(ZEL::EventAnalyser& analyser, Bytes& bytes, double& clock_s) {
    const uint32_t width = 2U * (bytes.next() % 24U);
    const uint32_t height = 2U * (bytes.next() % 24U);
    const std::vector<uint8_t> luma = bytes.fill(size_t{width} * height + 1);
    const std::vector<uint8_t> chroma(size_t{width / 2} * (height / 2) + 1, bytes.next());
    const ZELAlgo::ZELVideoPlanes frame{.width = width,
                                        .height = height,
                                        .data = {luma.data(), chroma.data(), chroma.data()},
                                        .stride = {width, width / 2, width / 2}};
    const double time_s = nextTime(bytes, clock_s, 0.04);
    const uint8_t repeats = bytes.next() % 8 == 0 ? bytes.next() : 1;
    for (uint8_t i = 0; i < repeats; ++i) {
        analyser.feedVideo(frame, time_s + i * 0.04, bytes.number() / 20.0);
    }
    clock_s += repeats > 1 ? repeats * 0.04 : 0.0;
}

void feedAudio(ZEL::EventAnalyser& analyser, Bytes& bytes, double& clock_s) {
    constexpr std::array<uint32_t, 6> kRates{8000, 48000, 99, 0, 44100, 384000};
    const uint32_t channels = bytes.next() % 4;
    const uint32_t samples = bytes.below(4096);
    std::vector<int16_t> interleaved(size_t{samples} * channels + 1);
    const auto step = static_cast<uint32_t>(bytes.number());
    for (size_t i = 0; i < interleaved.size(); ++i) {
        interleaved[i] = static_cast<int16_t>(step * step * i);
    }
    const uint32_t rate = kRates[bytes.next() % kRates.size()];
    analyser.feedAudio({rate, samples, channels, interleaved.data()},
                       nextTime(bytes, clock_s, samples / (rate + 1.0)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    Bytes bytes(data, size);
    const uint8_t options = bytes.next();
    Listener listener;
    const ZEL::StreamTracks tracks{
        .video = (options & 1) == 0, .audio = (options & 2) == 0, .still = (options & 4) != 0};
    ZEL::EventAnalyser analyser(
        listener, {.tracks = tracks,
                   .late_after_s = (options & 8) != 0 ? std::optional(bytes.next() / 16.0) : std::nullopt});
    double video_s = 0.0;
    double audio_s = 0.0;
    while (!bytes.empty()) {
        const uint8_t what = bytes.next() % 16;
        if (what == 0) {
            const auto kind = static_cast<ZEL::EventKind>(bytes.next() % (ZEL::kEventKinds + 1));
            analyser.setRule(kind, {.min_s = bytes.number() / 8.0, .gap_s = bytes.number() / 8.0});
        } else if (what < 10 && tracks.video) {
            feedVideo(analyser, bytes, video_s);
        } else if (tracks.audio) {
            feedAudio(analyser, bytes, audio_s);
        }
        MUST_HOLD(std::isfinite(analyser.reached()));
    }
    analyser.endOfStream((options & 16) != 0 ? std::optional(bytes.number() * 1.0) : std::nullopt);
    MUST_HOLD(!listener.anyOpen());
    return 0;
}
