#ifndef ZEL_TOOLS_REPORT_SCHEMA_H_
#define ZEL_TOOLS_REPORT_SCHEMA_H_

#include <nlohmann/json.hpp>

namespace zel_monitor {

/// The JSON Schema of what reportJson() gives. Its "$defs" also hold the lines of JSON lines, "event_line"
/// and "status_line". docs/scan-report.schema.json is its text.
nlohmann::ordered_json reportSchema();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_SCHEMA_H_
