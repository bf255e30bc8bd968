#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "events/event_maker.h"
#include "events/event_tracker.h"
#include "scan/analyser.h"
#include "scan/audio_periods.h"
#include "scan/timeline.h"
#include "support/log_capture.h"

namespace {

using namespace zel_monitor;
using zel_monitor::Picture;
using zel_monitor::Sound;
using ZELAlgo::ZELAudioResult;
using ZELAlgo::ZELVideoResult;

constexpr double kFrame = 0.04;

/// Plays pictures and audio periods to an EventMaker and keeps what it makes of them.
class Stage : public ZEL::EventListener {
  public:
    explicit Stage(const ZEL::EventRules& rules = ZEL::defaultEventRules())
        : maker_(rules, ZEL::StreamTracks{}, *this) {}

    void pictures(int count, const ZELVideoResult& result) {
        for (int i = 0; i < count; ++i, video_s_ += kFrame) {
            maker_.picture({video_s_, video_s_ + kFrame}, result);
        }
    }
    void seconds(int count, const ZELAudioResult& result) {
        for (int i = 0; i < count; ++i, audio_s_ += 1.0) {
            maker_.silencePeriod({audio_s_, audio_s_ + 1.0}, result);
            maker_.voicePeriod({audio_s_, audio_s_ + 1.0}, result);
        }
    }
    void videoGap(double seconds) {
        maker_.gap(ZEL::StreamTrack::kVideo, {video_s_, video_s_ + seconds});
        video_s_ += seconds;
    }
    const std::vector<ZEL::Event>& finish(ZEL::StreamEnd end = {}) {
        end.video_s = video_s_;
        end.audio_s = audio_s_;
        maker_.finish(end);
        return events_;
    }
    int begun(ZEL::EventKind kind) const { return begun_[indexOf(kind)]; }

    void onRunBegan(ZEL::EventKind kind) override { ++begun_[indexOf(kind)]; }
    void onEvent(const ZEL::Event& event) override { events_.push_back(event); }

  private:
    ZEL::EventMaker maker_;
    double video_s_ = 0.0;
    double audio_s_ = 0.0;
    std::vector<ZEL::Event> events_;
    ZEL::PerEventKind<int> begun_{};
};

auto isEvent(ZEL::EventKind kind, double start, double end, bool open = false) {
    using testing::AllOf;
    using testing::DoubleNear;
    using testing::Field;
    return AllOf(Field("kind", &ZEL::Event::kind, kind), Field("open_at_end", &ZEL::Event::open_at_end, open),
                 Field("span", &ZEL::Event::span,
                       AllOf(Field("start", &ZEL::TimeSpan::start_s, DoubleNear(start, 1e-6)),
                             Field("end", &ZEL::TimeSpan::end_s, DoubleNear(end, 1e-6)))));
}

const ZELVideoResult kGood{};
const ZELVideoResult kBlackPicture{
    .status = 0, .screen_type = 1, .exposure_type = 0, .is_block = false, .is_staticframe = false};
const ZELVideoResult kBlackAndStill{
    .status = 0, .screen_type = 1, .exposure_type = 0, .is_block = false, .is_staticframe = true};
const ZELVideoResult kStill{
    .status = 0, .screen_type = 0, .exposure_type = 0, .is_block = false, .is_staticframe = true};

TEST(ScanEvents, RunShorterThanTheMinimumIsNoEvent) {
    ZEL::EventTracker tracker(ZEL::EventKind::kBlack, {0.5, 0.1});
    EXPECT_TRUE(tracker.see({0.0, 0.48}, ZEL::Sight::kPresent).began);
    EXPECT_FALSE(tracker.see({0.48, 1.0}, ZEL::Sight::kAbsent).ended);
    EXPECT_FALSE(tracker.finish(1.0));
}

TEST(ScanEvents, InterruptionUpToTheGapIsBridgedAndLowersTheShare) {
    ZEL::EventTracker tracker(ZEL::EventKind::kBlack, {0.5, 0.2});
    tracker.see({1.0, 1.4}, ZEL::Sight::kPresent);
    EXPECT_FALSE(tracker.see({1.4, 1.6}, ZEL::Sight::kAbsent).ended);
    tracker.see({1.6, 1.8}, ZEL::Sight::kPresent);
    const auto ended = tracker.see({1.8, 2.1}, ZEL::Sight::kAbsent).ended;
    ASSERT_TRUE(ended);
    EXPECT_THAT(*ended, isEvent(ZEL::EventKind::kBlack, 1.0, 1.8));
    EXPECT_NEAR(ended->share, 0.75, 1e-9);
}

TEST(ScanEvents, ScatteredSightsAreNoEvent) {
    ZEL::EventTracker tracker(ZEL::EventKind::kLowVoice, {1.0, 2.0});
    for (int i = 0; i < 10; ++i) {
        tracker.see({2.0 * i, 2.0 * i + 0.5}, ZEL::Sight::kPresent);
        tracker.see({2.0 * i + 0.5, 2.0 * i + 2.0}, ZEL::Sight::kAbsent);
    }
    EXPECT_FALSE(tracker.finish(20.0));
}

TEST(ScanEvents, UnknownTimePassesButCountsNeitherWay) {
    ZEL::EventTracker tracker(ZEL::EventKind::kLowVoice, {1.0, 2.0});
    tracker.see({0.0, 1.0}, ZEL::Sight::kPresent);
    tracker.see({1.0, 2.0}, ZEL::Sight::kUnknown);
    tracker.see({2.0, 3.0}, ZEL::Sight::kPresent);
    const auto ended = tracker.see({3.0, 5.5}, ZEL::Sight::kUnknown).ended;
    ASSERT_TRUE(ended);
    EXPECT_THAT(*ended, isEvent(ZEL::EventKind::kLowVoice, 0.0, 3.0));
    EXPECT_DOUBLE_EQ(ended->share, 1.0);
}

TEST(ScanEvents, EventsAreTimedToThePictureAndClosedAtTheEndOfTheStream) {
    Stage stage;
    stage.pictures(25, kGood);
    stage.pictures(50, kBlackPicture);
    stage.pictures(25, kGood);
    stage.pictures(25, kBlackPicture);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(ZEL::EventKind::kBlack, 1.0, 3.0),
                                                     isEvent(ZEL::EventKind::kBlack, 4.0, 5.0, true)));
    EXPECT_EQ(stage.begun(ZEL::EventKind::kBlack), 2);
}

TEST(ScanEvents, FreezeBeginsWithThePictureThatIsRepeated) {
    Stage stage;
    stage.pictures(26, kGood);  // the last of them stands still from 1.0 s on
    stage.pictures(74, kStill);
    stage.pictures(25, kGood);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(ZEL::EventKind::kFreeze, 1.0, 4.0)));
}

TEST(ScanEvents, BlackOrGreenStretchIsNotAlsoFrozen) {
    Stage stage;
    stage.pictures(25, kGood);
    stage.pictures(100, kBlackAndStill);
    stage.pictures(100, kStill);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(ZEL::EventKind::kBlack, 1.0, 5.0),
                                                     isEvent(ZEL::EventKind::kFreeze, 5.0, 9.0, true)));
}

TEST(ScanEvents, FirstPictureIsLikeNoOther) {
    ZEL::EventRules rules = ZEL::defaultEventRules();
    rules[indexOf(ZEL::EventKind::kFreeze)].min_s = 0.0;
    Stage stage(rules);
    stage.pictures(1, kStill);
    stage.pictures(1, kGood);
    EXPECT_THAT(stage.finish(), testing::IsEmpty());
}

TEST(ScanEvents, SilenceHidesTheVoiceVerdictsThatItImplies) {
    ZELAudioResult silence{};
    silence.is_mute = silence.is_low_voicelevel = silence.is_novoice_longtime = 1;
    ZELAudioResult nobody{};
    nobody.is_low_voicelevel = nobody.is_novoice_longtime = 1;
    Stage stage;
    stage.seconds(10, silence);
    stage.seconds(10, nobody);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(ZEL::EventKind::kMute, 0.0, 10.0),
                                                     isEvent(ZEL::EventKind::kNoVoice, 10.0, 20.0, true)));
}

TEST(ScanEvents, GapInTheTimestampsIsAStallAndNeverAFreeze) {
    Stage stage;
    stage.pictures(25, kGood);
    stage.videoGap(5.0);
    stage.pictures(10, kStill);
    stage.videoGap(0.5);
    stage.pictures(10, kStill);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 1.0, 6.0)));
}

TEST(ScanEvents, EndBeforeTheDeclaredOneIsShort) {
    Stage early;
    early.pictures(25, kGood);
    EXPECT_THAT(early.finish({.declared_s = 10.0}),
                testing::ElementsAre(isEvent(ZEL::EventKind::kShort, 1.0, 10.0)));
    Stage whole;
    whole.pictures(25, kGood);
    EXPECT_THAT(whole.finish({.declared_s = 1.5}), testing::IsEmpty());
}

TEST(ScanEvents, StillPictureNeedsNoMinimum) {
    Stage stage;
    stage.pictures(1, kBlackPicture);
    EXPECT_THAT(stage.finish({.declared_s = {}, .still_picture = true}),
                testing::ElementsAre(isEvent(ZEL::EventKind::kBlack, 0.0, kFrame, true)));
}

/// Gives an Analyser pictures that are all alike and silence, and keeps the stalls that it finds.
class Screening : public AnalysisListener {
  public:
    explicit Screening(ZEL::StreamTracks tracks, double stall_s = 1.0)
        : analyser_(rules(stall_s), tracks, *this) {}

    /// A picture every `step_s` from `from_s` up to `to_s`, each said to last `stated_s`.
    void film(double from_s, double to_s, double step_s = kFrame, double stated_s = kFrame) {
        for (int i = 0; from_s + i * step_s < to_s - 1e-9; ++i) {
            picture(from_s + i * step_s, stated_s);
        }
    }
    void picture(double time_s, double stated_s = kFrame) {
        const ZELAlgo::ZELVideoPlanes planes{.width = 64,
                                             .height = 64,
                                             .data = {grey_.data(), grey_.data(), grey_.data()},
                                             .stride = {64, 32, 32}};
        analyser_.take(Picture{.time = time_s, .duration = stated_s, .planes = planes, .frame = {}});
    }
    void sound(double from_s, double to_s) {
        for (int i = 0; from_s + i * 0.02 < to_s - 1e-9; ++i) {
            analyser_.take(Sound{.time = from_s + i * 0.02,
                                 .sample_rate = 8000,
                                 .channels = 1,
                                 .samples = 160,
                                 .data = silence_.data(),
                                 .buffer = {}});
        }
    }
    const std::vector<ZEL::Event>& stalls() {
        analyser_.finish(std::nullopt);
        return stalls_;
    }
    double reached() const { return analyser_.reached(); }

    void onRunBegan(ZEL::EventKind /*kind*/) override {}
    void onEvent(const ZEL::Event& event) override {
        if (event.kind == ZEL::EventKind::kStall) {
            stalls_.push_back(event);
        }
    }
    void onPicture(const Picture& /*picture*/, double /*time_s*/) override {}
    void onSilencePeriod(ZEL::TimeSpan /*period*/, const ZELAudioResult& /*result*/) override {}
    void onVoicePeriod(ZEL::TimeSpan /*period*/, const ZELAudioResult& /*result*/) override {}

  private:
    static ZEL::EventRules rules(double stall_s) {
        ZEL::EventRules rules = ZEL::defaultEventRules();
        rules[indexOf(ZEL::EventKind::kStall)].min_s = stall_s;
        return rules;
    }

    std::array<uint8_t, 64 * 64> grey_{};
    std::array<int16_t, 160> silence_{};
    std::vector<ZEL::Event> stalls_;
    Analyser analyser_;
};

class ScanStalls : public testing::Test {
    const support::LogCapture quiet_;  // the pictures are all alike, and the detector says so of each
};

constexpr ZEL::StreamTracks kVideoOnly{.video = true, .audio = false};

TEST_F(ScanStalls, GrowingGapsInAFilmAreAllStalls) {
    Screening film(kVideoOnly);
    film.film(0.0, 3.0);
    film.film(3.9, 5.0);
    film.film(6.8, 8.0);
    film.film(10.8, 12.0);
    film.film(15.6, 17.0);
    EXPECT_THAT(film.stalls(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 5.02, 6.8),
                                                    isEvent(ZEL::EventKind::kStall, 8.0, 10.8),
                                                    isEvent(ZEL::EventKind::kStall, 12.0, 15.6)));
}

TEST_F(ScanStalls, GapThatTheContainerStatesAsALongPictureIsAStall) {
    Screening film(kVideoOnly);
    film.film(0.0, 2.0);
    film.picture(2.0, 3.04);
    film.film(5.04, 7.0);
    EXPECT_THAT(film.stalls(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 2.04, 5.04)));
}

TEST_F(ScanStalls, VariableFrameRatesAndSlideShowsAreWhole) {
    Screening film(kVideoOnly);
    film.film(0.0, 3.0, 0.2);
    film.film(3.0, 6.0, 0.04);
    film.film(6.0, 9.0, 0.12, 0.12);
    EXPECT_THAT(film.stalls(), testing::IsEmpty());

    Screening stated(kVideoOnly);
    stated.picture(0.0, 0.5);
    stated.picture(0.5, 8.0);
    stated.picture(8.5, 3.0);
    stated.picture(11.5, 60.0);
    EXPECT_THAT(stated.stalls(), testing::IsEmpty());
    EXPECT_DOUBLE_EQ(stated.reached(), 71.5);

    Screening averaged(kVideoOnly);
    for (const double time_s : {0.0, 1.0, 4.0, 12.0}) {
        averaged.picture(time_s, 4.0);
    }
    averaged.picture(40.0, 4.0);
    EXPECT_THAT(averaged.stalls(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 16.0, 40.0)));

    Screening unstated(kVideoOnly);
    for (const double time_s : {0.0, 1.0, 2.0, 7.0}) {
        unstated.picture(time_s);
    }
    EXPECT_THAT(unstated.stalls(), testing::IsEmpty());
}

TEST_F(ScanStalls, LongLastPictureIsBelieved) {
    Screening film(kVideoOnly);
    film.film(0.0, 2.0);
    film.picture(2.0, 3.0);
    EXPECT_THAT(film.stalls(), testing::IsEmpty());
    EXPECT_DOUBLE_EQ(film.reached(), 5.0);
}

TEST_F(ScanStalls, ShortGapsAreStallsForWhoeverAsksForThem) {
    Screening film(kVideoOnly, 0.03);
    film.film(0.0, 2.0);
    film.film(2.04, 4.0);
    EXPECT_THAT(film.stalls(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 2.0, 2.04)));
}

TEST_F(ScanStalls, RoundedTimestampsAreNoStallsEvenWhenEveryGapIs) {
    Screening film(kVideoOnly, 0.0);
    for (const double time_s : {0.0, 0.033, 0.067, 0.1, 0.133, 0.167}) {
        film.picture(time_s, 1.0 / 30);
    }
    EXPECT_THAT(film.stalls(), testing::IsEmpty());
}

TEST_F(ScanStalls, TrackThatIsMissingAtEitherEndIsAStall) {
    Screening late_video({});
    late_video.sound(0.0, 4.0);
    late_video.film(4.0, 6.0);
    late_video.sound(4.0, 6.0);
    EXPECT_THAT(late_video.stalls(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 0.0, 4.0)));

    Screening early_end({});
    early_end.film(0.0, 3.0);
    early_end.sound(0.0, 3.0);
    early_end.film(3.0, 10.0);
    EXPECT_THAT(early_end.stalls(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 3.0, 10.0, true)));

    Screening no_sound({});
    no_sound.film(0.0, 2.0);
    EXPECT_THAT(no_sound.stalls(), testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 0.0, 2.0, true)));
}

TEST_F(ScanStalls, CoversAndShortDelaysAreNoStalls) {
    Screening song({.still_picture = true});
    song.picture(0.0);
    song.sound(0.0, 10.0);
    EXPECT_THAT(song.stalls(), testing::IsEmpty());

    Screening film_that_lost_its_pictures({});
    film_that_lost_its_pictures.picture(0.0);
    film_that_lost_its_pictures.sound(0.0, 10.0);
    EXPECT_THAT(film_that_lost_its_pictures.stalls(),
                testing::ElementsAre(isEvent(ZEL::EventKind::kStall, kFrame, 10.0, true)));

    Screening primed({});
    primed.film(0.0, 5.0);
    primed.sound(0.1, 5.5);
    EXPECT_THAT(primed.stalls(), testing::IsEmpty());
}

TEST_F(ScanStalls, WhatIsMissingInBothTracksIsOneStall) {
    Screening both({});
    both.film(0.0, 2.0);
    both.sound(0.0, 2.1);
    both.film(5.0, 7.0);
    both.sound(5.4, 7.0);
    const std::vector<ZEL::Event>& stalls = both.stalls();
    ASSERT_THAT(stalls, testing::ElementsAre(isEvent(ZEL::EventKind::kStall, 2.0, 5.4)));
    EXPECT_DOUBLE_EQ(stalls.front().share, 1.0);
}

/// Where a Timeline puts items of a tenth of a second that carry these stamps.
std::vector<double> placesOf(const std::vector<double>& stamps, size_t most_held = 4) {
    TrackClock clock;
    TrackClock none;
    Timeline<int> timeline(most_held, clock, none);
    std::vector<double> places;
    const auto give = [&](int item, double start_s) {
        EXPECT_EQ(item, static_cast<int>(places.size()));
        places.push_back(start_s);
    };
    for (size_t i = 0; i < stamps.size(); ++i) {
        timeline.take(static_cast<int>(i), stamps[i], 0.1, give);
    }
    timeline.finish(give);
    return places;
}

TEST(ScanTimeline, TellsWrongStampsFromJumps) {
    using testing::DoubleNear;
    using testing::Pointwise;
    const std::vector<double> even{1.0, 1.1, 1.2, 1.3, 1.4, 1.5};
    const auto isNear = [](const std::vector<double>& places) { return Pointwise(DoubleNear(1e-9), places); };
    EXPECT_THAT(placesOf({1.0, 1.1, 9000.0, 1.3, 1.4, 1.5}), isNear(even)) << "one stamp ahead";
    EXPECT_THAT(placesOf({1.0, 1.1, 9000.0, 9000.1, 1.4, 1.5}), isNear(even)) << "two stamps ahead";
    EXPECT_THAT(placesOf({1.0, 1.1, 0.2, 1.3, 1.4, 1.5}), isNear(even)) << "one stamp back";
    EXPECT_THAT(placesOf({1.0, 1.1, 1.2, 0.0, 0.1, 0.2}), isNear(even)) << "the stream begins again";
    EXPECT_THAT(placesOf({1.0, 1.1, 7.2, 7.3, 7.4, 7.5}), isNear({1.0, 1.1, 7.2, 7.3, 7.4, 7.5})) << "a gap";
    EXPECT_THAT(placesOf({1.0, 1.1, 7.2}), isNear({1.0, 1.1, 7.2})) << "a gap before the last";
    EXPECT_THAT(placesOf({1.0, 7.2, 7.3, 7.4, 1.1}, 2), isNear({1.0, 7.2, 7.3, 7.4, 7.5}))
        << "back after more than is held";
    EXPECT_THAT(placesOf({50.0, 1.1, 1.2, 1.3, 1.4, 1.5}), isNear(even)) << "the first stamp";
    EXPECT_THAT(placesOf({1.0, 7.2, 7.3}), isNear({1.0, 7.2, 7.3})) << "a gap after the first";
    EXPECT_THAT(placesOf({1.0}), isNear({1.0})) << "one item";
}

/// Two tracks of one stream, with items of a tenth of a second.
struct TwoTracks {
    void part(ZEL::TimeSpan pictures, ZEL::TimeSpan sounds) {
        const auto length = static_cast<int>(std::lround(std::max(pictures.length(), sounds.length()) * 10));
        for (int i = 0; i < length; ++i) {
            const double offset_s = 0.1 * i;
            put(video, pictures, offset_s, picture_places);
            put(audio, sounds, offset_s, sound_places);
        }
    }
    static void put(Timeline<int>& line, ZEL::TimeSpan span, double offset_s, std::vector<double>& places) {
        if (offset_s + 0.05 < span.length()) {
            line.take(0, span.start_s + offset_s, 0.1,
                      [&](int, double start_s) { places.push_back(start_s); });
        }
    }

    TrackClock video_clock;
    TrackClock audio_clock;
    Timeline<int> video{4, video_clock, audio_clock};
    Timeline<int> audio{7, audio_clock, video_clock};
    std::vector<double> picture_places;
    std::vector<double> sound_places;
};

TEST(ScanTimeline, TracksThatJumpBackTogetherStayTogether) {
    TwoTracks longer_sound;
    TwoTracks longer_pictures;
    for (int part = 0; part < 10; ++part) {
        longer_sound.part({0.0, 10.0}, {0.0, 12.0});
        longer_pictures.part({0.0, 12.0}, {0.0, 10.0});
    }
    EXPECT_NEAR(longer_sound.sound_places.back(), 119.9, 1e-6);
    EXPECT_NEAR(longer_sound.picture_places.back(), 117.9, 1e-6);
    EXPECT_NEAR(longer_pictures.picture_places.back(), 119.9, 1e-6);
    EXPECT_NEAR(longer_pictures.sound_places.back(), 117.9, 1e-6);

    TwoTracks alone;  // only the pictures' stamps begin again
    alone.part({100.0, 110.0}, {100.0, 110.0});
    alone.part({0.0, 10.0}, {110.0, 120.0});
    alone.part({8.0, 18.0}, {120.0, 130.0});
    alone.part({18.0, 23.0}, {});
    alone.part({23.0, 28.0}, {129.0, 134.0});  // only the sound's, which comes late
    alone.part({}, {134.0, 139.0});
    EXPECT_NEAR(alone.picture_places.back(), 139.9, 1e-6);
    EXPECT_NEAR(alone.sound_places.back(), 139.9, 1e-6);
}

TEST(ScanAudioPeriods, LieEndToEndAtEverySampleRate) {
    for (const int rate : {8000, 11025, 22050, 44100}) {
        AudioPeriods periods(scanConfig(0.1), rate);
        const std::vector<int16_t> samples(1000, 3000);
        double end_s = 5.0;
        int count = 0;
        for (int block = 0; block < 20; ++block) {
            const Sound sound{.time = 5.0 + 1000.0 * block / rate,
                              .sample_rate = rate,
                              .channels = 1,
                              .samples = 1000,
                              .data = samples.data(),
                              .buffer = {}};
            periods.feed(sound, sound.time, [&](ZEL::TimeSpan period, const ZELAudioResult&) {
                EXPECT_NEAR(period.start_s, end_s, 1e-9) << rate;
                EXPECT_NEAR(period.length(), 0.1, 0.001) << rate;
                end_s = period.end_s;
                ++count;
            });
        }
        EXPECT_GE(count, 4) << rate;
    }
}

TEST(ScanEvents, EveryKindStandsOnceInTheTable) {
    for (size_t i = 0; i < ZEL::kEventKinds; ++i) {
        EXPECT_EQ(indexOf(ZEL::eventKinds().at(i).kind), i);
        EXPECT_EQ(ZEL::eventKindByName(ZEL::eventKinds().at(i).name), ZEL::eventKinds().at(i).kind);
    }
    EXPECT_FALSE(ZEL::eventKindByName("purple"));
}

}  // namespace
