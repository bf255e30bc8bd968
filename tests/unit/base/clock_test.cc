#include "base/clock.h"

#include <cmath>
#include <ctime>

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace {

TEST(Clock, ReadsWallClockSecondsInMicroseconds) {
    const double before = static_cast<double>(std::time(nullptr));
    const double now = ZEL::now();
    EXPECT_GE(now, before);
    EXPECT_LE(now, static_cast<double>(std::time(nullptr)) + 1.0);
    EXPECT_NEAR(now * 1e6, std::round(now * 1e6), 0.25);
}

TEST(Clock, MovesOnlyWhenATestMovesIt) {
    support::ManualClock clock(100.0);
    EXPECT_EQ(ZEL::now(), 100.0);
    clock.advance(0.5);
    EXPECT_EQ(ZEL::now(), 100.5);
}

}  // namespace
