#ifndef ZEL_TESTS_UNIT_EVENTS_FEEDING_H_
#define ZEL_TESTS_UNIT_EVENTS_FEEDING_H_

#include <zel/events/analyser.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "support/events.h"
#include "support/log_capture.h"

/// An analyser that is fed small grey frames, all alike, and silence; what it finds is in `heard`.
class Feeding {
  public:
    static constexpr double kFrame = 0.04;
    static constexpr double kBlock = 0.02;

    explicit Feeding(const ZEL::AnalyserOptions& options = {}) : analyser(heard, options) {}
    Feeding(ZEL::StreamTracks tracks, double stall_s) : Feeding(withStall(tracks, stall_s)) {}

    /// A frame every `step_s` from `from_s` up to `to_s`, each said to last `stated_s`.
    void film(double from_s, double to_s, double step_s = kFrame, double stated_s = kFrame) {
        for (int i = 0; from_s + i * step_s < to_s - 1e-9; ++i) {
            frame(from_s + i * step_s, stated_s);
        }
    }
    void frame(double time_s, double stated_s = kFrame, uint8_t luma = 128) {
        std::array<uint8_t, 64 * 64> plane;
        plane.fill(luma);
        std::array<uint8_t, 32 * 32> chroma;
        chroma.fill(128);
        EXPECT_TRUE(analyser.feedVideo({.width = 64,
                                        .height = 64,
                                        .data = {plane.data(), chroma.data(), chroma.data()},
                                        .stride = {64, 32, 32}},
                                       time_s, stated_s));
        plane.fill(0);  // borrowed for the call
        chroma.fill(0);
    }
    void sound(double from_s, double to_s, int16_t level = 0) {
        for (int i = 0; from_s + i * kBlock < to_s - 1e-9; ++i) {
            std::array<int16_t, 160> samples;
            samples.fill(level);
            EXPECT_TRUE(analyser.feedAudio(
                {.sample_rate = 8000, .samples = 160, .channels = 1, .data = samples.data()},
                from_s + i * kBlock));
            samples.fill(9999);
        }
    }
    /// Both, interleaved by the second.
    void play(double from_s, double to_s) {
        for (double time_s = from_s; time_s < to_s - 1e-9; time_s += 1.0) {
            film(time_s, time_s + 1.0);
            sound(time_s, time_s + 1.0);
        }
    }
    std::vector<ZEL::Event> end(std::optional<double> declared_s = {}) {
        analyser.endOfStream(declared_s);
        EXPECT_THAT(heard.open, testing::Each(false));
        return heard.events;
    }
    std::vector<ZEL::Event> stalls() {
        end();
        return heard.eventsOf(ZEL::EventKind::kStall);
    }
    double reached() const { return analyser.reached(); }

    support::EventRecorder heard;
    ZEL::EventAnalyser analyser;

  private:
    static ZEL::AnalyserOptions withStall(ZEL::StreamTracks tracks, double stall_s) {
        ZEL::AnalyserOptions options{.tracks = tracks};
        options.rules[indexOf(ZEL::EventKind::kStall)].min_s = stall_s;
        return options;
    }

    const support::LogCapture quiet_;  // the frames are all alike, and the detector says so of each
};

inline constexpr ZEL::StreamTracks kVideoOnly{.video = true, .audio = false};
inline constexpr ZEL::StreamTracks kAudioOnly{.video = false, .audio = true};

#endif  // ZEL_TESTS_UNIT_EVENTS_FEEDING_H_
