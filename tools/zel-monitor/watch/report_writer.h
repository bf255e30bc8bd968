#ifndef ZEL_TOOLS_WATCH_REPORT_WRITER_H_
#define ZEL_TOOLS_WATCH_REPORT_WRITER_H_

#include <zel/zel.h>

#include <chrono>
#include <memory>
#include <string>

#include "cli/console.h"
#include "input/media_source.h"
#include "watch/playback.h"

namespace zel_monitor {

/// A report of the library and where the stream stood when it came.
struct ReportEvent {
    const ReportMap& report;
    std::chrono::system_clock::time_point time;
    double position;      ///< stream time fed so far, seconds
    std::string caption;  ///< what the stream shows now, if the source knows it
};

/// What is known only at the end.
struct Ending {
    MediaCounts counts;
    Assessments assessments;  ///< of the playback itself
};

/// Brings what happens to standard output. `begin` comes first; reports come on any thread, one at a time.
class ReportWriter {
  public:
    ReportWriter() = default;
    ReportWriter(const ReportWriter&) = delete;
    ReportWriter& operator=(const ReportWriter&) = delete;
    virtual ~ReportWriter() = default;

    virtual void begin(const MediaFacts& facts) = 0;
    /// What a source that knows it shows from `position` seconds on. While heartbeats may arrive.
    virtual void caption(double position, const std::string& text) = 0;
    virtual void heartbeat(const ReportEvent& event) = 0;
    /// The whole-life report.
    virtual void finalReport(const ReportEvent& event, const Ending& ending) = 0;
};

/// One JSON object per report and line, and nothing else.
std::unique_ptr<ReportWriter> makeJsonWriter(Console& console);

/// A table with a row per heartbeat, and the final report as a list.
std::unique_ptr<ReportWriter> makeTextWriter(Console& console);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_REPORT_WRITER_H_
