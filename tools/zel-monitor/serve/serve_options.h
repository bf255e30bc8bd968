#ifndef ZEL_TOOLS_SERVE_SERVE_OPTIONS_H_
#define ZEL_TOOLS_SERVE_SERVE_OPTIONS_H_

#include <optional>
#include <string>

#include "cli/shard.h"

namespace CLI {
class App;
}

namespace zel_monitor {

struct ServeOptions {
    std::string config;
    bool check = false;
    std::optional<std::string> listen;  ///< in place of the configuration's
    std::optional<std::string> events;
    Shard shard;
    std::string log_file;  ///< empty: log lines are dropped
};

/// Adds the options to a command; when it was parsed, `options`, which outlives the parsing, holds what was
/// asked.
void addServeOptions(CLI::App& command, ServeOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_SERVE_OPTIONS_H_
