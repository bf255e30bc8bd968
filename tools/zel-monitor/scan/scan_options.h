#ifndef ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_
#define ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_

#include <string>
#include <vector>

#include "scan/kinds.h"
#include "scan/report.h"

namespace CLI {
class App;
}

namespace zel_monitor::scan {

enum class Format { kTable, kJson, kJsonLines, kCsv };

struct ScanOptions {
    std::vector<std::string> inputs;
    EventRules rules = defaultRules();
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

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_
