#ifndef ZEL_TOOLS_ARCHIVE_ARCHIVE_REPORT_H_
#define ZEL_TOOLS_ARCHIVE_ARCHIVE_REPORT_H_

#include "archive/archive_options.h"

namespace zel_monitor {

/// Sums up what is stored, writes what was asked for and gives the program's exit status. Throws OutputError.
int runArchiveReport(const ArchiveOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_ARCHIVE_ARCHIVE_REPORT_H_
