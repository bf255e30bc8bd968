#ifndef ZEL_TOOLS_CLI_FILE_NAMES_H_
#define ZEL_TOOLS_CLI_FILE_NAMES_H_

#include <string>
#include <string_view>

namespace zel_monitor {

/// Whether `name` is that of something in the file system that can be read like a file.
bool namesFile(const std::string& name);

/// Whether reading the input `name` reads standard input: "-", or another name of the pipe or terminal there.
/// A file there can be read by its own name as well.
bool namesStandardInput(const std::string& name);

/// Whether `name` is "-" or names what standard output goes to, as /dev/stdout does.
bool namesStandardOutput(const std::string& name);

/// Where `name` leads to by symbolic links, the last of which may point to nothing yet.
std::string followed(const std::string& name);

/// Whether writing to the file `output` would destroy `other`, another output or an input ("-" is standard
/// input). Devices and pipes take what several write.
bool writesOver(const std::string& output, const std::string& other);

/// `text` for a terminal or a log: control characters, which file names may hold, as "\xNN".
std::string printable(std::string_view text);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_FILE_NAMES_H_
