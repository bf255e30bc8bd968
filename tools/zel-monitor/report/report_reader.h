#ifndef ZEL_TOOLS_REPORT_REPORT_READER_H_
#define ZEL_TOOLS_REPORT_REPORT_READER_H_

#include <nlohmann/json.hpp>

#include "report/report.h"

namespace zel_monitor {

/// What inputJson() wrote. It would write the same again, but that it reads times which were rounded, and for
/// the policy at hand. Throws what nlohmann::json throws, and std::out_of_range, if it is anything else.
InputReport inputReportFrom(const nlohmann::ordered_json& json);

/// The same for settingsJson().
ScanSettings settingsFrom(const nlohmann::ordered_json& json);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_REPORT_READER_H_
