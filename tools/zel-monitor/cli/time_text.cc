#include "cli/time_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fmt/chrono.h>
#include <utility>

namespace zel_monitor {

std::optional<double> parseSeconds(std::string_view text) {
    double value = 0.0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || std::signbit(value)) {
        return std::nullopt;
    }
    const std::string_view unit = text.substr(static_cast<size_t>(rest - text.data()));
    constexpr std::array<std::pair<std::string_view, double>, 5> kUnits{
        {{"", 1.0}, {"s", 1.0}, {"ms", 0.001}, {"m", 60.0}, {"h", 3600.0}}};
    for (const auto& [name, seconds] : kUnits) {
        if (unit == name && std::isfinite(value * seconds)) {
            return value * seconds;
        }
    }
    return std::nullopt;
}

std::string clockText(double seconds) {
    const auto signed_ms = std::llround(seconds * 1000.0);
    const auto ms = std::abs(signed_ms);
    return fmt::format("{}{}:{:02}:{:02}.{:03}", signed_ms < 0 ? "-" : "", ms / 3'600'000, ms / 60'000 % 60,
                       ms / 1000 % 60, ms % 1000);
}

double toMicroseconds(double seconds) {
    return std::round(seconds * 1e6) / 1e6 + 0.0;  // the sum of -0 and 0 is 0
}

std::string shortClockText(double seconds) {
    const auto tenths = static_cast<int64_t>(std::llround(std::abs(seconds) * 10));
    return fmt::format("{}{}:{:02}:{:02}.{}", seconds < 0 && tenths != 0 ? "-" : "", tenths / 36000,
                       tenths / 600 % 60, tenths / 10 % 60, tenths % 10);
}

std::string secondClockText(double seconds) {
    const std::string text = shortClockText(std::floor(seconds));
    return text.substr(0, text.find('.'));
}

std::string localClockText(std::chrono::system_clock::time_point time) {
    return fmt::format("{:%H:%M:%S}", fmt::localtime(std::chrono::system_clock::to_time_t(time)));
}

std::string utcText(std::chrono::system_clock::time_point time) {
    const auto since_epoch = time.time_since_epoch();
    const auto whole = std::chrono::floor<std::chrono::seconds>(since_epoch);
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(since_epoch - whole).count();
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(static_cast<std::time_t>(whole.count())),
                       milliseconds);
}

}  // namespace zel_monitor
