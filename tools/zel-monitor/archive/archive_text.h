#ifndef ZEL_TOOLS_ARCHIVE_ARCHIVE_TEXT_H_
#define ZEL_TOOLS_ARCHIVE_ARCHIVE_TEXT_H_

#include <string>

#include "archive/archive.h"

namespace zel_monitor {

/// For people: totals, the worst folders and the worst files.
std::string archiveTable(const Archive& archive);

/// A row per input.
std::string archiveCsv(const Archive& archive);

/// The lines that a scan of all the inputs would write as JSON lines.
std::string archiveJsonLines(const Archive& archive);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_ARCHIVE_ARCHIVE_TEXT_H_
