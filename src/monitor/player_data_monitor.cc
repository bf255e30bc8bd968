#include <zel/collector/info_collector.h>
#include <zel/monitor/data_monitor.h>
#include <zel/monitor/health_assessment.h>

#include <string>

#include "base/truncate.h"

namespace ZEL {
namespace {

/// Records `value` as `series`, and first as its live or on-demand variant.
void recordByScenario(int scenario, const std::string& series, double value) {
    constexpr int kLive = 0;
    constexpr int kOnDemand = 2;
    if (scenario == kLive) {
        ZELHA::getInstance().record(series + "_live", value);
    } else if (scenario == kOnDemand) {
        ZELHA::getInstance().record(series + "_vod", value);
    }
    ZELHA::getInstance().record(series, value);
}

}  // namespace

void ZELPlayerDataMonitor::reportPeriodic(uint64_t /*source*/, ReportMap report) {
    constexpr double kShortestInterval = 0.5;  // seconds; speeds over less are not trusted
    const int scenario = getInt(report, "play_scenario", -1);
    if (!report.contains("recv_bytes") || !report.contains("zel_time_interval")) {
        return;
    }
    const int bytes = getInt(report, "recv_bytes", 0);
    const double interval = getDouble(report, "zel_time_interval", 0.0);
    if (interval > kShortestInterval) {
        recordByScenario(scenario, "ref_speed", bytes / interval);
    }
}

void ZELPlayerDataMonitor::reportPlaybackEnd(uint64_t /*source*/, ReportMap report) {
    constexpr int kPatienceMs = 5000;
    constexpr int kGaveUpWaiting = -20001;  // intended: no network error
    const int quit_ms = getInt(report, "quit_time", -1);
    const int scenario = getInt(report, "play_scenario", -1);
    int error_code = getInt(report, "error_code", 0);
    const int first_frame_ms = truncateToInt32(getDouble(report, "first_frame_rendering_time", -1.0));
    const int play_ms = getInt(report, "play_time", -1);
    const double stalled_ms = getDouble(report, "abnormal_total_time", -1.0);

    if (first_frame_ms > 0) {
        recordByScenario(scenario, "recent_ff", first_frame_ms);
    } else if (error_code == 0 && quit_ms > kPatienceMs) {
        error_code = kGaveUpWaiting;
    }
    ZELHA::getInstance().record("error_code", error_code);  // 0 as well: it is what makes a rate of errors
    if (stalled_ms > 0.0 && play_ms >= 1) {
        ZELHA::getInstance().record("bufms_per_second", stalled_ms / (play_ms / 1000.0));
    }
}

}  // namespace ZEL
