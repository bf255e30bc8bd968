#include <zel/collector/info_collector.h>

#include "base/mutex.h"

namespace ZEL {

struct ZELAccumulativeInfoCollector::State {
    Mutex mutex;
    std::map<std::string, int64_t> totals ZEL_GUARDED_BY(mutex);
};

ZELAccumulativeInfoCollector::ZELAccumulativeInfoCollector() : state_(std::make_unique<State>()) {}

ZELAccumulativeInfoCollector::~ZELAccumulativeInfoCollector() = default;

std::map<std::string, std::string> ZELAccumulativeInfoCollector::collect() {
    const MutexLock lock(state_->mutex);
    std::map<std::string, std::string> fields;
    for (const auto& [key, total] : state_->totals) {
        fields.emplace_hint(fields.end(), key, std::to_string(total));
    }
    state_->totals.clear();
    return fields;
}

void ZELAccumulativeInfoCollector::reset() {
    const MutexLock lock(state_->mutex);
    state_->totals.clear();
}

int ZELAccumulativeInfoCollector::addAccumulativeData(const std::map<std::string, int64_t>& values) {
    const MutexLock lock(state_->mutex);
    for (const auto& [key, value] : values) {
        int64_t& total = state_->totals[key];
        total = static_cast<int64_t>(static_cast<uint64_t>(total) + static_cast<uint64_t>(value));
    }
    return 0;
}

}  // namespace ZEL
