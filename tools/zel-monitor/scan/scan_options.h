#ifndef ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_
#define ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_

#include <string>
#include <vector>

#include "report/formats.h"
#include "report/report.h"

namespace CLI {
class App;
}

namespace zel_monitor {

/// A format that comes beside the main one, in a file of its own.
struct FormatFile {
    const ReportFormat* format;
    std::string file;
};

struct ScanOptions {
    std::vector<std::string> inputs;
    ScanSettings settings;
    const ReportFormat* format = kReportFormats.data();
    std::string output;  ///< empty: standard output
    std::vector<FormatFile> beside;
    bool overwrite = false;
    bool quiet = false;
    bool list_detectors = false;
    bool schema = false;
    unsigned jobs = 1;
};

/// Adds the options to a command; when it was parsed, `options`, which outlives the parsing, holds what was
/// asked for.
void addScanOptions(CLI::App& command, ScanOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_
