#include <zel/events/analyser.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "unit/events/feeding.h"

namespace {

using testing::IsEmpty;
using ZEL::EventKind;

constexpr uint32_t kRate = 48'000;
constexpr uint32_t kBlockLength = 1024;

/// Hears sound of two channels, a function of time each, in blocks as coders have them.
class Listener : public Feeding {
  public:
    Listener() : Feeding(ZEL::AnalyserOptions{.tracks = kAudioOnly}) {}

    template <typename Left, typename Right>
    void hear(double seconds, const Left& left, const Right& right) {
        const auto sample = [](double value) {
            return static_cast<int16_t>(std::lround(std::clamp(value, -1.0, 1.0) * 32767.0));
        };
        for (const double end_s = heard_s_ + seconds; heard_s_ < end_s; heard_s_ += kBlockLength / 48'000.0) {
            std::vector<int16_t> block;
            for (uint32_t i = 0; i < kBlockLength; ++i) {
                const double time_s = heard_s_ + i / 48'000.0;
                block.push_back(sample(left(time_s)));
                block.push_back(sample(right(time_s)));
            }
            // Containers round to milliseconds.
            EXPECT_TRUE(analyser.feedAudio({kRate, kBlockLength, 2, block.data()},
                                           std::round(heard_s_ * 1000.0) / 1000.0));
        }
    }
    /// Expects one event of the kind, within a chunk of the judges, raised within a second of its minimum.
    void expectOne(EventKind kind, double start_s, double end_s) {
        end();
        const auto found = heard.eventsOf(kind);
        ASSERT_EQ(found.size(), 1U) << infoOf(kind).name;
        EXPECT_NEAR(found[0].span.start_s, start_s, 0.3);
        EXPECT_NEAR(found[0].span.end_s, end_s, 0.3);
        EXPECT_TRUE(found[0].evidence);
        for (const auto& raise : heard.raised) {
            if (raise.kind == kind) {
                EXPECT_LE(raise.noticed_s, start_s + infoOf(kind).rule.min_s + 1.0);
            }
        }
    }

  private:
    double heard_s_ = 0.0;
};

double tone(double time_s) {
    return 0.3 * std::sin(2.0 * std::numbers::pi * 440.0 * time_s);
}
double otherTone(double time_s) {
    return 0.25 * std::sin(2.0 * std::numbers::pi * 610.0 * time_s);
}
double loud(double time_s) {
    return 8.0 * tone(time_s);
}
double silence(double /*time_s*/) {
    return 0.0;
}

TEST(JudgedSound, ClippingIsRaisedAndCleared) {
    Listener listener;
    listener.hear(3.0, tone, otherTone);
    listener.hear(3.0, tone, loud);
    listener.hear(3.0, tone, otherTone);
    listener.expectOne(EventKind::kClipping, 3.0, 6.0);
    EXPECT_GT(listener.heard.eventsOf(EventKind::kClipping)[0].evidence->value, 0.3);
    EXPECT_THAT(listener.heard.eventsOf(EventKind::kHighVoice), IsEmpty())
        << "it is loud because it is clipped";
}

TEST(JudgedSound, DeadChannelIsRaisedAndCleared) {
    Listener listener;
    listener.hear(3.0, tone, otherTone);
    listener.hear(4.0, silence, otherTone);
    listener.hear(3.0, tone, otherTone);
    listener.expectOne(EventKind::kDeadChannel, 3.0, 7.0);
    EXPECT_DOUBLE_EQ(listener.heard.eventsOf(EventKind::kDeadChannel)[0].evidence->limit, 40.0);
    EXPECT_THAT(listener.heard.eventsOf(EventKind::kMute), IsEmpty());
}

TEST(JudgedSound, AntiphaseIsRaisedAndClearedAndTheMixThatItSilencesIsMute) {
    const auto upside_down = [](double time_s) { return -tone(time_s) * 0.8; };
    Listener listener;
    listener.hear(3.0, tone, otherTone);
    listener.hear(4.0, tone, upside_down);
    listener.hear(3.0, tone, otherTone);
    listener.expectOne(EventKind::kAntiphase, 3.0, 7.0);
    EXPECT_LT(listener.heard.eventsOf(EventKind::kAntiphase)[0].evidence->value, -0.99);
}

TEST(JudgedSound, SilenceIsMuteAndNothingElse) {
    Listener listener;
    listener.hear(3.0, tone, otherTone);
    listener.hear(8.0, silence, silence);
    listener.hear(3.0, tone, otherTone);
    listener.expectOne(EventKind::kMute, 3.0, 11.0);
    EXPECT_DOUBLE_EQ(listener.heard.eventsOf(EventKind::kMute)[0].evidence->value, 0.0);
    for (const ZEL::Event& event : listener.heard.events) {
        EXPECT_TRUE(event.kind == EventKind::kMute || event.span.end_s < 3.1 || event.span.start_s > 10.9)
            << infoOf(event.kind).name;
    }
}

}  // namespace
