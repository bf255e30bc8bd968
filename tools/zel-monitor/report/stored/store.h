#ifndef ZEL_TOOLS_REPORT_STORED_STORE_H_
#define ZEL_TOOLS_REPORT_STORED_STORE_H_

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

#include "report/stored/stored_report.h"

namespace zel_monitor {

/// Reports of many inputs in a folder, each in a file of its own whose name is made of the SHA-256 hash of
/// the input's absolute name. Any number of processes, on any number of machines that share the folder, read
/// and write at the same time without locks: a file appears under its name with all its content, or not at
/// all, and replaces the one before it in one step. What a killed process leaves behind lies in a folder for
/// unfinished files alone, and is removed when it is old. Any thread.
class Store {
  public:
    /// To read only. Throws std::runtime_error if there is no such folder.
    static Store opened(const std::string& folder);
    /// To write too: makes the folder if need be, and removes what was left unfinished long ago. Throws
    /// std::runtime_error if files cannot be made there.
    static Store writable(const std::string& folder);

    /// None also if what is there cannot be read.
    std::optional<StoredReport> find(const std::string& path) const;

    /// The files that hold the reports on all inputs, in any order. Throws std::runtime_error.
    std::vector<std::string> files() const;

    /// What a file holds; none also if that is no report.
    static std::optional<StoredReport> read(const std::string& file);

    /// Puts `text`, which storedText() made for `path`, in the place of what is there. Throws OutputError.
    void put(const std::string& path, std::string_view text) const;

    /// The file that holds the report on `path`.
    std::string fileFor(const std::string& path) const;

  private:
    explicit Store(const std::string& folder) : folder_(folder) {}

    std::string unfinishedFolder() const;
    void removeLeftovers(const std::string& fresh) const;

    std::string folder_;
    mode_t permissions_ = 0;  // of files
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_STORED_STORE_H_
