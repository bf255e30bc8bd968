#ifndef ZEL_TOOLS_CLI_TIME_TEXT_H_
#define ZEL_TOOLS_CLI_TIME_TEXT_H_

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace zel_monitor {

/// "0.5s", "500ms", "2m", "1h" or plain seconds; none if it is anything else, negative or too large.
std::optional<double> parseSeconds(std::string_view text);

/// Stream time as "h:mm:ss.mmm", with a sign if it is before the stream's beginning.
std::string clockText(double seconds);
/// The same to the tenth of a second: "0:01:05.2".
std::string shortClockText(double seconds);

/// The same to the second, cut: "0:01:05".
std::string secondClockText(double seconds);

/// Rounded to the microsecond, and never -0.
double toMicroseconds(double seconds);

/// The time of day where the program runs: "12:00:00".
std::string localClockText(std::chrono::system_clock::time_point time);

/// A moment as "2024-05-01T12:00:00.123Z".
std::string utcText(std::chrono::system_clock::time_point time);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_TIME_TEXT_H_
