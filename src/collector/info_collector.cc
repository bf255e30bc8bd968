#include <zel/collector/info_collector.h>

namespace ZEL {

std::shared_ptr<ZELInfoCollector> ZELInfoCollector::create(const std::string& name) {
    if (name == "ZELAccumulativeInfoCollector") {
        return std::make_shared<ZELAccumulativeInfoCollector>();
    }
    if (name == "ZELSerialStatisticsInfoCollector") {
        return std::make_shared<ZELSerialStatisticsInfoCollector>();
    }
    return nullptr;
}

ZELInfoCollector::~ZELInfoCollector() = default;

int ZELInfoCollector::addSerialData(const std::string& /*key*/, const std::vector<float>& /*samples*/) {
    return 0;
}

int ZELInfoCollector::addAccumulativeData(const std::map<std::string, int64_t>& /*values*/) {
    return 0;
}

}  // namespace ZEL
