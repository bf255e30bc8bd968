#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scan/event_maker.h"
#include "scan/event_tracker.h"

namespace {

using namespace zel_monitor::scan;
using ZELAlgo::ZELAudioResult;
using ZELAlgo::ZELVideoResult;

constexpr double kFrame = 0.04;

/// Plays pictures and audio periods to an EventMaker and keeps what it makes of them.
class Stage : public EventListener {
  public:
    explicit Stage(const EventRules& rules = defaultRules()) : maker_(rules, *this) {}

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
        maker_.gap({video_s_, video_s_ + seconds});
        video_s_ += seconds;
    }
    const std::vector<Event>& finish(StreamEnd end = {}) {
        end.video_s = video_s_;
        end.audio_s = audio_s_;
        maker_.finish(end);
        return events_;
    }
    int begun(Kind kind) const { return begun_[indexOf(kind)]; }

    void onRunBegan(Kind kind) override { ++begun_[indexOf(kind)]; }
    void onEvent(const Event& event) override { events_.push_back(event); }

  private:
    EventMaker maker_;
    double video_s_ = 0.0;
    double audio_s_ = 0.0;
    std::vector<Event> events_;
    PerKind<int> begun_{};
};

auto isEvent(Kind kind, double start, double end, bool open = false) {
    using testing::AllOf;
    using testing::DoubleNear;
    using testing::Field;
    return AllOf(Field("kind", &Event::kind, kind), Field("open_at_end", &Event::open_at_end, open),
                 Field("span", &Event::span,
                       AllOf(Field("start", &Span::start_s, DoubleNear(start, 1e-6)),
                             Field("end", &Span::end_s, DoubleNear(end, 1e-6)))));
}

const ZELVideoResult kGood{};
const ZELVideoResult kBlackPicture{
    .status = 0, .screen_type = 1, .exposure_type = 0, .is_block = false, .is_staticframe = false};
const ZELVideoResult kBlackAndStill{
    .status = 0, .screen_type = 1, .exposure_type = 0, .is_block = false, .is_staticframe = true};
const ZELVideoResult kStill{
    .status = 0, .screen_type = 0, .exposure_type = 0, .is_block = false, .is_staticframe = true};

TEST(ScanEvents, RunShorterThanTheMinimumIsNoEvent) {
    EventTracker tracker(Kind::kBlack, {0.5, 0.1});
    EXPECT_TRUE(tracker.see({0.0, 0.48}, Sight::kPresent).began);
    EXPECT_FALSE(tracker.see({0.48, 1.0}, Sight::kAbsent).ended);
    EXPECT_FALSE(tracker.finish(1.0));
}

TEST(ScanEvents, InterruptionUpToTheGapIsBridgedAndLowersTheShare) {
    EventTracker tracker(Kind::kBlack, {0.5, 0.2});
    tracker.see({1.0, 1.4}, Sight::kPresent);
    EXPECT_FALSE(tracker.see({1.4, 1.6}, Sight::kAbsent).ended);
    tracker.see({1.6, 1.8}, Sight::kPresent);
    const auto ended = tracker.see({1.8, 2.1}, Sight::kAbsent).ended;
    ASSERT_TRUE(ended);
    EXPECT_THAT(*ended, isEvent(Kind::kBlack, 1.0, 1.8));
    EXPECT_NEAR(ended->share, 0.75, 1e-9);
}

TEST(ScanEvents, ScatteredSightsAreNoEvent) {
    EventTracker tracker(Kind::kLowVoice, {1.0, 2.0});
    for (int i = 0; i < 10; ++i) {
        tracker.see({2.0 * i, 2.0 * i + 0.5}, Sight::kPresent);
        tracker.see({2.0 * i + 0.5, 2.0 * i + 2.0}, Sight::kAbsent);
    }
    EXPECT_FALSE(tracker.finish(20.0));
}

TEST(ScanEvents, UnknownTimePassesButCountsNeitherWay) {
    EventTracker tracker(Kind::kLowVoice, {1.0, 2.0});
    tracker.see({0.0, 1.0}, Sight::kPresent);
    tracker.see({1.0, 2.0}, Sight::kUnknown);
    tracker.see({2.0, 3.0}, Sight::kPresent);
    const auto ended = tracker.see({3.0, 5.5}, Sight::kUnknown).ended;
    ASSERT_TRUE(ended);
    EXPECT_THAT(*ended, isEvent(Kind::kLowVoice, 0.0, 3.0));
    EXPECT_DOUBLE_EQ(ended->share, 1.0);
}

TEST(ScanEvents, EventsAreTimedToThePictureAndClosedAtTheEndOfTheStream) {
    Stage stage;
    stage.pictures(25, kGood);
    stage.pictures(50, kBlackPicture);
    stage.pictures(25, kGood);
    stage.pictures(25, kBlackPicture);
    EXPECT_THAT(stage.finish(),
                testing::ElementsAre(isEvent(Kind::kBlack, 1.0, 3.0), isEvent(Kind::kBlack, 4.0, 5.0, true)));
    EXPECT_EQ(stage.begun(Kind::kBlack), 2);
}

TEST(ScanEvents, FreezeBeginsWithThePictureThatIsRepeated) {
    Stage stage;
    stage.pictures(26, kGood);  // the last of them stands still from 1.0 s on
    stage.pictures(74, kStill);
    stage.pictures(25, kGood);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(Kind::kFreeze, 1.0, 4.0)));
}

TEST(ScanEvents, BlackOrGreenStretchIsNotAlsoFrozen) {
    Stage stage;
    stage.pictures(25, kGood);
    stage.pictures(100, kBlackAndStill);
    stage.pictures(100, kStill);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(Kind::kBlack, 1.0, 5.0),
                                                     isEvent(Kind::kFreeze, 5.0, 9.0, true)));
}

TEST(ScanEvents, FirstPictureIsLikeNoOther) {
    EventRules rules = defaultRules();
    rules[indexOf(Kind::kFreeze)].min_s = 0.0;
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
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(Kind::kMute, 0.0, 10.0),
                                                     isEvent(Kind::kNoVoice, 10.0, 20.0, true)));
}

TEST(ScanEvents, GapInTheTimestampsIsAStallAndNeverAFreeze) {
    Stage stage;
    stage.pictures(25, kGood);
    stage.videoGap(5.0);
    stage.pictures(10, kStill);
    stage.videoGap(0.5);
    stage.pictures(10, kStill);
    EXPECT_THAT(stage.finish(), testing::ElementsAre(isEvent(Kind::kStall, 1.0, 6.0)));
}

TEST(ScanEvents, EndBeforeTheDeclaredOneIsShort) {
    Stage early;
    early.pictures(25, kGood);
    EXPECT_THAT(early.finish({.declared_s = 10.0}), testing::ElementsAre(isEvent(Kind::kShort, 1.0, 10.0)));
    Stage whole;
    whole.pictures(25, kGood);
    EXPECT_THAT(whole.finish({.declared_s = 1.5}), testing::IsEmpty());
}

TEST(ScanEvents, StillPictureNeedsNoMinimum) {
    Stage stage;
    stage.pictures(1, kBlackPicture);
    EXPECT_THAT(stage.finish({.declared_s = {}, .still_picture = true}),
                testing::ElementsAre(isEvent(Kind::kBlack, 0.0, kFrame, true)));
}

TEST(ScanEvents, EveryKindStandsOnceInTheTable) {
    for (size_t i = 0; i < kKindCount; ++i) {
        EXPECT_EQ(indexOf(kinds().at(i).kind), i);
        EXPECT_EQ(kindByName(kinds().at(i).name), kinds().at(i).kind);
    }
    EXPECT_FALSE(kindByName("purple"));
}

}  // namespace
