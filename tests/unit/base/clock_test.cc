#include "base/clock.h"

#include <chrono>
#include <cmath>

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace {

// Not against `std::time`, which may tell a coarser clock and so lag behind by some milliseconds.
double systemSeconds() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

TEST(Clock, ReadsWallClockSecondsInMicroseconds) {
    constexpr double kMicrosecond = 1e-6;
    const double before = systemSeconds();
    const double now = ZEL::now();
    EXPECT_GE(now, before - 2 * kMicrosecond);
    EXPECT_LE(now, systemSeconds() + kMicrosecond);
    EXPECT_NEAR(now * 1e6, std::round(now * 1e6), 0.25);
}

TEST(Clock, MovesOnlyWhenATestMovesIt) {
    support::ManualClock clock(100.0);
    EXPECT_EQ(ZEL::now(), 100.0);
    clock.advance(0.5);
    EXPECT_EQ(ZEL::now(), 100.5);
}

}  // namespace
