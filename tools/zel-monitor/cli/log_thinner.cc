#include "cli/log_thinner.h"

namespace zel_monitor {
namespace {

constexpr size_t kMostSeen = 1000;
constexpr std::string_view kDigits = "0123456789abcdef";

/// The line with every number, also a hexadecimal one, as one sign.
std::string pattern(std::string_view line) {
    std::string text;
    for (size_t i = 0; i < line.size();) {
        const size_t end = std::min(line.find_first_not_of(kDigits, i), line.size());
        const std::string_view run = line.substr(i, end - i);
        if (run.find_first_of(kDigits.substr(0, 10)) != std::string_view::npos) {
            text += '#';
            i = end;
        } else {
            text += line[i++];
        }
    }
    return text;
}

}  // namespace

std::optional<std::string> LogThinner::take(std::string_view line, TimePoint now) {
    const auto [entry, is_new] = seen_.try_emplace(pattern(line));
    Seen& seen = entry->second;
    if (!is_new && now - seen.written < kPeriod) {
        ++seen.left_out;
        return std::nullopt;
    }
    std::string text(line);
    if (seen.left_out > 0) {
        text += " (" + std::to_string(seen.left_out) + " more like it since the last one)";
    }
    seen = {.written = now};
    if (seen_.size() > kMostSeen) {
        std::erase_if(seen_, [&](const auto& other) { return now - other.second.written >= kPeriod; });
        if (seen_.size() > kMostSeen) {
            seen_.clear();
        }
    }
    return text;
}

}  // namespace zel_monitor
