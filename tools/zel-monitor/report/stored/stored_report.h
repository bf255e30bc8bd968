#ifndef ZEL_TOOLS_REPORT_STORED_STORED_REPORT_H_
#define ZEL_TOOLS_REPORT_STORED_STORED_REPORT_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "report/report.h"
#include "report/stored/file_state.h"

namespace zel_monitor {

/// Where and when a report was made: for whoever looks into the store.
struct MadeBy {
    std::string at;
    double took_s = 0.0;
    std::string host;
};

/// What was found in one input, and what that holds for.
struct StoredReport {
    std::string path;  ///< absolute: see absoluteName()
    FileState state;   ///< of the input before it was scanned
    std::string tool_version;
    nlohmann::ordered_json settings;  ///< as settingsJson() has them
    MadeBy made;
    int attempts = 1;    ///< that have failed one after the other, if it has failed
    InputReport report;  ///< whose input is the path
};

/// One line of JSON, and what it says; none for what is no such line, or of another version.
std::string storedText(const StoredReport& stored, const ScanSettings& settings);
std::optional<StoredReport> storedReportFrom(std::string_view text);

/// This program's version.
std::string_view toolVersion();

/// Whether settings lead to the same events: they differ in the policy at most. A full scan does for a survey
/// as well.
bool settingsDoFor(const nlohmann::ordered_json& stored, const nlohmann::ordered_json& wanted);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_STORED_STORED_REPORT_H_
