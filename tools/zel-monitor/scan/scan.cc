#include "scan/scan.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <fmt/format.h>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "cli/console.h"
#include "cli/exit_status.h"
#include "cli/file_names.h"
#include "cli/log_file.h"
#include "cli/progress.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "report/detector_table.h"
#include "report/report_json.h"
#include "report/schema.h"
#include "scan/outputs.h"
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
    std::vector<std::string> outputs;
    if (!options.output.empty()) {
        outputs.push_back(options.output);
    }
    for (const FormatFile& beside : options.beside) {
        outputs.push_back(beside.file);
    }
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        const auto would_be_overwritten = [&](const std::string& other) {
            return writesOver(*output, other);
        };
        if (std::any_of(options.inputs.begin(), options.inputs.end(), would_be_overwritten)) {
            return fmt::format("{} is an input, and would be overwritten", *output);
        }
        if (std::any_of(outputs.begin(), output, would_be_overwritten)) {
            return fmt::format("{} cannot hold two outputs", *output);
        }
    }
    return std::nullopt;
}

/// One run of the command.
class Scan {
  public:
    Scan(const ScanOptions& options, Outputs& outputs, Console& console, const std::atomic<bool>& stop)
        : options_(options),
          outputs_(outputs),
          stop_(stop),
          progress_(console, options.quiet ? ProgressOf::kNothing : ProgressOf::kFiles,
                    options.inputs.size()),
          scans_(options.inputs.size()) {}

    int run() {
        outputs_.begin();
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
        std::vector<InputReport> reports;
        for (std::optional<InputScan>& scan : scans_) {
            reports.push_back(std::move(scan->report));
        }
        return outputs_.end(reports);
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
        const auto on_event = [this, &input](const ZEL::Event& event) { tellEvent(input, event); };
        return zel_monitor::scanInput(input, options_.settings, outputs_.wantsRecords(), progress_.slot(i),
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
    void tellEvent(const std::string& input, const ZEL::Event& event) {
        try {
            outputs_.event(input, event);
        } catch (const OutputError&) {
            abandon();
        }
    }

    /// Hands on what is finished in the order of the inputs, whichever is ready first.
    void finishInput(size_t i, InputScan scan) {
        const std::lock_guard lock(mutex_);
        if (failure_) {
            return;
        }
        scans_[i] = std::move(scan);
        for (; told_ < scans_.size() && scans_[told_]; ++told_) {
            std::optional<PageRecord>& record = scans_[told_]->record;
            outputs_.inputFinished(scans_[told_]->report, record ? &*record : nullptr);
            record.reset();
        }
    }

    const ScanOptions& options_;
    Outputs& outputs_;
    const std::atomic<bool>& stop_;
    Progress progress_;
    std::atomic<size_t> next_{0};
    std::mutex mutex_;
    std::vector<std::optional<InputScan>> scans_;  // guarded by mutex_ while helpers run, like all below
    size_t told_ = 0;
    std::exception_ptr failure_;  // the report takes no more
};

/// Does the work once it is clear what is asked for.
int scan(const ScanOptions& options) {
    const std::atomic<bool>& stop = watchStopSignals();
    Console console(options.quiet ? StatusLine::kNever : StatusLine::kOnTerminal);
    std::optional<Outputs> outputs;
    try {
        outputs.emplace(options, console);
    } catch (const std::exception& error) {
        complain(error.what());
        return kExitUsage;
    }
    // The detectors log every frame like its predecessor; what is wrong with an input stands in its report.
    redirectLogs("");
    return Scan(options, *outputs, console, stop).run();
}

}  // namespace

int runScan(const ScanOptions& options) {
    if (options.list_detectors) {
        writeOutput(detectorTable());
        return kExitDone;
    }
    if (options.schema) {
        writeOutput(jsonText(reportSchema(), true));
        return kExitDone;
    }
    if (const auto fault = collision(options)) {
        complain(*fault);
        return kExitUsage;
    }
    return scan(options);
}

}  // namespace zel_monitor
