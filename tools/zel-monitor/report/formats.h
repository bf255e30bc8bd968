#ifndef ZEL_TOOLS_REPORT_FORMATS_H_
#define ZEL_TOOLS_REPORT_FORMATS_H_

#include <array>
#include <memory>

#include "cli/output_file.h"
#include "report/report_writer.h"

namespace zel_monitor {

/// A format of the findings.
struct ReportFormat {
    /// `settings` outlives the writer. Throws std::runtime_error if the program was built without the format.
    std::unique_ptr<ReportWriter> (*make)(const ScanSettings& settings);
    const char* option;  ///< that asks for it; null for the one that nobody need ask for
    const char* help;
    Appears appears = Appears::kAtOnce;  ///< when the file does
    bool for_people = false;             ///< who see the verdict in it
    bool has_own_file = false;           ///< comes beside another format, in the file that the option names
    bool wants_record = false;           ///< of each input
};

/// Summary, events and verdict of each input, for people.
std::unique_ptr<ReportWriter> makeTableReport(const ScanSettings& settings);
/// A line for each input.
std::unique_ptr<ReportWriter> makeBriefReport(const ScanSettings& settings);
/// The whole, as docs/scan-report.schema.json describes it.
std::unique_ptr<ReportWriter> makeJsonReport(const ScanSettings& settings);
/// An object per event and one per input.
std::unique_ptr<ReportWriter> makeJsonLinesReport(const ScanSettings& settings);
/// The same as rows.
std::unique_ptr<ReportWriter> makeCsvReport(const ScanSettings& settings);
/// The page with the timeline.
std::unique_ptr<ReportWriter> makePageReport(const ScanSettings& settings);

/// In the order of --help.
inline constexpr std::array kReportFormats = {
    ReportFormat{.make = &makeTableReport, .option = nullptr, .help = nullptr, .for_people = true},
    ReportFormat{.make = &makeBriefReport,
                 .option = "--brief",
                 .help = "One line per input, as with --store",
                 .for_people = true},
    ReportFormat{.make = &makeJsonReport,
                 .option = "--json",
                 .help = "One JSON object at the end",
                 .appears = Appears::kWhenComplete},
    ReportFormat{.make = &makeJsonLinesReport,
                 .option = "--jsonl",
                 .help = "One JSON object per event, as it ends, and per input"},
    ReportFormat{
        .make = &makeCsvReport, .option = "--csv", .help = "One line per event, as it ends, and per input"},
    ReportFormat{.make = &makePageReport,
                 .option = "--html",
                 .help = "Also write a page with the timeline",
                 .appears = Appears::kWhenComplete,
                 .has_own_file = true,
                 .wants_record = true},
};

inline constexpr const ReportFormat& kTableFormat = kReportFormats[0];
inline constexpr const ReportFormat& kBriefFormat = kReportFormats[1];

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_FORMATS_H_
