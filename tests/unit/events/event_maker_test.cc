#include "events/event_maker.h"

#include <gtest/gtest.h>

#include "support/events.h"

namespace {

using support::EventRecorder;
using support::isEvent;
using testing::ElementsAre;
using testing::IsEmpty;
using ZEL::EventKind;
using ZELAlgo::ZELAudioResult;
using ZELAlgo::ZELVideoResult;

constexpr double kFrame = 0.04;

/// Plays frames and audio periods to an EventMaker and keeps what it makes of them.
class Stage {
  public:
    explicit Stage(const ZEL::EventRules& rules = ZEL::defaultEventRules())
        : maker_(rules, ZEL::StreamTracks{}, heard) {}

    void frames(int count, const ZELVideoResult& result) {
        for (int i = 0; i < count; ++i, video_s_ += kFrame) {
            maker_.frame({video_s_, video_s_ + kFrame}, result);
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
        EXPECT_THAT(heard.open, testing::Each(false));
        return heard.events;
    }

    EventRecorder heard;

  private:
    ZEL::EventMaker maker_;
    double video_s_ = 0.0;
    double audio_s_ = 0.0;
};

ZELVideoResult verdicts(uint32_t screen, bool still) {
    return {.status = 0,
            .screen_type = screen,
            .exposure_type = ZELAlgo::kExposureNormal,
            .is_block = false,
            .is_staticframe = still};
}

const ZELVideoResult kGood = verdicts(ZELAlgo::kScreenNormal, false);
const ZELVideoResult kBlack = verdicts(ZELAlgo::kScreenBlack, false);
const ZELVideoResult kBlackAndStill = verdicts(ZELAlgo::kScreenBlack, true);
const ZELVideoResult kStill = verdicts(ZELAlgo::kScreenNormal, true);

TEST(EventMaker, EventsAreTimedToTheFrameAndClosedAtTheEndOfTheStream) {
    Stage stage;
    stage.frames(25, kGood);
    stage.frames(50, kBlack);
    stage.frames(25, kGood);
    stage.frames(25, kBlack);
    EXPECT_THAT(stage.finish(), ElementsAre(isEvent(EventKind::kBlack, 1.0, 3.0),
                                            isEvent(EventKind::kBlack, 4.0, 5.0, true)));
    EXPECT_EQ(stage.heard.suspected[indexOf(EventKind::kBlack)], 2);
    ASSERT_EQ(stage.heard.raised.size(), 2U);
    EXPECT_NEAR(stage.heard.raised[0].start_s, 1.0, 1e-9);
    EXPECT_NEAR(stage.heard.raised[0].noticed_s, 1.52, 1e-9) << "the frame with which it lasts half a second";
}

TEST(EventMaker, FreezeBeginsWithTheFrameThatIsRepeated) {
    Stage stage;
    stage.frames(26, kGood);  // the last of them stands still from 1.0 s on
    stage.frames(74, kStill);
    stage.frames(25, kGood);
    EXPECT_THAT(stage.finish(), ElementsAre(isEvent(EventKind::kFreeze, 1.0, 4.0)));
}

TEST(EventMaker, BlackOrGreenStretchIsNotAlsoFrozen) {
    Stage stage;
    stage.frames(25, kGood);
    stage.frames(100, kBlackAndStill);
    stage.frames(100, kStill);
    EXPECT_THAT(stage.finish(), ElementsAre(isEvent(EventKind::kBlack, 1.0, 5.0),
                                            isEvent(EventKind::kFreeze, 5.0, 9.0, true)));
}

TEST(EventMaker, FirstFrameIsLikeNoOther) {
    ZEL::EventRules rules = ZEL::defaultEventRules();
    rules[indexOf(EventKind::kFreeze)].min_s = 0.0;
    Stage stage(rules);
    stage.frames(1, kStill);
    stage.frames(1, kGood);
    EXPECT_THAT(stage.finish(), IsEmpty());
}

TEST(EventMaker, SilenceHidesTheVoiceVerdictsThatItImplies) {
    ZELAudioResult silence{};
    silence.is_mute = silence.is_low_voicelevel = silence.is_novoice_longtime = 1;
    ZELAudioResult nobody{};
    nobody.is_low_voicelevel = nobody.is_novoice_longtime = 1;
    Stage stage;
    stage.seconds(10, silence);
    stage.seconds(10, nobody);
    EXPECT_THAT(stage.finish(), ElementsAre(isEvent(EventKind::kMute, 0.0, 10.0),
                                            isEvent(EventKind::kNoVoice, 10.0, 20.0, true)));
}

TEST(EventMaker, GapInTheTimestampsIsAStallAndNeverAFreeze) {
    Stage stage;
    stage.frames(25, kGood);
    stage.videoGap(5.0);
    stage.frames(10, kStill);
    stage.videoGap(0.5);
    stage.frames(10, kStill);
    EXPECT_THAT(stage.finish(), ElementsAre(isEvent(EventKind::kStall, 1.0, 6.0)));
}

TEST(EventMaker, EndBeforeTheDeclaredOneIsShort) {
    Stage early;
    early.frames(25, kGood);
    EXPECT_THAT(early.finish({.declared_s = 10.0}), ElementsAre(isEvent(EventKind::kShort, 1.0, 10.0)));
    Stage whole;
    whole.frames(25, kGood);
    EXPECT_THAT(whole.finish({.declared_s = 1.5}), IsEmpty());
}

TEST(EventMaker, StillNeedsNoMinimum) {
    Stage stage;
    stage.frames(1, kBlack);
    EXPECT_THAT(stage.finish({.declared_s = {}, .still = true}),
                ElementsAre(isEvent(EventKind::kBlack, 0.0, kFrame, true)));
}

}  // namespace
