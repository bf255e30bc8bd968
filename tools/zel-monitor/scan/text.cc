#include "scan/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace zel_monitor::scan {

std::optional<double> parseSeconds(std::string_view text) {
    double value = 0.0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || !std::isfinite(value) || value < 0.0) {
        return std::nullopt;
    }
    const std::string_view unit = text.substr(static_cast<size_t>(rest - text.data()));
    constexpr std::array<std::pair<std::string_view, double>, 5> kUnits{
        {{"", 1.0}, {"s", 1.0}, {"ms", 0.001}, {"m", 60.0}, {"h", 3600.0}}};
    for (const auto& [name, seconds] : kUnits) {
        if (unit == name) {
            return value * seconds;
        }
    }
    return std::nullopt;
}

std::string clockText(double seconds) {
    const auto ms = std::llround(seconds * 1000.0);
    return fmt::format("{}:{:02}:{:02}.{:03}", ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60, ms % 1000);
}

}  // namespace zel_monitor::scan
