#include <zel/monitor/metric_recorder.h>

#include <algorithm>
#include <cmath>

#include "base/clock.h"
#include "base/truncate.h"

namespace ZEL {
namespace {

constexpr double kTolerance = 1e-6;

}  // namespace

MetricRecorder::MetricRecorder(int ttl_seconds) : ttl_(ttl_seconds) {}

void MetricRecorder::record(double value) {
    samples_.push_back({value, now()});
}

double MetricRecorder::maximum() {
    purgeExpired(true);
    if (samples_.empty()) {
        return 0.0;
    }
    double largest = samples_.front().value;
    for (const Sample& sample : samples_) {
        largest = std::max(largest, sample.value);
    }
    return largest;
}

double MetricRecorder::truncatingAverage() {
    purgeExpired(true);
    if (samples_.empty()) {
        return 0.0;
    }
    int32_t sum = 0;
    for (const Sample& sample : samples_) {
        sum = truncateToInt32(sum + sample.value);  // intended: cut at every step
    }
    return sum / static_cast<double>(samples_.size());
}

template <typename Predicate>
double MetricRecorder::fraction(Predicate matches) {
    purgeExpired(true);
    if (samples_.empty()) {
        return 0.0;
    }
    const auto count = std::count_if(samples_.begin(), samples_.end(),
                                     [&](const Sample& sample) { return matches(sample.value); });
    return static_cast<double>(count) / static_cast<double>(samples_.size());
}

double MetricRecorder::nonZeroFraction() {
    return fraction([](double value) { return std::abs(value) > kTolerance; });
}

double MetricRecorder::codeListFraction(const std::vector<double>& codes) {
    return fraction([&](double value) {
        return std::any_of(codes.begin(), codes.end(),
                           [&](double code) { return std::abs(value - code) <= kTolerance; });
    });
}

void MetricRecorder::purgeExpired(bool flag) {
    constexpr double kPurgeInterval = 5.0;  // seconds
    const double current = now();
    // Intended: the time of the last purge stays 0, so by the wall clock every query purges.
    if (!flag || current - last_purge_ < kPurgeInterval) {
        return;
    }
    const auto live = std::find_if(samples_.begin(), samples_.end(),
                                   [&](const Sample& sample) { return current - sample.time < ttl_; });
    samples_.erase(samples_.begin(), live);
}

}  // namespace ZEL
