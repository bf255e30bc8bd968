#include <zel/events/analyser.h>

#include <algorithm>
#include <cstdint>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "unit/events/feeding.h"
#include "unit/events/scenes.h"

namespace {

using support::isEvent;
using testing::ElementsAre;
using testing::IsEmpty;
using ZEL::EventKind;

/// A film that is drawn frame by frame.
class Film : public Feeding {
  public:
    explicit Film(double rate = 25.0, const ZEL::EventRules& rules = ZEL::defaultEventRules())
        : Feeding(ZEL::AnalyserOptions{.tracks = kVideoOnly, .rules = rules}), step_s_(1.0 / rate) {}

    void show(const DrawnFrame& frame, int frames = 1,
              ZEL::FrameCondition condition = ZEL::FrameCondition::kWhole) {
        for (int i = 0; i < frames; ++i, ++shown_) {
            EXPECT_TRUE(analyser.feedVideo(frame.planes(), shown_ * step_s_, step_s_, condition));
        }
    }
    /// A landscape that passes by.
    void move(int frames, double pixels = 4.0) {
        for (int i = 0; i < frames; ++i) {
            show(landscape(at_ += pixels));
        }
    }

  private:
    double step_s_;
    int shown_ = 0;
    double at_ = 0.0;
};

ZEL::EventRules withFreezeFrom(double min_s) {
    ZEL::EventRules rules = ZEL::defaultEventRules();
    rules[indexOf(EventKind::kFreeze)].min_s = min_s;
    return rules;
}

TEST(JudgedFrames, FreezeEndsAtACutWhereTheNextOneBegins) {
    Film film;
    film.move(26);
    film.show(landscape(104.0), 74);
    film.show(landscape(0.0, 1.0), 100);
    film.move(25);
    EXPECT_THAT(film.end(),
                ElementsAre(isEvent(EventKind::kFreeze, 1.0, 4.0), isEvent(EventKind::kFreeze, 4.0, 8.0)));
    const ZEL::Event& freeze = film.heard.events.front();
    ASSERT_TRUE(freeze.evidence);
    EXPECT_EQ(freeze.evidence->value, 0.0);
    EXPECT_NEAR(freeze.evidence->limit, 0.06, 1e-6);
}

TEST(JudgedFrames, StandstillThatDamageLeavesIsToldOnceAndTellsAgainOfWhatOutlastsIt) {
    for (const int outlasting : {20, 100}) {  // frames that stand still after those that are damaged
        Film film;
        film.move(25);
        film.show(landscape(100.0), 75, ZEL::FrameCondition::kDamaged);
        film.show(landscape(100.0), outlasting);
        film.move(25);
        film.end();
        if (outlasting == 20) {
            EXPECT_THAT(film.heard.events, IsEmpty());
        } else {
            EXPECT_THAT(film.heard.events, ElementsAre(isEvent(EventKind::kFreeze, 5.0, 8.0)));
        }
    }
}

TEST(JudgedFrames, FreezeIsRaisedWithinASecondOfItsMinimum) {
    for (const double min_s : {0.5, 2.0, 7.0}) {
        for (const bool set_later : {false, true}) {
            Film film(25.0, withFreezeFrom(set_later ? 3.0 : min_s));
            EXPECT_TRUE(film.analyser.setRule(EventKind::kFreeze, {min_s, 0.1}));
            film.move(25);
            film.show(landscape(50.0), 250);
            ASSERT_EQ(film.heard.raised.size(), 1U) << min_s;
            EXPECT_NEAR(film.heard.raised[0].start_s, 1.0, 1e-6);
            EXPECT_LE(film.heard.raised[0].noticed_s, 1.0 + min_s + 1.0);
            film.move(25);
            EXPECT_THAT(film.end(), ElementsAre(isEvent(EventKind::kFreeze, 1.0, 11.0)));
        }
    }
}

TEST(JudgedFrames, WhatMovesSlowlyAtAHighRateIsNotFrozen) {
    for (const double rate : {50.0, 60.0}) {
        Film film(rate);
        film.move(static_cast<int>(rate) * 5, 10.0 / rate);
        EXPECT_THAT(film.end(), IsEmpty()) << rate;
    }
}

TEST(JudgedFrames, FadeToBlackIsOneEventAndAllThatHappens) {
    Film film;
    film.move(50);
    for (int i = 1; i <= 12; ++i) {
        film.show(landscape(200.0 + 4.0 * i, 0.0, 1.0 - i / 12.0));
    }
    film.show(DrawnFrame(160, 128, 16), 50);
    for (int i = 1; i <= 12; ++i) {
        film.show(landscape(300.0 + 4.0 * i, 0.0, i / 12.0));
    }
    film.move(50);
    film.end();
    ASSERT_EQ(film.heard.events.size(), 1U);
    const ZEL::Event& black = film.heard.events.front();
    EXPECT_EQ(black.kind, EventKind::kBlack);
    EXPECT_NEAR(black.span.start_s, 2.44, 0.15);
    EXPECT_NEAR(black.span.end_s, 4.5, 0.15);
    EXPECT_GT(black.evidence->value, black.evidence->limit);
}

TEST(JudgedFrames, TitleCardAndSlidesAreNoEvents) {
    DrawnFrame card(160, 128, 16);
    for (uint32_t letter = 0; letter < 6; ++letter) {
        for (uint32_t y = 56; y < 72; ++y) {
            std::fill_n(card.luma.begin() + y * card.width + 40 + letter * 14, 6, uint8_t{235});
        }
    }
    DrawnFrame fading = card;  // still shows a little of what was there before
    std::for_each(fading.luma.begin() + 52 * 160, fading.luma.end(),
                  [](uint8_t& luma) { luma = luma == 16 ? 22 : luma; });
    Film titles;
    titles.move(25);
    titles.show(fading);
    titles.show(card, 100);
    titles.move(25);
    EXPECT_THAT(titles.end(), IsEmpty());

    Film slides(0.2);
    for (int i = 0; i < 6; ++i) {
        slides.show(landscape(0.0, i));
    }
    EXPECT_THAT(slides.end(), IsEmpty());
}

TEST(JudgedFrames, PartThatWasNeverDecodedIsFoundAtOnce) {
    Film film;
    film.move(50, 0.5);
    for (int i = 1; i <= 25; ++i) {
        DrawnFrame half = landscape(25.0 + 0.5 * i);
        half.fillRows(64, 128, 126);
        film.show(half);
    }
    film.move(50, 0.5);
    ASSERT_EQ(film.heard.raised.size(), 1U);
    EXPECT_LE(film.heard.raised[0].noticed_s, 2.0 + 0.2 + 1.1);
    EXPECT_THAT(film.end(), ElementsAre(isEvent(EventKind::kBlock, 2.0, 3.0)));
    EXPECT_NEAR(film.heard.events[0].evidence->value, 0.5, 0.01);
}

TEST(JudgedFrames, BlackAndGreenFramesAreNothingElse) {
    Film film;
    film.move(25);
    film.show(DrawnFrame(160, 128, 16), 100);
    DrawnFrame green(160, 128, 0);
    std::fill(green.cb.begin(), green.cb.end(), uint8_t{0});
    green.cr = green.cb;
    film.show(green, 100);
    film.move(25);
    EXPECT_THAT(film.end(),
                ElementsAre(isEvent(EventKind::kBlack, 1.0, 5.0), isEvent(EventKind::kGreen, 5.0, 9.0)));
    EXPECT_DOUBLE_EQ(film.heard.events[1].evidence->value, 1.0);
}

TEST(JudgedFrames, GapInTheTimestampsIsAStallAndNoFreeze) {
    Feeding feeding({.tracks = kVideoOnly});
    for (const double from_s : {0.0, 6.0}) {
        for (int i = 0; i < 40; ++i) {
            EXPECT_TRUE(feeding.analyser.feedVideo(landscape().planes(), from_s + i * 0.04, 0.04));
        }
    }
    EXPECT_THAT(feeding.end(), ElementsAre(isEvent(EventKind::kStall, 1.6, 6.0)));
    EXPECT_NEAR(feeding.heard.events[0].evidence->value, 4.4, 1e-6);
    EXPECT_DOUBLE_EQ(feeding.heard.events[0].evidence->limit, 1.0);
}

TEST(JudgedFrames, SinglePictureIsJudgedWithoutAMinimumAndNeverFrozen) {
    Film black;
    black.show(DrawnFrame(160, 128, 16));
    EXPECT_THAT(black.end(), ElementsAre(isEvent(EventKind::kBlack, 0.0, 0.04, true)));
    Film good;
    good.show(landscape());
    EXPECT_THAT(good.end(), IsEmpty());
}

TEST(JudgedFrames, FramesOfAnySizeAreJudgedAndTheSizeMayChange) {
    for (const uint32_t side : {2U, 6U, 8U, 16U, 18U}) {
        Film film;
        film.show(DrawnFrame(side, side, 16), 25);
        film.show(DrawnFrame(side, side, 120), 25);
        film.end();
        EXPECT_THAT(film.heard.eventsOf(EventKind::kBlack), ElementsAre(isEvent(EventKind::kBlack, 0.0, 1.0)))
            << side;
    }
    Film film(25.0, withFreezeFrom(0.0));
    for (const uint32_t side : {160U, 2U, 64U, 30U, 320U}) {
        film.show(DrawnFrame(side, side, 16), 10);
    }
    film.end();
    EXPECT_THAT(film.heard.eventsOf(EventKind::kBlack),
                ElementsAre(isEvent(EventKind::kBlack, 0.0, 2.0, true)));
    EXPECT_THAT(film.heard.eventsOf(EventKind::kFreeze), IsEmpty());
}

}  // namespace
