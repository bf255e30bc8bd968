#ifndef ZEL_TOOLS_WATCH_OPTIONS_H_
#define ZEL_TOOLS_WATCH_OPTIONS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zel_monitor {

/// Exit statuses; scripts rely on them. 1 is kept for a stream that violates a policy.
inline constexpr int kExitDone = 0;   ///< monitored to the end, or stopped by the user
inline constexpr int kExitUsage = 2;  ///< wrong usage
inline constexpr int kExitStream =
    3;  ///< the stream could not be opened or decoded, or an output took no more

struct WatchOptions {
    std::string input;
    double speed = 1.0;     ///< stream seconds per second
    uint32_t interval = 5;  ///< seconds between heartbeats
    bool json = false;
    bool audio = true;
    std::string log_file;  ///< empty: log lines are dropped
};

/// The program without its commands.
std::shared_ptr<CLI::App> makeCommandLine();

/// Adds a command to `app`; when it was parsed, `options`, which outlives the parsing, holds what was asked.
CLI::App* addWatchCommand(CLI::App& app, WatchOptions& options);
CLI::App* addDemoCommand(CLI::App& app, WatchOptions& options);

/// Nothing to run: what to write to standard output or standard error, and the exit status.
struct EarlyExit {
    int status;
    std::string output;
    std::string error;
};

/// Reads the arguments after the program's name.
std::optional<EarlyExit> parseArguments(CLI::App& app, std::vector<std::string> arguments);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_OPTIONS_H_
