#ifndef ZEL_TOOLS_REPORT_REPORT_JSON_H_
#define ZEL_TOOLS_REPORT_REPORT_JSON_H_

#include <zel/events/event.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "report/report.h"

namespace zel_monitor {

/// Grows when a reader of the report would go wrong.
inline constexpr int kReportVersion = 2;

/// The whole of a scan that exits with `status`, as the schema describes it.
nlohmann::ordered_json reportJson(const std::vector<InputReport>& reports, const ScanSettings& settings,
                                  int status);

nlohmann::ordered_json settingsJson(const ScanSettings& settings);
/// One of the report's inputs.
nlohmann::ordered_json inputJson(const InputReport& report, const ScanSettings& settings);
nlohmann::ordered_json eventJson(const ZEL::Event& event);
/// Null if nothing was measured.
nlohmann::ordered_json evidenceJson(ZEL::EventKind kind, const std::optional<ZEL::Evidence>& evidence);
/// "pass", "fail", "incomplete" or null.
nlohmann::ordered_json verdictJson(const InputReport& report, const Policy& policy);
/// Null if there is none.
nlohmann::ordered_json problemJson(const InputReport& report);

/// To the microsecond; null for what is not finite.
nlohmann::ordered_json numberJson(double value);
nlohmann::ordered_json toolJson();

/// The text and a newline; over several lines, for people too, if `indented`. What is not UTF-8 becomes a
/// replacement character: file names are bytes.
std::string jsonText(const nlohmann::ordered_json& json, bool indented);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_REPORT_JSON_H_
