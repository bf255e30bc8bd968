#ifndef ZEL_TOOLS_SCAN_ARCHIVE_OPTIONS_H_
#define ZEL_TOOLS_SCAN_ARCHIVE_OPTIONS_H_

#include "scan/scan_options.h"

namespace zel_monitor {

/// Adds the options for many files: lists, the store, shards, time limits and surveys.
void addArchiveOptions(CLI::App& command, ScanOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_ARCHIVE_OPTIONS_H_
