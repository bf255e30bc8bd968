#include "session/session_collectors.h"

#include <utility>

namespace ZEL {

SessionCollectors::SessionCollectors() {
    renewNamed();
}

void SessionCollectors::renewNamed() {
    Named fresh;
    for (const char* name : {"ZELAccumulativeInfoCollector", "ZELSerialStatisticsInfoCollector"}) {
        fresh[name] = ZELInfoCollector::create(name);
    }
    const MutexLock lock(mutex_);
    named_.swap(fresh);
}

std::shared_ptr<ZELInfoCollector> SessionCollectors::find(const std::string& name) const {
    const MutexLock lock(mutex_);
    const auto entry = named_.find(name);
    return entry != named_.end() ? entry->second : nullptr;
}

std::shared_ptr<ZELInfoCollector> SessionCollectors::add(const std::string& name) {
    std::shared_ptr<ZELInfoCollector> collector = ZELInfoCollector::create(name);
    if (collector != nullptr) {
        const MutexLock lock(mutex_);
        added_.push_back(collector);
    }
    return collector;
}

void SessionCollectors::collectInto(ReportMap& report, bool with_named) {
    Added order;
    {
        const MutexLock lock(mutex_);
        order = added_;
        if (with_named) {
            for (const auto& [name, collector] : named_) {
                order.push_back(collector);
            }
        }
    }
    for (const auto& collector : order) {
        ReportMap fields = collector->collect();
        fields.merge(report);  // without memory: what was collected is not kept anywhere else
        report.swap(fields);
    }
}

bool SessionCollectors::clear() {
    Named named;
    Added added;
    {
        const MutexLock lock(mutex_);
        named.swap(named_);
        added.swap(added_);
    }
    return !added.empty();
}

}  // namespace ZEL
