#include <zel/collector/info_collector.h>

#include <algorithm>
#include <cmath>
#include <span>

#include "base/mutex.h"
#include "base/text.h"

namespace ZEL {
namespace {

/// Every rounding is part of the definition: sums run in double in the order of the samples, all else in
/// float.
class SeriesStatistics {
  public:
    explicit SeriesStatistics(std::span<const float> samples)
        : samples_(samples), count_(static_cast<float>(samples.size())) {
        double sum = 0.0;
        for (const float sample : samples) {
            sum += static_cast<double>(sample);
        }
        mean = static_cast<float>(sum) / count_;

        double squares = 0.0;
        for (const float sample : samples) {
            const float deviation = sample - mean;
            squares += static_cast<double>(deviation * deviation);
        }
        sd = std::sqrt(static_cast<float>(squares) / count_);
    }

    /// The share of samples less than `distance` from the mean: none, not even the mean itself, at 0.
    float shareWithin(float distance) const {
        const float low = mean - distance;
        const float high = mean + distance;
        const auto within = std::count_if(samples_.begin(), samples_.end(),
                                          [=](float sample) { return low < sample && sample < high; });
        return static_cast<float>(within) / count_;
    }

    float mean;
    float sd;

  private:
    std::span<const float> samples_;
    float count_;
};

}  // namespace

struct ZELSerialStatisticsInfoCollector::State {
    Mutex mutex;
    std::map<std::string, std::vector<float>> series ZEL_GUARDED_BY(mutex);
};

ZELSerialStatisticsInfoCollector::ZELSerialStatisticsInfoCollector() : state_(std::make_unique<State>()) {}

ZELSerialStatisticsInfoCollector::~ZELSerialStatisticsInfoCollector() = default;

std::map<std::string, std::string> ZELSerialStatisticsInfoCollector::collect() {
    const MutexLock lock(state_->mutex);
    std::map<std::string, std::string> fields;
    for (const auto& [key, samples] : state_->series) {
        const SeriesStatistics statistics(samples);
        fields[key + "_mean"] = fixedText(statistics.mean);
        fields[key + "_sd"] = fixedText(statistics.sd);
        fields[key + "_cnt"] = std::to_string(samples.size());
        fields[key + "_lt_2sd_rate"] = fixedText(statistics.shareWithin(statistics.sd + statistics.sd));
        fields[key + "_lt_3sd_rate"] = fixedText(statistics.shareWithin(statistics.sd * 3.0F));
    }
    state_->series.clear();
    return fields;
}

void ZELSerialStatisticsInfoCollector::reset() {
    const MutexLock lock(state_->mutex);
    state_->series.clear();
}

int ZELSerialStatisticsInfoCollector::addSerialData(const std::string& key,
                                                    const std::vector<float>& samples) {
    if (samples.empty()) {
        return 0;
    }
    const MutexLock lock(state_->mutex);
    std::vector<float>& series = state_->series[key];
    series.insert(series.end(), samples.begin(), samples.end());
    return 0;
}

}  // namespace ZEL
