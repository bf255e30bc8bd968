#ifndef ZEL_TOOLS_OPTIONS_H_
#define ZEL_TOOLS_OPTIONS_H_

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace zel_monitor {

/// Exit statuses; scripts rely on them.
inline constexpr int kExitDone = 0;    ///< monitored to the end, or stopped by the user
inline constexpr int kExitUsage = 2;   ///< wrong usage
inline constexpr int kExitStream = 3;  ///< the stream could not be opened or decoded

struct WatchOptions {
    std::string input;
    double speed = 1.0;     ///< stream seconds per second
    uint32_t interval = 5;  ///< seconds between heartbeats
    bool json = false;
    bool audio = true;
    std::string log_file;  ///< empty: log lines are dropped
};

/// Nothing to run: what to write to standard output or standard error, and the exit status.
struct EarlyExit {
    int status;
    std::string output;
    std::string error;
};

/// Reads the arguments after the program's name.
std::variant<WatchOptions, EarlyExit> parseOptions(std::vector<std::string> arguments);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_OPTIONS_H_
