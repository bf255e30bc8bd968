#include <zel/monitor/health_assessment.h>
#include <zel/monitor/metric_recorder.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "base/mutex.h"
#include "base/text.h"

namespace ZEL {
namespace {

double average(MetricRecorder& samples) {
    return samples.truncatingAverage();
}

double maximum(MetricRecorder& samples) {
    return samples.maximum();
}

double errorFraction(MetricRecorder& codes) {
    return codes.nonZeroFraction();
}

double networkErrorFraction(MetricRecorder& codes) {
    // Intended: the gap before -50007, and -100010 in it. The last one is FFmpeg's end of file.
    // Never destroyed: players report until the process ends.
    static const auto* const network_errors = new std::vector<double>{
        -60,    -65,    -57,    -54,    -5,     -103,   -110,   -50000, -50001, -50002, -50003,    -100010,
        -50007, -50008, -50009, -50010, -10605, -10608, -10609, -10610, -10612, -10613, -541478725};
    return codes.codeListFraction(*network_errors);
}

/// One value of an answer, and the samples it is worked out from.
struct Figure {
    const char* key;
    const char* metric;
    double (*value)(MetricRecorder&);
};

constexpr Figure kRecentPlayerFf[] = {{"recent_ff", "recent_ff", &average},
                                      {"recent_ff_live", "recent_ff_live", &average},
                                      {"recent_ff_vod", "recent_ff_vod", &average}};
constexpr Figure kRefNetSpeed[] = {{"recent_max", "ref_speed", &maximum},
                                   {"recent_live_max", "ref_speed_live", &maximum},
                                   {"recent_vod_max", "ref_speed_vod", &maximum}};
constexpr Figure kPlayerErrorRate[] = {{"recent_error_rate", "error_code", &errorFraction},
                                       {"recent_network_error_rate", "error_code", &networkErrorFraction}};
constexpr Figure kPlayerBufferRate[] = {{"avg_bufms_ps", "bufms_per_second", &average}};

struct Assessment {
    std::string_view name;
    std::span<const Figure> figures;
};

constexpr Assessment kAssessments[] = {{"RecentPlayerFF", kRecentPlayerFf},
                                       {"RefNetSpeed", kRefNetSpeed},
                                       {"PlayerErrorRate", kPlayerErrorRate},
                                       {"PlayerBufferRate", kPlayerBufferRate}};

bool isZero(double value) {
    return !(std::abs(value) > 1e-6);
}

}  // namespace

struct ZELHA::State {
    Mutex mutex;
    std::map<std::string, MetricRecorder> recorders ZEL_GUARDED_BY(mutex);
    std::shared_ptr<ConfigAdapter> config_adapter ZEL_GUARDED_BY(mutex);

    /// Of a metric that has its first sample now, in seconds.
    int32_t timeToLive() const ZEL_REQUIRES(mutex) {
        constexpr int32_t kDefault = 900;
        return config_adapter != nullptr ? config_adapter->getInt("DefaultMetricsTTL", kDefault) : kDefault;
    }
};

ZELHA& ZELHA::getInstance() {
    static auto* const instance = new ZELHA;  // never destroyed: players report until the process ends
    return *instance;
}

ZELHA::ZELHA() : state_(std::make_unique<State>()) {}

ZELHA::~ZELHA() = default;

void ZELHA::setConfigAdapter(std::shared_ptr<ConfigAdapter> adapter) {
    const MutexLock lock(state_->mutex);
    state_->config_adapter.swap(adapter);
}

void ZELHA::record(std::string metric, double value) {
    const MutexLock lock(state_->mutex);
    auto recorder = state_->recorders.find(metric);
    if (recorder == state_->recorders.end()) {
        recorder = state_->recorders.emplace(std::move(metric), state_->timeToLive()).first;
    }
    recorder->second.record(value);
}

ReportMap ZELHA::evaluate(std::string assessment) {
    const auto* const known = std::find_if(std::begin(kAssessments), std::end(kAssessments),
                                           [&](const Assessment& a) { return a.name == assessment; });
    if (known == std::end(kAssessments)) {
        return {{"metric", "Invalid"}, {"Error", "invalid argument"}, {"count", "0"}};
    }
    ReportMap answer;
    const MutexLock lock(state_->mutex);
    for (const Figure& figure : known->figures) {
        const auto recorder = state_->recorders.find(figure.metric);
        const double value = recorder != state_->recorders.end() ? figure.value(recorder->second) : 0.0;
        if (!isZero(value)) {
            answer[figure.key] = fixedText(value);
        }
    }
    answer.emplace("count", std::to_string(answer.size()));
    answer.emplace("metric", std::move(assessment));
    answer.emplace("version", "1");
    return answer;
}

}  // namespace ZEL
