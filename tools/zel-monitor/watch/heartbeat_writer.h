#ifndef ZEL_TOOLS_WATCH_HEARTBEAT_WRITER_H_
#define ZEL_TOOLS_WATCH_HEARTBEAT_WRITER_H_

#include <zel/events/event.h>
#include <zel/session/session.h>
#include <zel/zel.h>

#include <chrono>
#include <optional>
#include <string>

#include "cli/media_facts.h"
#include "watch/playback.h"

namespace zel_monitor {

/// A report of the library and where the stream stood when it came.
struct ReportEvent {
    const ReportMap& report;
    std::chrono::system_clock::time_point time;
    double position;      ///< stream time fed so far, seconds
    std::string caption;  ///< what the stream shows now, if the source knows it
    /// Frames that the library did not examine: since the heartbeat before, at the end in all. None if it
    /// does not tell.
    std::optional<ZEL::QueueDrops> drops;
};

/// A fault that is raised, or cleared once its length is known. Times are stream time.
struct FaultNotice {
    ZEL::EventKind kind;
    std::chrono::system_clock::time_point time;
    double position;
    double start_s;
    std::optional<double> length_s;
    std::optional<ZEL::Evidence> evidence = {};
};

/// The input ended or failed, and another attempt follows.
struct Interruption {
    std::chrono::system_clock::time_point time;
    double position;
    std::string reason;
};

/// What is known only at the end.
struct Ending {
    MediaCounts counts;
    Assessments assessments;  ///< of the playback itself
};

/// Brings what happens to standard output in one format. `begin` comes first; reports come on any thread, one
/// at a time.
class HeartbeatWriter {
  public:
    HeartbeatWriter() = default;
    HeartbeatWriter(const HeartbeatWriter&) = delete;
    HeartbeatWriter& operator=(const HeartbeatWriter&) = delete;
    virtual ~HeartbeatWriter() = default;

    /// Again for each connection.
    virtual void begin(const MediaFacts& /*facts*/) {}
    /// What a source that knows it shows from `position` seconds on. While heartbeats may arrive.
    virtual void caption(double /*position*/, const std::string& /*text*/) {}
    /// While heartbeats may arrive, like the next one.
    virtual void fault(const FaultNotice& /*notice*/) {}
    virtual void interrupted(const Interruption& /*interruption*/) {}
    virtual void heartbeat(const ReportEvent& event) = 0;
    /// The whole-life report.
    virtual void finalReport(const ReportEvent& event, const Ending& ending) = 0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_HEARTBEAT_WRITER_H_
