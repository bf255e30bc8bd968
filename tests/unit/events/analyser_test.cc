#include <zel/events/analyser.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "unit/events/feeding.h"

namespace {

using support::isEvent;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using ZEL::EventKind;

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();
constexpr uint8_t kDark = 16;

TEST(EventAnalyser, RefusesWhatIsMalformedAndGoesOn) {
    Feeding feeding;
    const std::vector<uint8_t> plane(64 * 64, 128);
    const ZELAlgo::ZELVideoPlanes good{.width = 64,
                                       .height = 64,
                                       .data = {plane.data(), plane.data(), plane.data()},
                                       .stride = {64, 32, 32}};
    ZELAlgo::ZELVideoPlanes odd = good;
    odd.width = 63;
    ZELAlgo::ZELVideoPlanes hollow = good;
    hollow.data[2] = nullptr;
    ZELAlgo::ZELVideoPlanes narrow = good;
    narrow.stride[1] = 31;
    for (const auto& bad : {odd, hollow, narrow}) {
        EXPECT_FALSE(feeding.analyser.feedVideo(bad, 0.0));
    }
    EXPECT_FALSE(feeding.analyser.feedVideo(good, kNaN));
    EXPECT_FALSE(feeding.analyser.feedVideo(good, kInfinity));

    const std::vector<int16_t> samples(160);
    const ZELAlgo::ZELAudioFrame sound{
        .sample_rate = 8000, .samples = 160, .channels = 1, .data = samples.data()};
    EXPECT_FALSE(feeding.analyser.feedAudio({0, 160, 1, samples.data()}, 0.0));
    EXPECT_FALSE(feeding.analyser.feedAudio({8000, 160, 0, samples.data()}, 0.0));
    EXPECT_FALSE(feeding.analyser.feedAudio({8000, 160, 1, nullptr}, 0.0));
    EXPECT_FALSE(feeding.analyser.feedAudio(sound, -kInfinity));
    EXPECT_TRUE(feeding.analyser.feedAudio({8000, 0, 1, samples.data()}, 0.0))
        << "there is just nothing in it";

    for (const double duration_s : {0.04, 0.0, -1.0, kNaN, kInfinity}) {
        EXPECT_TRUE(feeding.analyser.feedVideo(good, 0.04 * static_cast<double>(feeding.heard.frames.size()),
                                               duration_s));
    }
    EXPECT_THAT(feeding.end(), IsEmpty());
    EXPECT_NEAR(feeding.reached(), 0.2, 0.05);
    ASSERT_EQ(feeding.heard.frames.size(), 5U);
    EXPECT_EQ(feeding.heard.frames.back().index, 4U) << "what was refused has no number";

    EXPECT_FALSE(feeding.analyser.feedVideo(good, 1.0)) << "the stream is over";
    EXPECT_FALSE(feeding.analyser.feedAudio(sound, 1.0));
    feeding.analyser.endOfStream(100.0);
    EXPECT_THAT(feeding.heard.events, IsEmpty());
}

TEST(EventAnalyser, RefusesRulesThatAreNoLengths) {
    Feeding feeding;
    EXPECT_FALSE(feeding.analyser.setRule(EventKind::kBlack, {-1.0, 0.0}));
    EXPECT_FALSE(feeding.analyser.setRule(EventKind::kBlack, {0.5, kNaN}));
    EXPECT_FALSE(feeding.analyser.setRule(static_cast<EventKind>(200), {0.5, 0.1}));
    EXPECT_TRUE(feeding.analyser.setRule(EventKind::kBlack, {kInfinity, 0.0})) << "never an event";
    ZEL::AnalyserOptions options;
    options.rules[indexOf(EventKind::kMute)].gap_s = kNaN;
    EXPECT_THROW(ZEL::EventAnalyser(feeding.heard, options), std::invalid_argument);
    EXPECT_THROW(ZEL::EventAnalyser(feeding.heard, {.late_after_s = kNaN}), std::invalid_argument);
}

TEST(EventAnalyser, FramesKeepTheirVerdictsWhileTheyWaitForTheirPlaces) {
    Feeding feeding({.tracks = kVideoOnly});
    std::vector<double> places;
    for (int i = 0; i < 20; ++i) {
        const double jump_s = i < 17 ? 0.0 : 90.0;  // back, so that the last ones are held
        feeding.frame(100.0 - jump_s + 0.04 * i, Feeding::kFrame, i % 2 == 0 ? kDark : 128);
        places.push_back(100.0 + 0.04 * i);
    }
    EXPECT_EQ(feeding.heard.frames.size(), 17U);
    feeding.end();
    ASSERT_EQ(feeding.heard.frames.size(), 20U);
    for (size_t i = 0; i < 20; ++i) {
        const ZEL::FrameMeasurement& frame = feeding.heard.frames[i];
        EXPECT_EQ(frame.index, i);
        EXPECT_NEAR(frame.start_s, places[i], 1e-9);
        EXPECT_EQ(frame.verdicts.screen_type, i % 2 == 0 ? ZELAlgo::kScreenBlack : ZELAlgo::kScreenNormal);
    }
}

TEST(EventAnalyser, EventsAreRaisedAndClearedWhileTheStreamRuns) {
    Feeding feeding({.tracks = kVideoOnly});
    const auto dark = [&feeding](double from_s, double to_s) {
        for (int i = 0; from_s + i * Feeding::kFrame < to_s - 1e-9; ++i) {
            feeding.frame(from_s + i * Feeding::kFrame, Feeding::kFrame, kDark);
        }
    };
    feeding.film(0.0, 1.0);
    dark(1.0, 1.48);
    EXPECT_EQ(feeding.heard.suspected[indexOf(EventKind::kBlack)], 1);
    EXPECT_THAT(feeding.heard.raised, IsEmpty());
    dark(1.48, 1.6);
    ASSERT_EQ(feeding.heard.raised.size(), 1U);
    EXPECT_EQ(feeding.heard.raised[0].kind, EventKind::kBlack);
    EXPECT_NEAR(feeding.heard.raised[0].start_s, 1.0, 1e-9);
    EXPECT_NEAR(feeding.heard.raised[0].noticed_s, 1.52, 1e-9);
    feeding.film(1.6, 1.8);
    EXPECT_THAT(feeding.heard.events, ElementsAre(isEvent(EventKind::kBlack, 1.0, 1.6)));

    EXPECT_TRUE(feeding.analyser.setRule(EventKind::kBlack, {5.0, 0.1}));
    dark(1.8, 3.0);
    EXPECT_EQ(feeding.heard.raised.size(), 1U);
    EXPECT_TRUE(feeding.analyser.setRule(EventKind::kBlack, {1.0, 0.1}));
    ASSERT_EQ(feeding.heard.raised.size(), 2U);
    EXPECT_NEAR(feeding.heard.raised[1].start_s, 1.8, 1e-9);
    EXPECT_THAT(feeding.end(), ElementsAre(isEvent(EventKind::kBlack, 1.0, 1.6),
                                           isEvent(EventKind::kBlack, 1.8, 3.0, true)));
}

TEST(EventAnalyser, ChannelsAreHeardTogetherAndRatesMayChange) {
    Feeding feeding({.tracks = {.video = false}});
    double time_s = 0.0;
    const auto hear = [&](uint32_t rate, const std::vector<int16_t>& step, double seconds) {
        std::vector<int16_t> samples;
        for (uint32_t i = 0; i < rate / 50; ++i) {
            samples.insert(samples.end(), step.begin(), step.end());
        }
        for (int block = 0; block < std::lround(seconds * 50); ++block, time_s += 0.02) {
            EXPECT_TRUE(feeding.analyser.feedAudio(
                {rate, rate / 50, static_cast<uint32_t>(step.size()), samples.data()}, time_s));
        }
    };
    hear(48'000, {900, 900}, 2.0);
    hear(48'000, {900, -900}, 3.0);  // the mean is silent, the channels are not
    hear(44'100, {500, 500, 500, 500, 500, 500}, 2.0);
    hear(8'000, {0}, 2.0);
    feeding.end();
    EXPECT_THAT(feeding.heard.eventsOf(EventKind::kMute),
                ElementsAre(isEvent(EventKind::kMute, 7.0, 9.0, true)));
    ASSERT_EQ(feeding.heard.eventsOf(EventKind::kAntiphase).size(), 1U);
    EXPECT_NEAR(feeding.heard.eventsOf(EventKind::kAntiphase)[0].span.start_s, 2.0, 0.3);
}

TEST(EventAnalyser, GapsAreToldForEachTrackAndTheMissingEndForTheStream) {
    Feeding feeding;
    feeding.film(0.0, 2.0);
    feeding.sound(0.0, 3.0, 900);
    feeding.film(5.0, 8.0);
    feeding.sound(6.0, 8.0, 900);
    feeding.analyser.setRule(EventKind::kStall, {0.3, 0.1});
    feeding.film(8.5, 10.5);
    feeding.sound(8.0, 10.5, 900);
    const std::vector<ZEL::Event> events = feeding.end(20.0);
    EXPECT_THAT(events, testing::IsSupersetOf({isEvent(EventKind::kStall, 2.0, 6.0),
                                               isEvent(EventKind::kStall, 8.0, 8.5),
                                               isEvent(EventKind::kShort, 10.5, 20.0)}));
    ASSERT_EQ(feeding.heard.gaps.size(), 3U);
    EXPECT_EQ(feeding.heard.gaps[0].track, ZEL::StreamTrack::kVideo);
    EXPECT_THAT(feeding.heard.gaps[0].span.end_s, DoubleNear(5.0, 1e-9));
    EXPECT_EQ(feeding.heard.gaps[1].track, ZEL::StreamTrack::kAudio);
    EXPECT_THAT(feeding.heard.gaps[1].span.start_s, DoubleNear(3.0, 1e-9));
}

TEST(EventAnalyser, TimeRunsOnThroughDiscontinuitiesBackward) {
    for (const double jump_s : {5.0, 8589934592.0 / 90000.0}) {
        Feeding feeding;
        for (int i = 0; i < 20; ++i) {
            const double time_s = 100'000.0 + i - (i >= 10 ? jump_s : 0.0);
            feeding.film(time_s, time_s + 1.0);
            feeding.sound(time_s, time_s + 1.0, 900);
        }
        EXPECT_THAT(feeding.stalls(), IsEmpty()) << jump_s;
        EXPECT_NEAR(feeding.reached(), 100'020.0, 1e-6) << jump_s;
    }
}

}  // namespace
