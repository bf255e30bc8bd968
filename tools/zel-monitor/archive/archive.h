#ifndef ZEL_TOOLS_ARCHIVE_ARCHIVE_H_
#define ZEL_TOOLS_ARCHIVE_ARCHIVE_H_

#include <zel/events/kinds.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/file_list.h"
#include "report/report.h"
#include "report/stored/store.h"

namespace zel_monitor {

/// One input of an archive, and what is stored of it.
struct ArchivedInput {
    InputReport report;    ///< of one that is missing: only its name and the problem
    bool missing = false;  ///< nothing is stored of it
    std::string path;      ///< absolute
    size_t settings = 0;   ///< which of the archive's it was scanned with
    Policy policy{};       ///< that it is judged by
    ZEL::PerEventKind<Totals> totals{};
    double fault_s = 0.0;  ///< of all kinds of faults; what they share counts for each
};

/// Settings that inputs were scanned with: one and the same, if nobody changed them on the way.
struct UsedSettings {
    nlohmann::ordered_json json;
    std::string tool_version;
    ScanSettings settings;
    size_t inputs = 0;
};

/// All that is stored of many inputs, the worst first: those that were not analysed to their end, then by the
/// time in which they are faulty.
struct Archive {
    std::vector<ArchivedInput> inputs;
    std::vector<UsedSettings> settings;
    size_t unreadable = 0;  ///< files in the store that hold no report
};

/// Reads what is stored of the listed inputs, or of all that have ever been stored. Inputs are judged by
/// `policy`, or by those that they were scanned with. Throws std::runtime_error if the list cannot be read.
Archive readArchive(const Store& store, const std::optional<FileList>& list,
                    const std::optional<Policy>& policy);

/// Of several inputs.
struct Summary {
    struct Kind {
        size_t inputs = 0;
        size_t events = 0;
        double total_s = 0.0;
        double longest_s = 0.0;
    };
    size_t inputs = 0;
    size_t missing = 0;
    size_t incomplete = 0;  ///< not analysed to their end, and not missing
    size_t passed = 0;
    size_t failed = 0;
    size_t surveyed = 0;
    size_t deserve_scan = 0;
    double analysed_s = 0.0;
    double fault_s = 0.0;
    ZEL::PerEventKind<Kind> kinds{};

    void add(const ArchivedInput& input);
};

struct Folder {
    std::string name;
    Summary summary;
};

Summary summaryOf(const Archive& archive);
/// The folders that the inputs lie in, by their time of faults, the worst first.
std::vector<Folder> foldersOf(const Archive& archive);

/// The exit status: an input that is missing or was not analysed to its end outweighs a violation.
int exitStatusOf(const Summary& summary);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_ARCHIVE_ARCHIVE_H_
