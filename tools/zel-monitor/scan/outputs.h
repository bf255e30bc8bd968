#ifndef ZEL_TOOLS_SCAN_OUTPUTS_H_
#define ZEL_TOOLS_SCAN_OUTPUTS_H_

#include <zel/events/event.h>

#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/output_file.h"
#include "report/report_writer.h"
#include "scan/scan_options.h"

namespace zel_monitor {

/// Everything that one scan writes: the report in its format, those that come beside it, and to people what
/// they would otherwise miss. A report that takes no more is an OutputError at once; whatever else takes no
/// more is left out, and end() throws.
class Outputs {
  public:
    /// Makes all files, before any work is done. The arguments outlive this object. Throws
    /// std::runtime_error, with the way out, if that cannot be.
    Outputs(const ScanOptions& options, Console& console);

    /// Whether a format wants the record of each input.
    bool wantsRecords() const;

    // As ReportWriter has them. Any thread.
    void begin();
    void event(const std::string& input, const ZEL::Event& event, bool of_survey);
    void inputFinished(const InputReport& report, const PageRecord* record);
    /// Gives the exit status.
    int end(const std::vector<InputReport>& reports);

  private:
    struct Output {
        Output(const ReportFormat& format, const ScanSettings& settings, const std::string& path,
               bool overwrite);

        std::unique_ptr<ReportWriter> writer;  // first: without it no file is made
        OutputFile file;
    };

    /// Writes what `text` asks of each writer.
    template <typename Text>
    void write(const Text& text);
    template <typename Write>
    void writeBeside(const Write& write);
    void print(OutputFile& file, const std::string& text);
    void tell(const InputReport& report);
    void writeVerdict(const std::string& line);

    const ScanOptions& options_;
    const Policy& policy_;
    Console& console_;
    std::mutex mutex_;
    std::deque<std::optional<Output>>
        beside_;               // none where one took no more; guarded by mutex_, like all below
    Output report_;            // after the others: it may replace a file at once
    std::exception_ptr loss_;  // something but the report takes no more
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_OUTPUTS_H_
