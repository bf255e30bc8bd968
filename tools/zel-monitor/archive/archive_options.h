#ifndef ZEL_TOOLS_ARCHIVE_ARCHIVE_OPTIONS_H_
#define ZEL_TOOLS_ARCHIVE_ARCHIVE_OPTIONS_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/file_list.h"
#include "report/report.h"

namespace CLI {
class App;
}

namespace zel_monitor {

enum class ArchiveFormat { kTable, kJson, kJsonLines, kCsv };

struct ArchiveOptions {
    std::string store;
    FileList list;
    std::optional<Policy> policy;
    ArchiveFormat format = ArchiveFormat::kTable;
    std::string output;  ///< empty: standard output
    std::string html;    ///< the index; empty: none
    size_t pages = 100;  ///< of the worst files, beside the index
    std::vector<std::string> pages_of;
    bool overwrite = false;
    bool schema = false;
};

/// Adds the options to a command; when it was parsed, `options`, which outlives the parsing, holds what was
/// asked for.
void addArchiveReportOptions(CLI::App& command, ArchiveOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_ARCHIVE_ARCHIVE_OPTIONS_H_
