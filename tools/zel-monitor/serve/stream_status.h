#ifndef ZEL_TOOLS_SERVE_STREAM_STATUS_H_
#define ZEL_TOOLS_SERVE_STREAM_STATUS_H_

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/media_facts.h"
#include "serve/alarm_book.h"

namespace zel_monitor {

enum class StreamState {
    kConnecting,  ///< the input is being opened
    kUp,          ///< frames come
    kNoData,      ///< it is open, and nothing comes
    kEnded,       ///< the other side ended it; a new attempt follows
    kFailing      ///< it could not be opened, or broke off; a new attempt follows
};

inline constexpr std::array<std::string_view, 5> kStreamStateNames{"connecting", "up", "no data", "ended",
                                                                   "failing"};

/// How one stream is at one moment.
struct StreamStatus {
    std::string name;
    std::string input;  ///< without what may be secret
    std::map<std::string, std::string> labels;
    StreamState state = StreamState::kConnecting;
    std::string reason;                           ///< of the last failure or end; empty while frames come
    std::chrono::system_clock::time_point since;  ///< of the state
    std::optional<std::chrono::system_clock::time_point> last_frame;
    std::optional<std::chrono::system_clock::time_point> last_good;  ///< up, and no alarm active
    std::optional<MediaFacts> facts;                                 ///< of the last connection
    MediaCounts counts;                                              ///< of all connections
    uint64_t dropped = 0;  ///< video frames not examined, to keep up
    uint64_t connections = 0;
    std::optional<double> luma;   ///< 0 to 255
    std::optional<double> level;  ///< mean absolute sample value, 0 to 32768
    double delay_s = 0.0;         ///< behind what the input holds ready
    std::vector<AlarmBook::Active> alarms;
    PerAlarmKind<AlarmBook::Tally> tallies;
    PerAlarmKind<bool> enabled{};
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_STREAM_STATUS_H_
