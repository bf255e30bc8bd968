#include <zel/monitor/data_monitor.h>

#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/recent_health.h"

namespace {

using Operation = void (ZEL::ZELDataMonitor::*)(uint64_t, ReportMap);

constexpr Operation kPeriodic = &ZEL::ZELDataMonitor::reportPeriodic;
constexpr Operation kPlaybackEnd = &ZEL::ZELDataMonitor::reportPlaybackEnd;

// Error rates beside the two codes that RecentHealth adds.
constexpr const char* kNoCode = "0.500000";
constexpr const char* kCodeZero = "0.333333";
constexpr const char* kCodeError = "0.666667";
constexpr const char* kOneOfThree = "0.333333";

struct Row {
    ReportMap report;
    ReportMap figures;
};

class PlayerDataMonitor : public testing::Test {
  protected:
    void expectFigures(Operation operation, const Row& row) {
        health.forget();
        (monitor.*operation)(17, row.report);
        EXPECT_EQ(health.figures(), row.figures) << testing::PrintToString(row.report);
    }

    support::RecentHealth health;
    ZEL::ZELPlayerDataMonitor player;
    ZEL::ZELDataMonitor& monitor = player;
};

TEST_F(PlayerDataMonitor, TurnsPeriodicReportsIntoSpeeds) {
    const ReportMap half_a_million = {{"recv_bytes", "1000000"}, {"zel_time_interval", "2"}};
    const auto in_scenario = [&](const std::string& scenario) {
        ReportMap report = half_a_million;
        report["play_scenario"] = scenario;
        return report;
    };
    const std::string speed = "500000.000000";
    const std::vector<Row> rows = {
        {half_a_million, {{"recent_max", speed}}},
        {in_scenario("0"), {{"recent_max", speed}, {"recent_live_max", speed}}},
        {in_scenario("1"), {{"recent_max", speed}}},
        {in_scenario("2"), {{"recent_max", speed}, {"recent_vod_max", speed}}},
        {{{"recv_bytes", " 2147483647 bytes"}, {"zel_time_interval", "1"}},
         {{"recent_max", "2147483647.000000"}}},
        {{{"recv_bytes", "1000"}, {"zel_time_interval", "0.51"}}, {{"recent_max", "1960.784314"}}},
        {{{"recv_bytes", "1000"}, {"zel_time_interval", "0.5"}}, {}},
        {{{"recv_bytes", "1000"}, {"zel_time_interval", "-2"}}, {}},
        {{{"recv_bytes", "1000"}, {"zel_time_interval", "nan"}}, {}},
        {{{"recv_bytes", "1000"}}, {}},
        {{{"zel_time_interval", "2"}}, {}},
        {{}, {}},
    };
    for (Row row : rows) {
        row.figures["recent_error_rate"] = kNoCode;
        expectFigures(kPeriodic, row);
    }
}

TEST_F(PlayerDataMonitor, TurnsPlaybackEndsIntoFirstFramesCodesAndStalls) {
    const std::vector<Row> rows = {
        {{}, {{"recent_error_rate", kCodeZero}}},
        {{{"first_frame_rendering_time", "850.9"}},
         {{"recent_ff", "850.000000"}, {"recent_error_rate", kCodeZero}}},
        {{{"first_frame_rendering_time", "850.9"}, {"play_scenario", "0"}, {"error_code", "7"}},
         {{"recent_ff", "850.000000"}, {"recent_ff_live", "850.000000"}, {"recent_error_rate", kCodeError}}},
        {{{"first_frame_rendering_time", "1"}, {"play_scenario", "2"}, {"quit_time", "9000"}},
         {{"recent_ff", "1.000000"}, {"recent_ff_vod", "1.000000"}, {"recent_error_rate", kCodeZero}}},
        {{{"first_frame_rendering_time", "0.7"}}, {{"recent_error_rate", kCodeZero}}},
        {{{"first_frame_rendering_time", "1e300"}}, {{"recent_error_rate", kCodeZero}}},
        {{{"quit_time", "5000"}}, {{"recent_error_rate", kCodeZero}}},
        // The viewer gave up: -20001, which is no network error.
        {{{"quit_time", "5001"}}, {{"recent_error_rate", kCodeError}}},
        {{{"quit_time", "5001"}, {"first_frame_rendering_time", "0.7"}}, {{"recent_error_rate", kCodeError}}},
        {{{"quit_time", "9000"}, {"error_code", "-110"}},
         {{"recent_error_rate", kCodeError}, {"recent_network_error_rate", kOneOfThree}}},
        {{{"abnormal_total_time", "3000"}, {"play_time", "60000"}},
         {{"avg_bufms_ps", "50.000000"}, {"recent_error_rate", kCodeZero}}},
        {{{"abnormal_total_time", "0.25"}, {"play_time", "1"}},
         {{"avg_bufms_ps", "250.000000"}, {"recent_error_rate", kCodeZero}}},
        {{{"abnormal_total_time", "3000"}, {"play_time", "0"}}, {{"recent_error_rate", kCodeZero}}},
        {{{"abnormal_total_time", "3000"}}, {{"recent_error_rate", kCodeZero}}},
        {{{"abnormal_total_time", "0"}, {"play_time", "60000"}}, {{"recent_error_rate", kCodeZero}}},
    };
    for (const Row& row : rows) {
        expectFigures(kPlaybackEnd, row);
    }
}

TEST_F(PlayerDataMonitor, RecordsNothingOfAReportThatCannotBeRead) {
    const ReportMap periodic = {
        {"play_scenario", "0"}, {"recv_bytes", "1000000"}, {"zel_time_interval", "2"}};
    const ReportMap playback_end = {{"quit_time", "9000"},  {"play_scenario", "0"},
                                    {"error_code", "-110"}, {"first_frame_rendering_time", "850.9"},
                                    {"play_time", "60000"}, {"abnormal_total_time", "3000"}};
    const std::set<std::string> reals = {"zel_time_interval", "first_frame_rendering_time",
                                         "abnormal_total_time"};
    health.forget();
    for (const auto& [operation, good] :
         {std::pair(kPeriodic, periodic), std::pair(kPlaybackEnd, playback_end)}) {
        for (const auto& [key, value] : good) {
            ReportMap bad = good;
            bad[key] = "many";
            EXPECT_THROW((monitor.*operation)(0, bad), std::invalid_argument) << key;
            bad[key] = reals.contains(key) ? "1e999" : "2147483648";
            EXPECT_THROW((monitor.*operation)(0, bad), std::out_of_range) << key;
        }
    }
    EXPECT_EQ(health.figures(), (ReportMap{{"recent_error_rate", kNoCode}}));
}

}  // namespace
