#include "events/event_tracker.h"

#include <gtest/gtest.h>

#include "support/events.h"

namespace {

using support::isEvent;
using ZEL::EventKind;
using ZEL::EventTracker;
using ZEL::Sight;

TEST(EventTracker, RunShorterThanTheMinimumIsNoEvent) {
    EventTracker tracker(EventKind::kBlack, {0.5, 0.1});
    EXPECT_TRUE(tracker.see({0.0, 0.48}, Sight::kPresent).began);
    EXPECT_FALSE(tracker.see({0.48, 1.0}, Sight::kAbsent).ended);
    EXPECT_FALSE(tracker.finish(1.0));
}

TEST(EventTracker, EventIsRaisedWithItsMinimumAndReachesBackToItsStart) {
    EventTracker tracker(EventKind::kBlack, {0.5, 0.1});
    EXPECT_FALSE(tracker.see({1.0, 1.4}, Sight::kPresent).raised);
    const auto raised = tracker.see({1.4, 1.6}, Sight::kPresent).raised;
    ASSERT_TRUE(raised);
    EXPECT_DOUBLE_EQ(raised->start_s, 1.0);
    EXPECT_DOUBLE_EQ(raised->noticed_s, 1.6);
    EXPECT_FALSE(tracker.see({1.6, 3.0}, Sight::kPresent).raised);
    EXPECT_FALSE(tracker.extendTo(3.5));
    EXPECT_TRUE(tracker.finish(3.5)->open_at_end);
}

TEST(EventTracker, InterruptionUpToTheGapIsBridgedAndLowersTheShare) {
    EventTracker tracker(EventKind::kBlack, {0.5, 0.2});
    tracker.see({1.0, 1.4}, Sight::kPresent);
    EXPECT_FALSE(tracker.see({1.4, 1.6}, Sight::kAbsent).ended);
    tracker.see({1.6, 1.8}, Sight::kPresent);
    const auto ended = tracker.see({1.8, 2.1}, Sight::kAbsent).ended;
    ASSERT_TRUE(ended);
    EXPECT_THAT(*ended, isEvent(EventKind::kBlack, 1.0, 1.8));
    EXPECT_NEAR(ended->share, 0.75, 1e-9);
}

TEST(EventTracker, ScatteredSightsAreNoEvent) {
    EventTracker tracker(EventKind::kLowVoice, {1.0, 2.0});
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(tracker.see({2.0 * i, 2.0 * i + 0.5}, Sight::kPresent).raised);
        tracker.see({2.0 * i + 0.5, 2.0 * i + 2.0}, Sight::kAbsent);
    }
    EXPECT_FALSE(tracker.finish(20.0));
}

TEST(EventTracker, EventWhoseFaultThinsOutIsClearedAndDoesNotCount) {
    EventTracker tracker(EventKind::kLowVoice, {1.0, 2.0});
    EXPECT_TRUE(tracker.see({0.0, 1.0}, Sight::kPresent).raised);
    for (double second = 1.0; second < 5.0; ++second) {
        tracker.see({second, second + 0.9}, Sight::kAbsent);
        tracker.see({second + 0.9, second + 1.0}, Sight::kPresent);
    }
    const auto ended = tracker.finish(5.0);
    ASSERT_TRUE(ended);
    EXPECT_NEAR(ended->share, 0.28, 1e-9);
    EXPECT_FALSE(ended->counts());
}

TEST(EventTracker, UnknownTimePassesButCountsNeitherWay) {
    EventTracker tracker(EventKind::kLowVoice, {1.0, 2.0});
    tracker.see({0.0, 1.0}, Sight::kPresent);
    tracker.see({1.0, 2.0}, Sight::kUnknown);
    tracker.see({2.0, 3.0}, Sight::kPresent);
    const auto ended = tracker.see({3.0, 5.5}, Sight::kUnknown).ended;
    ASSERT_TRUE(ended);
    EXPECT_THAT(*ended, isEvent(EventKind::kLowVoice, 0.0, 3.0));
    EXPECT_DOUBLE_EQ(ended->share, 1.0);
}

TEST(EventTracker, RuleMayChangeWithinARun) {
    EventTracker tracker(EventKind::kBlack, {10.0, 0.1});
    tracker.see({0.0, 2.0}, Sight::kPresent);
    EXPECT_FALSE(tracker.setRule({2.5, 0.1}));
    const auto raised = tracker.setRule({1.5, 5.0});
    ASSERT_TRUE(raised);
    EXPECT_DOUBLE_EQ(raised->start_s, 0.0);
    EXPECT_FALSE(tracker.setRule({9.0, 5.0})) << "what was raised stays raised";
    EXPECT_FALSE(tracker.see({2.0, 6.0}, Sight::kAbsent).ended) << "the gap is longer now";
    const auto ended = tracker.see({6.0, 8.0}, Sight::kAbsent).ended;
    ASSERT_TRUE(ended);
    EXPECT_TRUE(ended->counts());
}

TEST(EventTracker, WhatIsApartIsAnotherEvent) {
    EventTracker tracker(EventKind::kFreeze, {2.0, 0.1});
    tracker.see({0.0, 3.0}, Sight::kPresent, {}, true);
    EXPECT_FALSE(tracker.see({3.0, 4.0}, Sight::kPresent).ended);
    const auto step = tracker.see({4.0, 7.0}, Sight::kPresent, {}, true);
    EXPECT_THAT(*step.ended, isEvent(EventKind::kFreeze, 0.0, 4.0));
    EXPECT_TRUE(step.began && step.raised);
    EXPECT_THAT(*tracker.finish(7.0), isEvent(EventKind::kFreeze, 4.0, 7.0, true));
}

TEST(EventTracker, EvidenceIsTheMeanOfTheMeasureThatWasThereLongest) {
    EventTracker tracker(EventKind::kBlock, {1.0, 5.0});
    tracker.see({0.0, 1.0}, Sight::kPresent, ZEL::Evidence{10.0, 1.0});
    tracker.see({1.0, 3.0}, Sight::kPresent, ZEL::Evidence{0.2, 0.05});
    tracker.see({3.0, 4.0}, Sight::kAbsent, ZEL::Evidence{0.0, 0.05});
    tracker.see({4.0, 8.0}, Sight::kPresent, ZEL::Evidence{0.5, 0.05});
    const auto event = tracker.see({14.0, 15.0}, Sight::kPresent, ZEL::Evidence{7.0, 1.0}).ended;
    ASSERT_TRUE(event && event->evidence);
    EXPECT_NEAR(event->evidence->value, 0.4, 1e-9);
    EXPECT_DOUBLE_EQ(event->evidence->limit, 0.05);
    EXPECT_DOUBLE_EQ(tracker.finish(15.0)->evidence->value, 7.0) << "nothing of an earlier run";
}

}  // namespace
