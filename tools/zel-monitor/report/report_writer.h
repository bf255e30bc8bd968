#ifndef ZEL_TOOLS_REPORT_REPORT_WRITER_H_
#define ZEL_TOOLS_REPORT_REPORT_WRITER_H_

#include <zel/events/event.h>

#include <string>
#include <vector>

#include "report/report.h"

namespace zel_monitor {

class PageRecord;

/// Brings what was found into one format: each function gives the text that comes next in the output. The
/// calls come from several threads, one at a time.
class ReportWriter {
  public:
    ReportWriter() = default;
    ReportWriter(const ReportWriter&) = delete;
    ReportWriter& operator=(const ReportWriter&) = delete;
    virtual ~ReportWriter() = default;

    /// Before everything else.
    virtual std::string begin() { return ""; }

    /// An event has ended, in one of the inputs that are scanned, or surveyed, at the same time.
    virtual std::string event(const std::string& /*input*/, const ZEL::Event& /*event*/, bool /*of_survey*/) {
        return "";
    }

    /// Of each input, in the order of the command line. `record` is null unless the format wants records, and
    /// of an input that could not be opened.
    virtual std::string inputFinished(const InputReport& /*report*/, const PageRecord* /*record*/) {
        return "";
    }

    /// After everything else. The program will exit with `status`.
    virtual std::string end(const std::vector<InputReport>& /*reports*/, int /*status*/) { return ""; }
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_REPORT_WRITER_H_
