#ifndef ZEL_TOOLS_REPORT_STORED_FILE_STATE_H_
#define ZEL_TOOLS_REPORT_STORED_FILE_STATE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zel_monitor {

/// By what it is seen that a file has changed.
struct FileState {
    std::optional<uint64_t> bytes = {};       ///< none if it is no file, or not there
    std::optional<int64_t> modified_ns = {};  ///< since 1970
    std::optional<std::string> sha256 = {};   ///< of its content, if that was asked for

    bool operator==(const FileState&) const = default;
};

/// Without its content's hash.
FileState stateOf(const std::string& name);

/// In hexadecimal digits.
std::string sha256(std::string_view text);
/// Of a file's content; none if it cannot be read to its end.
std::optional<std::string> sha256OfFile(const std::string& name);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_STORED_FILE_STATE_H_
