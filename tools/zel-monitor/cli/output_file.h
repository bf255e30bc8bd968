#ifndef ZEL_TOOLS_CLI_OUTPUT_FILE_H_
#define ZEL_TOOLS_CLI_OUTPUT_FILE_H_

#include <optional>
#include <string>
#include <string_view>

#include "cli/stop_signal.h"

namespace zel_monitor {

/// When a file appears under its name.
enum class Appears {
    kAtOnce,       ///< when it is made, so that it can be followed as it grows
    kWhenComplete  ///< with all its content or never
};

/// Standard output, or a file that is written from the start to the end. A file is made under a name of its
/// own beside the wanted one; without `overwrite` nothing that exists is ever replaced, however late it came.
/// Devices and pipes are written as they are.
class OutputFile {
  public:
    /// An empty `path` is standard output. Throws std::runtime_error, with the way out, if the file exists
    /// and must not be overwritten or cannot be made.
    OutputFile(const std::string& path, bool overwrite, Appears appears);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Removes a file that is not complete, unless it appeared and something is in it.
    ~OutputFile();

    /// Hands the text to the operating system. Throws OutputError if it does not take it.
    void write(std::string_view text);

    /// Everything is written. Throws OutputError if the file cannot get its name: then it stays under its
    /// own, which the error tells.
    void complete();

  private:
    OutputFile(const std::string& path, bool overwrite);
    void create();
    /// Gives the file its name; 0, or the system's error number.
    int publish();

    std::string name_;     ///< for people
    std::string path_;     ///< where it belongs; symbolic links are followed
    std::string pending_;  ///< what to remove if this goes no further: the file's first name, later itself
    std::optional<RemovedWhenKilled> removal_;  ///< of the file, while it has its first name
    bool overwrite_;
    bool published_ = false;
    int descriptor_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_OUTPUT_FILE_H_
