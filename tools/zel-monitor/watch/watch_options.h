#ifndef ZEL_TOOLS_WATCH_WATCH_OPTIONS_H_
#define ZEL_TOOLS_WATCH_WATCH_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "watch/formats.h"

namespace CLI {
class App;
}

namespace zel_monitor {

struct WatchOptions {
    std::string input;
    double speed = 1.0;     ///< stream seconds per second
    uint32_t interval = 5;  ///< seconds between heartbeats
    const HeartbeatFormat* format = kHeartbeatFormats.data();
    bool audio = true;
    std::string name;                      ///< to show instead of the input; empty: the input itself
    bool reconnect = false;                ///< after the end and after failures, for ever
    std::optional<double> open_timeout_s;  ///< none: waits for ever
    std::optional<double> read_timeout_s;
    std::string log_file;  ///< empty: log lines are dropped
};

/// Adds the options to a command; when it was parsed, `options`, which outlives the parsing, holds what was
/// asked.
void addWatchOptions(CLI::App& command, WatchOptions& options);
/// The same for the built-in stream.
void addDemoOptions(CLI::App& command, WatchOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_WATCH_OPTIONS_H_
