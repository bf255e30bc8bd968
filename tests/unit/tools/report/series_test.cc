#include "report/series.h"

#include <gtest/gtest.h>

namespace {

TEST(Series, HalvesItsStepsInsteadOfGrowing) {
    zel_monitor::Series series(1.0, 4);
    for (int i = 0; i < 16; ++i) {
        series.add(i, i);
    }
    EXPECT_EQ(series.step(), 4.0);
    ASSERT_EQ(series.size(), 4U);
    EXPECT_EQ(series.at(3), 13.5);
    series.add(-1.0, 5.0);
    EXPECT_EQ(series.at(0), 1.5);
}

}  // namespace
