#ifndef ZEL_TOOLS_CLI_LOG_THINNER_H_
#define ZEL_TOOLS_CLI_LOG_THINNER_H_

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zel_monitor {

/// Keeps a log from growing with every frame: of lines that differ in nothing but numbers one is let through
/// a minute, with how many were left out since the one before.
class LogThinner {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::seconds kPeriod{60};

    /// What to write for the line, which has no newline; nothing if it is left out.
    std::optional<std::string> take(std::string_view line, TimePoint now);

  private:
    struct Seen {
        TimePoint written;
        uint64_t left_out = 0;
    };
    std::map<std::string, Seen> seen_;  // by the line without its numbers
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_LOG_THINNER_H_
