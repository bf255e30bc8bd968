#ifndef ZEL_TOOLS_TIME_TEXT_H_
#define ZEL_TOOLS_TIME_TEXT_H_

#include <chrono>
#include <string>

namespace zel_monitor {

/// Stream time as people read it: "0:01:05.2".
std::string clockText(double seconds);

/// A moment as "2024-05-01T12:00:00.123Z".
std::string utcText(std::chrono::system_clock::time_point time);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_TIME_TEXT_H_
