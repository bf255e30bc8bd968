#ifndef ZEL_TOOLS_CLI_LOG_FILE_H_
#define ZEL_TOOLS_CLI_LOG_FILE_H_

#include <string>

namespace zel_monitor {

/// Sends the log lines of the library and the warnings of FFmpeg to the end of the file `path` for the rest
/// of the process, with times and thinned out, see LogThinner, or drops them if it is empty. Call it once,
/// before either is used. Throws std::system_error if the file cannot be written.
void redirectLogs(const std::string& path);

/// Goes on in a new file of the same name, for whoever renamed the old one.
void reopenLogs();

/// Throws OutputError if the file did not take every line so far.
void requireLogs();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_LOG_FILE_H_
