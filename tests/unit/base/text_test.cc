#include "base/text.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "base/truncate.h"

namespace {

using ZEL::fixedText;

TEST(FixedText, WritesWhatPrintfWrites) {
    EXPECT_EQ(fixedText(0.0), "0.000000");
    EXPECT_EQ(fixedText(-0.5), "-0.500000");
    EXPECT_EQ(fixedText(1250.0), "1250.000000");
    EXPECT_EQ(fixedText(60.00125, 4), "60.0012");  // the double lies below the tie
    EXPECT_EQ(fixedText(2.5, 0), "2");
    EXPECT_EQ(fixedText(1e300).size(), 301U + 7U);
}

TEST(TruncateToInt32, TakesAllThatFitsAndMakesTheRestTheSmallest) {
    EXPECT_EQ(ZEL::truncateToInt32(-2147483647.5), -INT32_MAX);
    EXPECT_EQ(ZEL::truncateToInt32(-2147483648.5), INT32_MIN);
    EXPECT_EQ(ZEL::truncateToInt32(2147483647.5), INT32_MAX);
    EXPECT_EQ(ZEL::truncateToInt32(2147483648.0), INT32_MIN);
}

}  // namespace
