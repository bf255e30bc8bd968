#include "watch/playback.h"

#include <zel/player.h>

#include <algorithm>
#include <fmt/format.h>
#include <limits>

namespace zel_monitor {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr uint64_t kSource = 0;  ///< the monitors do not tell sources apart
constexpr std::chrono::seconds kBetweenReports{1};

/// No remote switch is set.
class NoSwitches : public ZEL::ConfigAdapter {
  public:
    bool getBool(const std::string& /*key*/, bool default_value) override { return default_value; }
    int32_t getInt(const std::string& /*key*/, int32_t default_value) override { return default_value; }
};

ZEL::ZELManager& manager() {
    static ZEL::ZELManager& instance = []() -> ZEL::ZELManager& {
        ZEL::ZELManager& made = ZEL::ZELManager::getInstance();
        made.setConfigAdapter(std::make_shared<NoSwitches>());
        made.initDataMonitors();
        made.start();
        return made;
    }();
    return instance;
}

std::string wholeMilliseconds(std::chrono::steady_clock::duration duration) {
    return fmt::format("{:.0f}", Milliseconds(duration).count());
}

}  // namespace

void Playback::shown(TimePoint now, uint64_t bytes_received) {
    if (!first_shown_) {
        first_shown_ = now;
        last_report_ = {.time = opening_, .bytes = 0};
    }
    if (now - last_report_->time < kBetweenReports) {
        return;
    }
    // The monitors read the count as a 32-bit number.
    constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();
    const uint64_t bytes = std::min(bytes_received - last_report_->bytes, kMost);
    const std::chrono::duration<double> interval = now - last_report_->time;
    manager().reportPeriodic(kSource, {{"play_scenario", fmt::format("{}", static_cast<int>(scenario_))},
                                       {"recv_bytes", fmt::format("{}", bytes)},
                                       {"zel_time_interval", fmt::format("{:f}", interval.count())}});
    last_report_ = {.time = now, .bytes = bytes_received};
}

void Playback::end(TimePoint now, int error_code, std::chrono::duration<double> stalled) {
    ReportMap report = {{"play_scenario", fmt::format("{}", static_cast<int>(scenario_))},
                        {"quit_time", wholeMilliseconds(now - opening_)},
                        {"error_code", fmt::format("{}", error_code)},
                        {"abnormal_total_time", fmt::format("{:f}", Milliseconds(stalled).count())}};
    if (first_shown_) {
        report["first_frame_rendering_time"] =
            fmt::format("{:f}", Milliseconds(*first_shown_ - opening_).count());
        report["play_time"] = wholeMilliseconds(now - *first_shown_);
    }
    manager().reportPlaybackEnd(kSource, std::move(report));
}

Assessments Playback::assess() {
    Assessments answers;
    for (const char* const name : {"RecentPlayerFF", "RefNetSpeed", "PlayerErrorRate", "PlayerBufferRate"}) {
        answers[name] = ZEL::ZELHA::getInstance().evaluate(name);
    }
    return answers;
}

}  // namespace zel_monitor
