#ifndef ZEL_TOOLS_SERVE_HISTORY_H_
#define ZEL_TOOLS_SERVE_HISTORY_H_

#include <zel/events/event.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <nlohmann/json.hpp>
#include <vector>

namespace zel_monitor {

/// What the page shows of the last hour of a stream: curves by the wall clock, and events. Of bounded size.
/// Any thread.
class History {
  public:
    using TimePoint = std::chrono::system_clock::time_point;
    static constexpr double kStepS = 2.0;
    static constexpr double kLengthS = 3600.0;

    enum class Curve { kLuma, kLevel, kVoice };
    void add(Curve curve, double value, TimePoint time);
    void add(ZEL::EventKind kind, TimePoint began, TimePoint ended);

    /// The curves from an hour before `now`, as the page takes a record.
    nlohmann::ordered_json record(TimePoint now) const;
    /// Events of that hour, in seconds from its beginning.
    std::vector<ZEL::Event> events(TimePoint now) const;

  private:
    struct Sum {
        float sum = 0.0F;
        uint32_t count = 0;
    };
    struct Step {
        int64_t number = -1;  ///< since the clock's beginning
        std::array<Sum, 3> curves;
    };
    struct Past {
        ZEL::EventKind kind;
        TimePoint began;
        TimePoint ended;
    };
    static int64_t stepAt(TimePoint time);
    nlohmann::ordered_json curve(Curve curve, int64_t first, double scale) const;

    mutable std::mutex mutex_;
    std::vector<Step> steps_{static_cast<size_t>(kLengthS / kStepS)};  // a ring
    std::deque<Past> events_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_HISTORY_H_
