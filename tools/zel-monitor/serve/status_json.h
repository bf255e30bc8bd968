#ifndef ZEL_TOOLS_SERVE_STATUS_JSON_H_
#define ZEL_TOOLS_SERVE_STATUS_JSON_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "serve/history.h"
#include "serve/stream_status.h"

namespace zel_monitor {

/// All streams, for /api/streams and the wall.
nlohmann::ordered_json statusJson(const std::vector<StreamStatus>& streams,
                                  std::chrono::system_clock::time_point now);

/// The page with the last hour of a stream. Empty if the program was built without pages.
std::string hourPage(const StreamStatus& stream, const History& history,
                     std::chrono::system_clock::time_point now);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_STATUS_JSON_H_
