#ifndef ZEL_TOOLS_WATCH_PLAYBACK_H_
#define ZEL_TOOLS_WATCH_PLAYBACK_H_

#include <zel/zel.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace zel_monitor {

/// Answers of the library's health assessments by their names.
using Assessments = std::map<std::string, ReportMap>;

/// Tells the library's data monitors how the playback itself goes, as a player does. One in a process, one
/// thread.
class Playback {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    enum class Scenario { kLive = 0, kOnDemand = 2 };

    /// Begins when the input is about to be opened.
    explicit Playback(TimePoint opening) : opening_(opening) {}

    void setScenario(Scenario scenario) { scenario_ = scenario; }

    /// Something was shown or played, and this is how much has been received so far. About once a second a
    /// report goes out.
    void shown(TimePoint now, uint64_t bytes_received);

    /// The end: what FFmpeg answered if it was not the end of the stream, and how long the viewer had to wait
    /// in between.
    void end(TimePoint now, int error_code, std::chrono::duration<double> stalled);

    /// How playback has been, by the library's four assessments.
    static Assessments assess();

  private:
    struct Mark {
        TimePoint time;
        uint64_t bytes;
    };

    TimePoint opening_;
    Scenario scenario_ = Scenario::kOnDemand;
    std::optional<TimePoint> first_shown_;
    std::optional<Mark> last_report_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_PLAYBACK_H_
