#ifndef ZEL_TOOLS_CLI_STANDARD_STREAMS_H_
#define ZEL_TOOLS_CLI_STANDARD_STREAMS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

namespace zel_monitor {

/// An output that takes no more, such as a full disk or a pipe that nobody reads: "<name>: <reason>". No
/// input is to blame.
class OutputError : public std::system_error {
  public:
    OutputError(int error, const std::string& name)
        : std::system_error(error, std::generic_category(), name) {}
};

/// Takes the numbers of standard streams that were closed at the start, so that no file opened later gets
/// them. Using such a stream fails as before.
void occupyStandardStreams();

/// Writes all of `text`; 0, or the system's error number.
int writeAll(int descriptor, std::string_view text);

/// Writes to standard output. Throws OutputError.
void writeOutput(std::string_view text);

/// Writes to standard error. What it does not take is lost: there is no place left to tell.
void writeError(std::string_view text);

/// Writes "zel-monitor: <text>" as one line to standard error.
void complain(std::string_view text);

/// The width of the terminal on standard error; 80 if that is none.
size_t terminalColumns();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_STANDARD_STREAMS_H_
