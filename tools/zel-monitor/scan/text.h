#ifndef ZEL_TOOLS_SCAN_TEXT_H_
#define ZEL_TOOLS_SCAN_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

namespace zel_monitor::scan {

/// "0.5s", "500ms", "2m", "1h" or plain seconds; none if it is anything else, negative or too large.
std::optional<double> parseSeconds(std::string_view text);

/// Stream time as "h:mm:ss.mmm", with a sign if it is before the stream's beginning.
std::string clockText(double seconds);

/// Rounded to the microsecond, and never -0.
double toMicroseconds(double seconds);

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_TEXT_H_
