#include "watch/pacer.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using zel_monitor::Pacer;

constexpr Pacer::TimePoint kStart{std::chrono::hours(1)};

/// Milliseconds from kStart to when the item is due.
int64_t dueAfter(Pacer& pacer, double stream_time, int64_t now) {
    return std::chrono::round<milliseconds>(pacer.due(stream_time, kStart + milliseconds(now)) - kStart)
        .count();
}

TEST(Pacer, SpreadsStreamTimeOverWallTimeFromTheFirstItemOn) {
    Pacer twice(2.0);
    EXPECT_EQ(300, dueAfter(twice, 7.0, 300));
    EXPECT_EQ(320, dueAfter(twice, 7.04, 301));
    EXPECT_EQ(3300, dueAfter(twice, 13.0, 350)) << "a pause in the stream is waited for";
    EXPECT_EQ(3320, dueAfter(twice, 13.04, 3400)) << "a little late is caught up with";
}

TEST(Pacer, GivesOutOfOrderItemsAtOnce) {
    Pacer pacer(1.0);
    dueAfter(pacer, 1.0, 0);
    EXPECT_EQ(10, dueAfter(pacer, 0.2, 10));
    EXPECT_EQ(40, dueAfter(pacer, 1.04, 11));
}

TEST(Pacer, TiesAnewAfterAJumpAndWhenTheInputCouldNotKeepUp) {
    Pacer pacer(1.0);
    dueAfter(pacer, 0.0, 0);
    EXPECT_EQ(5, dueAfter(pacer, 3600.0, 5));
    EXPECT_EQ(45, dueAfter(pacer, 3600.04, 6));
    EXPECT_EQ(50, dueAfter(pacer, 0.0, 50));
    EXPECT_EQ(90, dueAfter(pacer, 0.04, 51));
    EXPECT_EQ(0.0, pacer.stalled().count());
    EXPECT_EQ(2000, dueAfter(pacer, 0.08, 2000));
    EXPECT_NEAR(1.87, pacer.stalled().count(), 1e-9);
    EXPECT_EQ(2040, dueAfter(pacer, 0.12, 2001)) << "no hurry to make up for a stall";
}

}  // namespace
