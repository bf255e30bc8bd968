#ifndef ZEL_TOOLS_WATCH_FORMATS_H_
#define ZEL_TOOLS_WATCH_FORMATS_H_

#include <array>
#include <memory>
#include <string>

#include "cli/console.h"
#include "watch/heartbeat_writer.h"

namespace zel_monitor {

/// A format of the heartbeats.
struct HeartbeatFormat {
    const char* option;  ///< that asks for it; null for the one that nobody need ask for
    const char* help;
    /// `console` outlives the writer. `name` is what the user calls the stream; empty if nothing.
    std::unique_ptr<HeartbeatWriter> (*make)(Console& console, const std::string& name);
};

/// A table with the heartbeats as rows, and the final report as a list.
std::unique_ptr<HeartbeatWriter> makeHeartbeatTable(Console& console, const std::string& name);
/// One JSON object per report and line, and nothing else.
std::unique_ptr<HeartbeatWriter> makeHeartbeatJson(Console& console, const std::string& name);

inline constexpr std::array kHeartbeatFormats = {
    HeartbeatFormat{nullptr, nullptr, &makeHeartbeatTable},
    HeartbeatFormat{"--json", "One JSON object per heartbeat and line instead of a table",
                    &makeHeartbeatJson},
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_FORMATS_H_
