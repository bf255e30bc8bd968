#ifndef ZEL_TOOLS_SCAN_SCAN_H_
#define ZEL_TOOLS_SCAN_SCAN_H_

#include "scan/scan_options.h"

namespace zel_monitor {

/// Scans the inputs, writes what was asked for and gives the program's exit status. The first Ctrl-C
/// ends the scan early, with all that was found until then. Throws OutputError.
int runScan(const ScanOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_SCAN_H_
