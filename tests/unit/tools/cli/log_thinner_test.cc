#include "cli/log_thinner.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using zel_monitor::LogThinner;

TEST(LogThinner, LetsOneLineOfAKindThroughAMinuteAndCountsTheRest) {
    LogThinner thinner;
    const LogThinner::TimePoint start{};
    EXPECT_EQ(thinner.take("frame 1 at 0x7f0a", start), "frame 1 at 0x7f0a");
    for (int i = 2; i < 1500; ++i) {
        EXPECT_EQ(thinner.take("frame " + std::to_string(i) + " at 0xbeef12", start), std::nullopt);
    }
    EXPECT_EQ(thinner.take("no frame", start), "no frame");
    EXPECT_EQ(thinner.take("frame 9 at 0x1", start + LogThinner::kPeriod),
              "frame 9 at 0x1 (1498 more like it since the last one)");
}

TEST(LogThinner, StaysSmallWhateverComes) {
    LogThinner thinner;
    std::string text = "z";
    for (int i = 0; i < 3000; ++i) {
        text += i % 2 == 0 ? 'y' : 'z';
        EXPECT_TRUE(thinner.take(text, LogThinner::TimePoint{})) << i;  // each is new
    }
}

}  // namespace
