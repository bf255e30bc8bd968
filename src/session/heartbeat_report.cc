#include "session/heartbeat_report.h"

#include <string>
#include <utility>

#include "base/text.h"

namespace ZEL {
namespace {

void writeStat(ReportMap& report, const AlgoStat& stat) {
    report["zel_vframes"] = std::to_string(stat.vframes);
    report["zel_vframes_time"] = fixedText(stat.vframes_time);
    report["zel_aframes"] = std::to_string(stat.aframes);
    report["zel_aframes_time"] = fixedText(stat.aframes_time);
    report["zel_fail_count"] = std::to_string(stat.fail_count);
}

void writeValue(ReportMap& report, const std::string& name, int32_t value) {
    report["zel_" + name] = std::to_string(value);
}

}  // namespace

ReportMap HeartbeatReport::fields(int64_t token, const AlgoStat& period, const EventSnapshot& now) const {
    ReportMap fields;
    fields["zel_heartbeat_seq"] = std::to_string(static_cast<int32_t>(sequence_));
    fields["zel_token"] = std::to_string(token);
    writeStat(fields, period);
    for (const auto& [name, value] : now.counters) {
        const auto last = last_.counters.find(name);
        const int32_t before = last != last_.counters.end() ? last->second : 0;
        writeValue(fields, name,
                   static_cast<int32_t>(static_cast<uint32_t>(value) - static_cast<uint32_t>(before)));
    }
    for (const auto& [name, value] : now.gauges) {
        writeValue(fields, name, value);
    }
    return fields;
}

void HeartbeatReport::closePeriod(EventSnapshot now) noexcept {
    ++sequence_;
    last_ = std::move(now);
}

ReportMap HeartbeatReport::wholeLife(const AlgoStat& total, const EventSnapshot& now) {
    ReportMap report;
    writeStat(report, total);
    for (const auto& [name, value] : now.counters) {
        writeValue(report, name, value);
    }
    return report;
}

}  // namespace ZEL
