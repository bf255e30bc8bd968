#include "time_text.h"

#include <cmath>
#include <cstdint>
#include <fmt/chrono.h>

namespace zel_monitor {

std::string clockText(double seconds) {
    const auto tenths = static_cast<int64_t>(std::llround(std::abs(seconds) * 10));
    return fmt::format("{}{}:{:02}:{:02}.{}", seconds < 0 && tenths != 0 ? "-" : "", tenths / 36000,
                       tenths / 600 % 60, tenths / 10 % 60, tenths % 10);
}

std::string utcText(std::chrono::system_clock::time_point time) {
    const auto since_epoch = time.time_since_epoch();
    const auto whole = std::chrono::floor<std::chrono::seconds>(since_epoch);
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(since_epoch - whole).count();
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(static_cast<std::time_t>(whole.count())),
                       milliseconds);
}

}  // namespace zel_monitor
