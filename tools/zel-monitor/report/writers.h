#ifndef ZEL_TOOLS_REPORT_WRITERS_H_
#define ZEL_TOOLS_REPORT_WRITERS_H_

#include <zel/events/event.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "report/report.h"
#include "scan/scan_options.h"

namespace zel_monitor {

/// The kinds of faults with their defaults, for --list-detectors.
std::string detectorTable();

/// PASS, FAIL or INCOMPLETE with the reasons; empty without a policy.
std::string verdictText(const InputReport& report, const Policy& policy);
/// Summary, events and verdict of one input.
std::string inputTable(const InputReport& report, const Policy& policy);
/// What several inputs come to together.
std::string totalTable(const std::vector<InputReport>& reports, const Policy& policy);

/// The whole of a scan that exits with `status`, as docs/scan-report.schema.json describes it.
nlohmann::ordered_json reportJson(const std::vector<InputReport>& reports, const ScanOptions& options,
                                  int status);
/// With line ends and indentation, for people too.
std::string jsonText(const nlohmann::ordered_json& json);

/// One event as a line of JSON, with its newline.
std::string eventLine(const std::string& input, const ZEL::Event& event);

std::string csvHeader();
std::string csvLine(const std::string& input, const ZEL::Event& event);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_WRITERS_H_
