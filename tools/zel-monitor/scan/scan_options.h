#ifndef ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_
#define ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_

#include <zel/events/kinds.h>

#include <string>
#include <vector>

#include "report/report.h"

namespace CLI {
class App;
}

namespace zel_monitor {

enum class Format { kTable, kJson, kJsonLines, kCsv };

struct ScanOptions {
    std::vector<std::string> inputs;
    ZEL::EventRules rules = ZEL::defaultEventRules();
    Policy policy;
    Format format = Format::kTable;
    std::string output;  ///< empty: standard output
    std::string html;    ///< empty: no page
    bool overwrite = false;
    bool quiet = false;
    bool list_detectors = false;
    unsigned jobs = 1;
};

/// Adds the command "scan" to `app`; when it is parsed, `options` holds what was asked for. `options`
/// outlives the parsing.
CLI::App* addScanCommand(CLI::App& app, ScanOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_
