#include <zel/monitor/health_assessment.h>

#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "support/manual_clock.h"

namespace {

using ZEL::ZELHA;

class Switches : public ZEL::ConfigAdapter {
  public:
    explicit Switches(int32_t ttl) : ttl_(ttl) {}
    bool getBool(const std::string& /*key*/, bool default_value) override { return default_value; }
    int32_t getInt(const std::string& key, int32_t default_value) override {
        asked.emplace_back(key, default_value);
        return ttl_;
    }
    std::vector<std::pair<std::string, int32_t>> asked;

  private:
    int32_t ttl_;
};

class HealthAssessment : public testing::Test {
  protected:
    void record(const std::string& metric, const std::vector<double>& values) {
        for (const double value : values) {
            health.record(metric, value);
        }
    }

    support::ManualClock clock;
    ZELHA health;
};

/// The answer with these values and what every answer has.
ReportMap answer(const std::string& metric, ReportMap values) {
    values.insert({{"count", std::to_string(values.size())}, {"metric", metric}, {"version", "1"}});
    return values;
}

TEST_F(HealthAssessment, LeavesOutWhatWasNeverRecordedOrIsNearlyZero) {
    health.record("ref_speed", 1e-7);
    for (const std::string name : {"RecentPlayerFF", "RefNetSpeed", "PlayerErrorRate", "PlayerBufferRate"}) {
        EXPECT_EQ(health.evaluate(name), (ReportMap{{"count", "0"}, {"metric", name}, {"version", "1"}}));
    }
}

TEST_F(HealthAssessment, AveragesFirstFrameTimes) {
    record("recent_ff", {1500.7, 1499.6});
    record("recent_ff_vod", {0.4});
    EXPECT_EQ(health.evaluate("RecentPlayerFF"), answer("RecentPlayerFF", {{"recent_ff", "1499.500000"}}));
    record("recent_ff_live", {850.0});
    record("recent_ff_vod", {1250.0, 1250.0});
    EXPECT_EQ(health.evaluate("RecentPlayerFF"), answer("RecentPlayerFF", {{"recent_ff", "1499.500000"},
                                                                           {"recent_ff_live", "850.000000"},
                                                                           {"recent_ff_vod", "833.333333"}}));
}

TEST_F(HealthAssessment, ReportsTheHighestSpeeds) {
    record("ref_speed", {500000.0, 125000.25, 499999.0});
    record("ref_speed_live", {500000.0});
    record("ref_speed_vod", {0.0, 125000.25});
    EXPECT_EQ(health.evaluate("RefNetSpeed"), answer("RefNetSpeed", {{"recent_max", "500000.000000"},
                                                                     {"recent_live_max", "500000.000000"},
                                                                     {"recent_vod_max", "125000.250000"}}));
}

TEST_F(HealthAssessment, TellsErrorsAndNetworkErrorsApart) {
    record("error_code", {0.0, 0.0});
    EXPECT_EQ(health.evaluate("PlayerErrorRate"), answer("PlayerErrorRate", {}));
    record("error_code", {-20001.0});
    EXPECT_EQ(health.evaluate("PlayerErrorRate"),
              answer("PlayerErrorRate", {{"recent_error_rate", "0.333333"}}));
    record("error_code", {-110.0});
    EXPECT_EQ(health.evaluate("PlayerErrorRate"),
              answer("PlayerErrorRate",
                     {{"recent_error_rate", "0.500000"}, {"recent_network_error_rate", "0.250000"}}));
}

TEST_F(HealthAssessment, KnowsTwentyThreeNetworkErrors) {
    const std::vector<double> network = {-60,    -65,    -57,    -54,    -5,     -103,   -110,      -50000,
                                         -50001, -50002, -50003, -50007, -50008, -50009, -50010,    -100010,
                                         -10605, -10608, -10609, -10610, -10612, -10613, -541478725};
    record("error_code", network);
    EXPECT_EQ(health.evaluate("PlayerErrorRate").at("recent_network_error_rate"), "1.000000");
    record("error_code", {-50004, -50005, -50006, -10606, -10607, -10611, -10614, -1, 60});
    EXPECT_EQ(health.evaluate("PlayerErrorRate").at("recent_network_error_rate"), "0.718750");  // 23 of 32
    EXPECT_EQ(health.evaluate("PlayerErrorRate").at("recent_error_rate"), "1.000000");
}

TEST_F(HealthAssessment, AveragesStalling) {
    record("bufms_per_second", {50.0, 0.9});
    EXPECT_EQ(health.evaluate("PlayerBufferRate"),
              answer("PlayerBufferRate", {{"avg_bufms_ps", "25.000000"}}));
}

TEST_F(HealthAssessment, RefusesAnyOtherName) {
    for (const std::string name : {"playerbufferrate", "PlayerBufferRate ", "PlayerBufferRat", ""}) {
        EXPECT_EQ(health.evaluate(name),
                  (ReportMap{{"metric", "Invalid"}, {"Error", "invalid argument"}, {"count", "0"}}))
            << name;
    }
}

TEST_F(HealthAssessment, CountsSamplesForFifteenMinutes) {
    record("recent_ff", {1000.0});
    clock.advance(0.125);
    record("recent_ff", {2000.0});
    clock.advance(899.8125);
    EXPECT_EQ(health.evaluate("RecentPlayerFF").at("recent_ff"), "1500.000000");
    clock.advance(0.0625);
    EXPECT_EQ(health.evaluate("RecentPlayerFF").at("recent_ff"), "2000.000000");
    clock.advance(0.125);
    EXPECT_EQ(health.evaluate("RecentPlayerFF"), answer("RecentPlayerFF", {}));
}

TEST_F(HealthAssessment, AsksForTheTimeToLiveAtAMetricsFirstSample) {
    const auto switches = std::make_shared<Switches>(60);
    record("ref_speed", {1.0});
    health.setConfigAdapter(switches);
    record("ref_speed", {2.0});
    record("ref_speed_live", {3.0, 3.0});
    EXPECT_THAT(switches->asked, testing::ElementsAre(std::pair("DefaultMetricsTTL", 900)));
    clock.advance(60.0);
    EXPECT_EQ(health.evaluate("RefNetSpeed"), answer("RefNetSpeed", {{"recent_max", "2.000000"}}));
    record("ref_speed_live", {4.0});  // the series keeps its time to live although it was empty
    clock.advance(59.0);
    EXPECT_EQ(health.evaluate("RefNetSpeed").at("recent_live_max"), "4.000000");
    EXPECT_EQ(switches->asked.size(), 1U);
    health.setConfigAdapter(nullptr);
    record("ref_speed_vod", {5.0});
    clock.advance(899.0);
    EXPECT_EQ(health.evaluate("RefNetSpeed"), answer("RefNetSpeed", {{"recent_vod_max", "5.000000"}}));
}

TEST_F(HealthAssessment, RecordsAndEvaluatesOnManyThreads) {
    constexpr int kEach = 2000;
    std::vector<std::thread> threads;
    for (const std::string metric : {"error_code", "bufms_per_second"}) {
        threads.emplace_back([this, metric] {
            for (int i = 0; i < kEach; ++i) {
                health.record(metric, i % 2);
            }
        });
    }
    for (const std::string name : {"PlayerErrorRate", "PlayerBufferRate"}) {
        threads.emplace_back([this, name] {
            for (int i = 0; i < 200; ++i) {
                EXPECT_EQ(health.evaluate(name).at("metric"), name);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(health.evaluate("PlayerErrorRate").at("recent_error_rate"), "0.500000");
    EXPECT_EQ(health.evaluate("PlayerBufferRate").at("avg_bufms_ps"), "0.500000");
}

}  // namespace
