#ifndef ZEL_TOOLS_SCAN_SCAN_H_
#define ZEL_TOOLS_SCAN_SCAN_H_

#include "scan/scan_options.h"

namespace zel_monitor::scan {

/// Scans the inputs, writes what was asked for and gives the program's exit status.
int runScan(const ScanOptions& options);

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_SCAN_H_
