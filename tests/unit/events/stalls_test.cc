#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "unit/events/feeding.h"

namespace {

using support::isEvent;
using testing::ElementsAre;
using testing::IsEmpty;
using ZEL::EventKind;

TEST(Stalls, GrowingGapsInAFilmAreAllStalls) {
    Feeding film({.tracks = kVideoOnly});
    film.film(0.0, 3.0);
    film.film(3.9, 5.0);
    film.film(6.8, 8.0);
    film.film(10.8, 12.0);
    film.film(15.6, 17.0);
    EXPECT_THAT(film.stalls(),
                ElementsAre(isEvent(EventKind::kStall, 5.02, 6.8), isEvent(EventKind::kStall, 8.0, 10.8),
                            isEvent(EventKind::kStall, 12.0, 15.6)));
}

TEST(Stalls, GapThatTheContainerStatesAsALongFrameIsAStall) {
    Feeding film({.tracks = kVideoOnly});
    film.film(0.0, 2.0);
    film.frame(2.0, 3.04);
    film.film(5.04, 7.0);
    EXPECT_THAT(film.stalls(), ElementsAre(isEvent(EventKind::kStall, 2.04, 5.04)));
}

TEST(Stalls, VariableFrameRatesAndSlideShowsAreWhole) {
    Feeding film({.tracks = kVideoOnly});
    film.film(0.0, 3.0, 0.2);
    film.film(3.0, 6.0, 0.04);
    film.film(6.0, 9.0, 0.12, 0.12);
    EXPECT_THAT(film.stalls(), IsEmpty());

    Feeding stated({.tracks = kVideoOnly});
    stated.frame(0.0, 0.5);
    stated.frame(0.5, 8.0);
    stated.frame(8.5, 3.0);
    stated.frame(11.5, 60.0);
    EXPECT_THAT(stated.stalls(), IsEmpty());
    EXPECT_DOUBLE_EQ(stated.reached(), 71.5);

    Feeding averaged({.tracks = kVideoOnly});
    for (const double time_s : {0.0, 1.0, 4.0, 12.0}) {
        averaged.frame(time_s, 4.0);
    }
    averaged.frame(40.0, 4.0);
    EXPECT_THAT(averaged.stalls(), ElementsAre(isEvent(EventKind::kStall, 16.0, 40.0)));

    Feeding unstated({.tracks = kVideoOnly});
    for (const double time_s : {0.0, 1.0, 2.0, 7.0}) {
        unstated.frame(time_s);
    }
    EXPECT_THAT(unstated.stalls(), IsEmpty());
}

TEST(Stalls, LongLastFrameIsBelieved) {
    Feeding film({.tracks = kVideoOnly});
    film.film(0.0, 2.0);
    film.frame(2.0, 3.0);
    EXPECT_THAT(film.stalls(), IsEmpty());
    EXPECT_DOUBLE_EQ(film.reached(), 5.0);
}

TEST(Stalls, ShortGapsAreStallsForWhoeverAsksForThem) {
    Feeding film(kVideoOnly, 0.03);
    film.film(0.0, 2.0);
    film.film(2.04, 4.0);
    EXPECT_THAT(film.stalls(), ElementsAre(isEvent(EventKind::kStall, 2.0, 2.04)));
}

TEST(Stalls, RoundedTimestampsAreNoStallsEvenWhenEveryGapIs) {
    Feeding film(kVideoOnly, 0.0);
    for (const double time_s : {0.0, 0.033, 0.067, 0.1, 0.133, 0.167}) {
        film.frame(time_s, 1.0 / 30);
    }
    EXPECT_THAT(film.stalls(), IsEmpty());
}

TEST(Stalls, TrackThatIsMissingAtEitherEndIsAStall) {
    Feeding late_video;
    late_video.sound(0.0, 4.0);
    late_video.film(4.0, 6.0);
    late_video.sound(4.0, 6.0);
    EXPECT_THAT(late_video.stalls(), ElementsAre(isEvent(EventKind::kStall, 0.0, 4.0)));

    Feeding early_end;
    early_end.film(0.0, 3.0);
    early_end.sound(0.0, 3.0);
    early_end.film(3.0, 10.0);
    EXPECT_THAT(early_end.stalls(), ElementsAre(isEvent(EventKind::kStall, 3.0, 10.0, true)));

    Feeding no_sound;
    no_sound.film(0.0, 2.0);
    EXPECT_THAT(no_sound.stalls(), ElementsAre(isEvent(EventKind::kStall, 0.0, 2.0, true)));
}

TEST(Stalls, CoversAndShortDelaysAreNoStalls) {
    Feeding song({.tracks = {.still = true}});
    song.frame(0.0);
    song.sound(0.0, 10.0);
    EXPECT_THAT(song.stalls(), IsEmpty());

    Feeding film_that_lost_its_frames;
    film_that_lost_its_frames.frame(0.0);
    film_that_lost_its_frames.sound(0.0, 10.0);
    EXPECT_THAT(film_that_lost_its_frames.stalls(),
                ElementsAre(isEvent(EventKind::kStall, Feeding::kFrame, 10.0, true)));

    Feeding primed;
    primed.film(0.0, 5.0);
    primed.sound(0.1, 5.5);
    EXPECT_THAT(primed.stalls(), IsEmpty());
}

TEST(Stalls, WhatIsMissingInBothTracksIsOneStall) {
    Feeding both;
    both.film(0.0, 2.0);
    both.sound(0.0, 2.1);
    both.film(5.0, 7.0);
    both.sound(5.4, 7.0);
    const std::vector<ZEL::Event> stalls = both.stalls();
    ASSERT_THAT(stalls, ElementsAre(isEvent(EventKind::kStall, 2.0, 5.4)));
    EXPECT_DOUBLE_EQ(stalls.front().share, 1.0);
}

TEST(Stalls, ShortFrameWithinALongOneEndsNothing) {
    Feeding overlapping({.tracks = kAudioOnly});
    const std::vector<int16_t> samples(24000, 100);
    const auto feed = [&](uint32_t count, double time_s) {
        overlapping.analyser.feedAudio(
            {.sample_rate = 8000, .samples = count, .channels = 1, .data = samples.data()}, time_s);
    };
    feed(24000, 0.0);
    feed(160, 0.5);
    EXPECT_DOUBLE_EQ(overlapping.analyser.reached(), 3.0);
    feed(8000, 3.0);
    EXPECT_THAT(overlapping.stalls(), IsEmpty());
    EXPECT_DOUBLE_EQ(overlapping.analyser.reached(), 4.0);
}

}  // namespace
