#ifndef ZEL_MONITOR_DATA_MONITOR_H_
#define ZEL_MONITOR_DATA_MONITOR_H_

#include <zel/zel.h>

#include <cstdint>

namespace ZEL {

/// Receives a player's reports about its playback. Held by std::shared_ptr, which destroys the concrete type;
/// there is no virtual destructor.
class ZELDataMonitor {
  public:
    /// What the player did since its last periodic report. `source` says who reports.
    virtual void reportPeriodic(uint64_t source, ReportMap report) = 0;

    /// What a playback was like, once it has ended.
    virtual void reportPlaybackEnd(uint64_t source, ReportMap report) = 0;

  protected:
    ZELDataMonitor() = default;
    ZELDataMonitor(const ZELDataMonitor&) = default;
    ZELDataMonitor& operator=(const ZELDataMonitor&) = default;
    ~ZELDataMonitor() = default;
};

/// Turns reports into samples of ZELHA::getInstance(). Keeps nothing itself, so any thread may report.
///
/// Numbers are read as getInt and getDouble read them, and the errors of these leave the functions with
/// nothing recorded. "play_scenario" says what is played: 0 live, 2 on demand, anything else neither.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): nothing derives from it
class ZELPlayerDataMonitor final : public ZELDataMonitor {
  public:
    /// Reads "recv_bytes" (at most 2147483647) and "zel_time_interval" (seconds) and records their quotient
    /// as "ref_speed", and as "ref_speed_live" or "ref_speed_vod". Needs both, and more than half a second.
    void reportPeriodic(uint64_t source, ReportMap report) override;

    /// Records, with times in milliseconds:
    /// - "first_frame_rendering_time", if it is at least 1, in whole milliseconds as "recent_ff", and as
    ///   "recent_ff_live" or "recent_ff_vod";
    /// - "error_code", 0 if it is missing, always. Without a first frame and without an error, a
    ///   "quit_time" of more than 5000 makes it -20001: the viewer gave up waiting;
    /// - "abnormal_total_time" per second of "play_time" as "bufms_per_second", if both are above 0.
    void reportPlaybackEnd(uint64_t source, ReportMap report) override;
};

}  // namespace ZEL

#endif  // ZEL_MONITOR_DATA_MONITOR_H_
