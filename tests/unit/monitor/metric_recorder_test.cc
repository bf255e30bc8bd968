#include <zel/monitor/metric_recorder.h>

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace {

using ZEL::MetricRecorder;

class MetricRecorderTest : public testing::Test {
  protected:
    void record(const std::vector<double>& values) {
        for (const double value : values) {
            recorder.record(value);
        }
    }

    support::ManualClock clock;
    MetricRecorder recorder{900};
};

TEST_F(MetricRecorderTest, AnswersZeroWithoutSamples) {
    EXPECT_EQ(recorder.maximum(), 0.0);
    EXPECT_EQ(recorder.truncatingAverage(), 0.0);
    EXPECT_EQ(recorder.nonZeroFraction(), 0.0);
    EXPECT_EQ(recorder.codeListFraction({0.0}), 0.0);
}

TEST_F(MetricRecorderTest, FindsTheLargestValueAlsoBelowZero) {
    record({-3.0, -1.5, -2.0});
    EXPECT_EQ(recorder.maximum(), -1.5);
    record({7.25, 7.0});
    EXPECT_EQ(recorder.maximum(), 7.25);
}

TEST_F(MetricRecorderTest, CutsTheSumAfterEachSample) {
    record({1.5, 1.5});
    EXPECT_EQ(recorder.truncatingAverage(), 1.0);
    record({-4.9});  // 2 - 4.9 is cut toward zero
    EXPECT_DOUBLE_EQ(recorder.truncatingAverage(), -2.0 / 3.0);
}

TEST_F(MetricRecorderTest, GoesOnFromTheLeastIntegerWhenTheSumLeavesItsRange) {
    record({2147483647.9});
    EXPECT_EQ(recorder.truncatingAverage(), 2147483647.0);
    record({1.0});
    EXPECT_EQ(recorder.truncatingAverage(), -2147483648.0 / 2.0);
    record({48.0, std::numeric_limits<double>::quiet_NaN(), 8.0});
    EXPECT_EQ(recorder.truncatingAverage(), -2147483640.0 / 5.0);
}

TEST_F(MetricRecorderTest, ComparesValuesToWithinAMillionth) {
    record({0.0, 0.9e-6, -1.1e-6, -110.0});
    EXPECT_EQ(recorder.nonZeroFraction(), 0.5);
    EXPECT_EQ(recorder.codeListFraction({-110.0000009, 5.0}), 0.25);
    EXPECT_EQ(recorder.codeListFraction({-110.0000011}), 0.0);
    EXPECT_EQ(recorder.codeListFraction({}), 0.0);
    EXPECT_EQ(recorder.codeListFraction({0.0, -110.0, -110.0}), 0.75);
}

TEST_F(MetricRecorderTest, DropsASampleWhenItReachesItsTimeToLive) {
    recorder.record(1.0);
    clock.advance(0.5);
    recorder.record(2.0);
    clock.advance(899.25);
    EXPECT_EQ(recorder.truncatingAverage(), 1.5);
    clock.advance(0.25);
    EXPECT_EQ(recorder.truncatingAverage(), 2.0);
    clock.advance(0.5);
    EXPECT_EQ(recorder.truncatingAverage(), 0.0);
    recorder.record(4.0);
    EXPECT_EQ(recorder.truncatingAverage(), 4.0);
}

TEST_F(MetricRecorderTest, PurgesOnlyUpToTheFirstLiveSample) {
    recorder.record(1.0);
    clock.advance(-1000.0);  // the host's clock was set back
    recorder.record(3.0);
    clock.advance(1000.0);
    EXPECT_EQ(recorder.truncatingAverage(), 2.0);
}

TEST_F(MetricRecorderTest, PurgesOnlyWhenToldTo) {
    recorder.record(1.0);
    clock.advance(1000.0);
    recorder.purgeExpired(false);
    clock.advance(-1000.0);
    EXPECT_EQ(recorder.maximum(), 1.0);
    clock.advance(1000.0);
    recorder.purgeExpired(true);
    clock.advance(-1000.0);
    EXPECT_EQ(recorder.maximum(), 0.0);
}

TEST(MetricRecorder, DoesNotPurgeInTheFirstSecondsOf1970) {
    support::ManualClock clock(0.0);
    MetricRecorder recorder(1);
    recorder.record(1.0);
    clock.advance(4.5);
    EXPECT_EQ(recorder.maximum(), 1.0);
    clock.advance(0.5);
    EXPECT_EQ(recorder.maximum(), 0.0);
}

}  // namespace
