#ifndef ZEL_TOOLS_SCAN_STORED_SCANS_H_
#define ZEL_TOOLS_SCAN_STORED_SCANS_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "cli/standard_streams.h"
#include "report/stored/store.h"
#include "scan/scan_options.h"

namespace zel_monitor {

/// The store takes no more.
class StoreError : public OutputError {
  public:
    using OutputError::OutputError;
};

/// The reports that are kept from one run to the next. Any thread.
class StoredScans {
  public:
    /// How often what may pass later is tried before it counts as a failure like any other.
    static constexpr int kMostAttempts = 3;

    /// `settings` outlives this object. Throws std::runtime_error if nothing can be kept there.
    StoredScans(const StoreOptions& options, const ScanSettings& settings);

    /// What is known of an input before it is scanned.
    struct Known {
        std::string path;
        FileState state;
        int failed_attempts = 0;            ///< one after the other
        bool is_stored_whole = false;       ///< a report of the file, from when it was there
        std::optional<InputReport> report;  ///< if that need not be done again
    };
    Known look(const std::string& input) const;

    /// Keeps what came of the input, which took so long, and gives it as it will be read the next time.
    /// Throws StoreError.
    InputReport keep(const Known& known, const InputReport& report, double took_s) const;

  private:
    bool isGood(const StoredReport& stored, Known& known, const std::string& input) const;
    bool isSame(const FileState& stored, FileState& now, const std::string& input) const;
    InputReport put(StoredReport stored) const;

    StoreOptions options_;
    const ScanSettings& settings_;
    nlohmann::ordered_json settings_json_;
    std::string host_;
    Store store_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_STORED_SCANS_H_
