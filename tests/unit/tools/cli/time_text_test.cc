#include "cli/time_text.h"

#include <gtest/gtest.h>

namespace {

using namespace zel_monitor;

TEST(TimeText, ReadsLengthsAndWritesTimes) {
    EXPECT_EQ(parseSeconds("0.5s"), 0.5);
    EXPECT_EQ(parseSeconds("500ms"), 0.5);
    EXPECT_EQ(parseSeconds("2m"), 120.0);
    EXPECT_EQ(parseSeconds("3"), 3.0);
    for (const char* const bad : {"", "s", "-1s", "1 s", "1x", "nan", "inf", "-0", "1e308h"}) {
        EXPECT_FALSE(parseSeconds(bad)) << bad;
    }
    EXPECT_EQ(clockText(3661.9996), "1:01:02.000");
    EXPECT_EQ(clockText(-61.5), "-0:01:01.500");
    EXPECT_EQ(clockText(-0.0004), "0:00:00.000");
    EXPECT_EQ(shortClockText(-0.02), "0:00:00.0");
    EXPECT_EQ(shortClockText(-0.2), "-0:00:00.2");
    EXPECT_EQ(shortClockText(59.96), "0:01:00.0");
}

}  // namespace
