#include "watch/pacer.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "input/item_placer.h"

namespace {

using std::chrono::milliseconds;
using zel_monitor::ItemPlacer;
using zel_monitor::Pacer;
using zel_monitor::Sound;

constexpr Pacer::TimePoint kStart{std::chrono::hours(1)};

Sound soundAt(double time_s) {
    return {.time = time_s,
            .sample_rate = 1000,
            .channels = 1,
            .samples = 10,
            .data = nullptr,
            .buffer = nullptr};
}

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

TEST(Pacer, TiesAnewAfterALongGapAndWhenTheInputCouldNotKeepUp) {
    Pacer pacer(1.0);
    dueAfter(pacer, 0.0, 0);
    EXPECT_EQ(5, dueAfter(pacer, 3600.0, 5));
    EXPECT_EQ(45, dueAfter(pacer, 3600.04, 6));
    EXPECT_EQ(0.0, pacer.stalled().count());
    EXPECT_EQ(2000, dueAfter(pacer, 3600.08, 2000));
    EXPECT_NEAR(1.915, pacer.stalled().count(), 1e-9);
    EXPECT_EQ(2040, dueAfter(pacer, 3600.12, 2001)) << "no hurry to make up for a stall";
}

TEST(Pacer, PacesAStreamWhoseTimestampsJumpBack) {
    for (const double back_s : {5.0, 8589934592.0 / 90000}) {  // and by all of 33 bits
        Pacer pacer(4.0);
        ItemPlacer placer;
        int64_t wall_ms = 0;
        double position_s = 0;
        for (int i = 0; i < 1200; ++i) {  // a player that waits for each item
            placer.take(soundAt(0.01 * i - (i < 600 ? 0.0 : back_s)));
            while (const auto item = placer.next()) {
                wall_ms = std::max(wall_ms, dueAfter(pacer, timeOf(*item), wall_ms));
                EXPECT_GE(timeOf(*item), position_s);
                position_s = timeOf(*item);
            }
        }
        EXPECT_NEAR(11.99, position_s, 1e-6) << back_s;
        EXPECT_NEAR(11990.0 / 4, static_cast<double>(wall_ms), 2.0) << back_s;
    }
}

}  // namespace
