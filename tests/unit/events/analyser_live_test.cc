#include <zel/base/log.h>
#include <zel/events/analyser.h>

#include <array>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "events/gaps.h"
#include "support/allocations.h"
#include "unit/events/feeding.h"

namespace {

using support::isEvent;
using testing::ElementsAre;
using testing::IsEmpty;
using ZEL::EventKind;

std::vector<support::EventRecorder::Raise> stallsRaised(const Feeding& feeding) {
    std::vector<support::EventRecorder::Raise> found;
    for (const auto& raise : feeding.heard.raised) {
        if (raise.kind == EventKind::kStall) {
            found.push_back(raise);
        }
    }
    return found;
}

TEST(LiveStream, TrackThatFallsBehindIsRaisedWhileTheStreamRuns) {
    for (const bool live : {true, false}) {
        Feeding feeding({.late_after_s = live ? std::optional(2.0) : std::nullopt});
        feeding.play(0.0, 3.0);
        feeding.sound(3.0, 5.0);
        EXPECT_THAT(stallsRaised(feeding), IsEmpty());
        feeding.sound(5.0, 10.0);
        if (live) {
            ASSERT_EQ(stallsRaised(feeding).size(), 1U);
            EXPECT_NEAR(stallsRaised(feeding)[0].start_s, 3.0, 1e-6);
            EXPECT_NEAR(stallsRaised(feeding)[0].noticed_s, 5.02, 1e-6);
            ASSERT_TRUE(feeding.analyser.evidence(EventKind::kStall)) << "what is known so far";
            EXPECT_NEAR(feeding.analyser.evidence(EventKind::kStall)->value, 7.0, 0.1);
            EXPECT_NEAR(feeding.analyser.evidence(EventKind::kMute)->value, 0.0, 1e-9);
            EXPECT_FALSE(feeding.analyser.evidence(EventKind::kBlack));
        } else {
            EXPECT_THAT(stallsRaised(feeding), IsEmpty());
        }
        feeding.play(10.0, 11.0);
        EXPECT_FALSE(feeding.analyser.evidence(EventKind::kStall)) << "it was cleared";
        EXPECT_THAT(feeding.stalls(), ElementsAre(isEvent(EventKind::kStall, 3.0, 10.0)));
        EXPECT_EQ(feeding.heard.gaps.size(), 1U);
    }
}

TEST(LiveStream, TrackThatNeverComesIsRaisedAndTheOtherOneIsStillWatched) {
    Feeding feeding({.late_after_s = 2.0});
    feeding.film(0.0, 4.0);
    ASSERT_EQ(stallsRaised(feeding).size(), 1U);
    EXPECT_DOUBLE_EQ(stallsRaised(feeding)[0].start_s, 0.0);
    feeding.film(8.0, 20.0);
    EXPECT_THAT(feeding.stalls(), ElementsAre(isEvent(EventKind::kStall, 0.0, 20.0, true)));
}

TEST(LiveStream, TrackThatCatchesUpIsCleared) {
    Feeding feeding({.late_after_s = 2.0});
    feeding.play(0.0, 3.0);
    feeding.sound(3.0, 8.0);
    ASSERT_EQ(stallsRaised(feeding).size(), 1U);
    feeding.film(3.0, 8.0);  // it was only late
    feeding.play(8.0, 10.0);
    EXPECT_THAT(feeding.heard.eventsOf(EventKind::kStall), ElementsAre(isEvent(EventKind::kStall, 3.0, 8.0)));
    EXPECT_THAT(feeding.heard.gaps, IsEmpty());
}

TEST(LiveStream, SlidesAndCoversAreNotLate) {
    Feeding slides({.late_after_s = 2.0});
    for (int i = 0; i < 6; ++i) {
        slides.frame(5.0 * i, 5.0);
        slides.sound(5.0 * i, 5.0 * (i + 1));
    }
    EXPECT_THAT(slides.stalls(), IsEmpty());
    Feeding song({.tracks = {.still = true}, .late_after_s = 2.0});
    song.frame(0.0);
    song.sound(0.0, 10.0);
    EXPECT_THAT(song.stalls(), IsEmpty());
}

/// Hears everything and keeps nothing.
struct Counter : ZEL::EventListener {
    void onRaised(EventKind /*kind*/, double /*start_s*/, double /*noticed_s*/) override { ++raised; }
    void onCleared(const ZEL::Event& /*event*/) override { ++cleared; }
    void onGap(ZEL::StreamTrack /*track*/, ZEL::TimeSpan /*span*/) override { ++gaps; }
    size_t raised = 0;
    size_t cleared = 0;
    size_t gaps = 0;
};

/// An hour in which black, grey and missing frames follow each other, and silence, hiss and missing sound;
/// the timestamps begin again now and then.
void playFaults(ZEL::EventAnalyser& analyser, int from_second, int to_second, bool with_sound) {
    std::array<uint8_t, 16 * 16> luma{};
    std::array<uint8_t, 8 * 8> chroma{};
    chroma.fill(128);
    std::array<int16_t, 80> samples{};
    for (int second = from_second; second < to_second; ++second) {
        const double time_s = second % 900;
        luma.fill(second % 8 < 2 ? 16 : 90);
        for (int i = 0; i < 5 && second % 10 < 8; ++i) {
            EXPECT_TRUE(analyser.feedVideo({.width = 16,
                                            .height = 16,
                                            .data = {luma.data(), chroma.data(), chroma.data()},
                                            .stride = {16, 8, 8}},
                                           time_s + 0.2 * i, 0.2));
        }
        samples.fill(second % 10 == 0 ? 700 : 0);
        for (int i = 0; i < 100 && with_sound && second % 15 < 13; ++i) {
            EXPECT_TRUE(analyser.feedAudio({8000, 80, 1, samples.data()}, time_s + 0.01 * i));
        }
    }
}

TEST(LiveStream, MemoryStaysTheSameOverAnHourOfFaults) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    for (const bool with_sound : {true, false}) {
        for (const std::optional<double> late_after_s : {std::optional<double>(), std::optional(2.0)}) {
            Counter heard;
            ZEL::EventAnalyser analyser(heard, {.late_after_s = late_after_s});
            playFaults(analyser, 0, 600, with_sound);
            const size_t early = support::allocationsAlive();
            const size_t raised_early = heard.raised;
            playFaults(analyser, 600, 3600, with_sound);
            EXPECT_LE(support::allocationsAlive(), early + 5) << with_sound << late_after_s.has_value();
            EXPECT_GT(heard.raised, raised_early * 4);
            EXPECT_GE(heard.gaps, 300U);
            EXPECT_LE(heard.raised - heard.cleared, ZEL::kEventKinds);
            analyser.endOfStream();
            EXPECT_EQ(heard.raised, heard.cleared);
        }
    }
    ZEL::setLogSink(nullptr, nullptr);
}

TEST(LiveStream, GapsDoNotWaitForeverForATrackThatNeverComes) {
    ZEL::Gaps gaps({});
    size_t told = 0;
    for (size_t i = 0; i < 5000; ++i) {
        const double start_s = 2.0 * static_cast<double>(i);
        gaps.add(ZEL::StreamTrack::kVideo, {start_s, start_s + 1.0});
        for (const ZEL::TimeSpan& gap : gaps.takeSettled()) {
            EXPECT_DOUBLE_EQ(gap.start_s, 2.0 * static_cast<double>(told++));
        }
    }
    EXPECT_EQ(told, 5000 - ZEL::Gaps::kMostWaiting);
    gaps.reach(ZEL::StreamTrack::kAudio, 1e9);
    EXPECT_EQ(gaps.takeSettled().size(), ZEL::Gaps::kMostWaiting);
}

}  // namespace
