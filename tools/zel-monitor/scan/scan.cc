#include "scan/scan.h"

#include <zel/base/log.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <fmt/format.h>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

#include "cli/file_names.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "report/page.h"
#include "report/writers.h"
#include "scan/scan_input.h"

namespace zel_monitor {
namespace {

/// What stands for an input that is not begun, because the scan was stopped.
InputScan notBegun(const std::string& input) {
    InputScan scan;
    scan.report.facts.input = input;
    scan.report.problem = "not begun, the scan was stopped";
    return scan;
}

/// Which names of the command line cannot be used together, if any.
std::optional<std::string> collision(const ScanOptions& options) {
    if (std::count_if(options.inputs.begin(), options.inputs.end(), &namesStandardInput) > 1) {
        return "standard input is given twice, and can be read once";
    }
    for (const std::string& output : {options.output, options.html}) {
        for (const std::string& input : options.inputs) {
            if (!output.empty() && writesOver(output, input)) {
                return fmt::format("{} is an input, and would be overwritten", output);
            }
        }
    }
    if (!options.output.empty() && !options.html.empty() && writesOver(options.html, options.output)) {
        return fmt::format("{} cannot hold both the report and the page", options.output);
    }
    return std::nullopt;
}

/// The files of one scan, made before any work is done.
struct Outputs {
    explicit Outputs(const ScanOptions& options)
        : page(options.html.empty()
                   ? nullptr
                   : std::make_unique<OutputFile>(options.html, options.overwrite, Appears::kWhenComplete)),
          table(options.format == Format::kTable || options.output.empty()
                    ? nullptr
                    : std::make_unique<OutputFile>("", false, Appears::kAtOnce)),
          report(options.output, options.overwrite,
                 options.format == Format::kJson ? Appears::kWhenComplete : Appears::kAtOnce) {}

    std::unique_ptr<OutputFile> page;
    std::unique_ptr<OutputFile> table;  ///< standard output, if the report goes to a file and is for machines
    OutputFile report;                  ///< last: it may replace a file at once
};

/// One run of the command.
class Scan {
  public:
    Scan(const ScanOptions& options, Outputs& outputs, const std::atomic<bool>& stop)
        : options_(options),
          outputs_(outputs),
          stop_(stop),
          progress_(options.inputs.size(), options.quiet),
          scans_(options.inputs.size()) {}

    int run() {
        if (options_.format == Format::kCsv) {
            outputs_.report.write(csvHeader());
        }
        {
            std::vector<std::jthread> helpers;
            try {
                for (size_t i = 1; i < std::min<size_t>(options_.jobs, scans_.size()); ++i) {
                    helpers.emplace_back([this] { work(); });
                }
            } catch (const std::system_error&) {  // no more threads to be had: fewer do the work as well
            }
            work();
        }
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        return conclude();
    }

  private:
    /// Takes one input after another until none is left.
    void work() {
        try {
            for (size_t i = next_++; i < scans_.size(); i = next_++) {
                const std::string& input = options_.inputs[i];
                finishInput(i, stop_ ? notBegun(input) : scanInput(input, i));
            }
        } catch (...) {
            abandon();
        }
    }

    InputScan scanInput(const std::string& input, size_t i) {
        const auto on_event = [this, &input](const ZEL::Event& event) { writeEvent(input, event); };
        return zel_monitor::scanInput(input, options_.rules, outputs_.page != nullptr, progress_.slot(i),
                                      on_event, stop_);
    }

    /// Ends the run with the exception at hand, of an output that takes no more: all further work would be
    /// for nothing.
    void abandon() {
        const std::lock_guard lock(mutex_);
        failure_ = std::current_exception();
        next_ = scans_.size();
        requestStop();
    }

    /// Does not throw: the input is not to blame.
    void writeEvent(const std::string& input, const ZEL::Event& event) {
        if (options_.format != Format::kJsonLines && options_.format != Format::kCsv) {
            return;
        }
        const std::string line =
            options_.format == Format::kCsv ? csvLine(input, event) : eventLine(input, event);
        try {
            progress_.withoutBar([&] { outputs_.report.write(line); });
        } catch (const OutputError&) {
            abandon();
        }
    }

    /// Shows the tables in the order of the inputs, whichever is ready first.
    void finishInput(size_t i, InputScan scan) {
        const std::lock_guard lock(mutex_);
        if (failure_) {
            return;
        }
        scans_[i] = std::move(scan);
        for (; shown_ < scans_.size() && scans_[shown_]; ++shown_) {
            show(scans_[shown_]->report);
        }
    }

    /// Shows people the table where it disturbs nothing; else, on standard error, at least the verdict.
    void show(const InputReport& report) {
        const std::string verdict = verdictText(report, options_.policy);
        if (!writeTable(inputTable(report, options_.policy)) && (!verdict.empty() || report.problem)) {
            progress_.withoutBar([&] {
                writeError(fmt::format("{}: {}\n", printable(report.facts.input),
                                       verdict.empty() ? *report.problem : verdict));
            });
        }
    }

    /// False if there is no place for tables. One that only goes along with the report, on standard output,
    /// may fail without ending the run.
    bool writeTable(const std::string& text) {
        if (options_.format == Format::kTable) {
            progress_.withoutBar([&] { outputs_.report.write(text); });
            return true;
        }
        if (!outputs_.table) {
            return false;
        }
        try {
            progress_.withoutBar([&] { outputs_.table->write(text); });
            return true;
        } catch (const OutputError&) {
            loss_ = std::current_exception();
            outputs_.table.reset();
            return false;
        }
    }

    void writePage(const std::vector<InputReport>& reports, nlohmann::ordered_json records) {
        try {
            outputs_.page->write(
                pageHtml({{"report", reportJson(reports, options_, exitStatus(reports, options_.policy))},
                          {"records", std::move(records)}}));
            outputs_.page->complete();
        } catch (const OutputError&) {
            loss_ = std::current_exception();
        }
    }

    int conclude() {
        std::vector<InputReport> reports;
        nlohmann::ordered_json records = nlohmann::ordered_json::array();
        for (std::optional<InputScan>& scan : scans_) {
            reports.push_back(std::move(scan->report));
            records.push_back(scan->record ? scan->record->json() : nullptr);
        }
        if (reports.size() > 1) {
            writeTable(totalTable(reports, options_.policy));
        }
        if (outputs_.page) {
            writePage(reports, std::move(records));
        }
        // The last of all, because it tells the exit status.
        const int status = loss_ ? kNotAnalysed : exitStatus(reports, options_.policy);
        if (options_.format == Format::kJson) {
            outputs_.report.write(jsonText(reportJson(reports, options_, status)));
        }
        outputs_.report.complete();
        if (loss_) {
            std::rethrow_exception(loss_);
        }
        return status;
    }

    const ScanOptions& options_;
    Outputs& outputs_;
    const std::atomic<bool>& stop_;
    Progress progress_;
    std::atomic<size_t> next_{0};
    std::mutex mutex_;
    std::vector<std::optional<InputScan>> scans_;  // guarded by mutex_ while helpers run, like all below
    size_t shown_ = 0;
    std::exception_ptr failure_;  // the report takes no more
    std::exception_ptr loss_;     // something else does, which the report tells in its exit status
};

void discardLog(const char* /*text*/, size_t /*length*/, void* /*context*/) {}

}  // namespace

int runScan(const ScanOptions& options) {
    if (options.list_detectors) {
        writeOutput(detectorTable());
        return kClean;
    }
    if (!options.html.empty() && !hasPage()) {
        complain("--html: this program was built without the page (ZEL_BUILD_PAGE=OFF)");
        return kUsage;
    }
    if (const auto fault = collision(options)) {
        complain(*fault);
        return kUsage;
    }
    const std::atomic<bool>& stop = watchStopSignals();
    std::unique_ptr<Outputs> outputs;
    try {
        outputs = std::make_unique<Outputs>(options);
    } catch (const std::exception& error) {
        complain(error.what());
        return kUsage;
    }
    ZEL::setLogSink(&discardLog, nullptr);  // the detectors log every picture like its predecessor
    av_log_set_level(AV_LOG_QUIET);         // what is wrong with an input stands in its report
    return Scan(options, *outputs, stop).run();
}

}  // namespace zel_monitor
