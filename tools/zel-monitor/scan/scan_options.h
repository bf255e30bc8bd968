#ifndef ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_
#define ZEL_TOOLS_SCAN_SCAN_OPTIONS_H_

#include <optional>
#include <string>
#include <vector>

#include "cli/file_list.h"
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

/// How long the scan of one file may take.
struct TimeLimit {
    std::optional<double> base_s;
    double per_gigabyte_s = 0.0;  ///< and that much more for each 10^9 bytes of it
};

/// Where reports are kept, and which of them are not good enough.
struct StoreOptions {
    std::string folder;  ///< empty: nowhere
    bool retry_failed = false;
    bool rescan = false;
    bool by_content = false;  ///< a file is the same as long as its content is
};

struct ScanOptions {
    FileList inputs;
    std::string shard;  ///< empty: all
    StoreOptions store;
    TimeLimit limit;
    bool then_scan = false;
    ScanSettings settings;
    const ReportFormat* format = &kTableFormat;
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
