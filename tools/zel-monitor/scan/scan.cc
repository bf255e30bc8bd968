#include "scan/scan.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "cli/console.h"
#include "cli/exit_status.h"
#include "cli/file_list.h"
#include "cli/file_names.h"
#include "cli/log_file.h"
#include "cli/progress.h"
#include "cli/shard.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "report/detector_table.h"
#include "report/report_json.h"
#include "report/schema.h"
#include "scan/outputs.h"
#include "scan/scan_input.h"
#include "scan/stored_scans.h"

namespace zel_monitor {
namespace {

/// What stands for an input that is not begun, because the scan was stopped.
InputScan notBegun(const std::string& input) {
    InputScan scan;
    scan.report.facts.input = input;
    scan.report.problem = "not begun, the scan was stopped";
    scan.report.may_pass_later = true;
    return scan;
}

/// Which names cannot be used together, if any.
std::optional<std::string> collision(const ScanOptions& options, const std::vector<std::string>& inputs) {
    const auto from_standard_input = std::count_if(inputs.begin(), inputs.end(), &namesStandardInput);
    if (from_standard_input + (options.inputs.from == "-" ? 1 : 0) > 1) {
        return "standard input is given twice, and can be read once";
    }
    if (from_standard_input > 0 && !options.store.folder.empty()) {
        return "--store keeps reports on files, and standard input is none";
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
        if (std::any_of(inputs.begin(), inputs.end(), would_be_overwritten)) {
            return fmt::format("{} is an input, and would be overwritten", *output);
        }
        if (std::any_of(outputs.begin(), output, would_be_overwritten)) {
            return fmt::format("{} cannot hold two outputs", *output);
        }
    }
    return std::nullopt;
}

/// The inputs of this process: all that are asked for, of which those of another shard are never looked at.
/// What is stored under one name is scanned once.
std::vector<std::string> inputsOf(const ScanOptions& options) {
    std::vector<std::string> names = namesIn(options.inputs);
    if (!options.shard.empty()) {
        const Shard shard = shardFor(options.shard, &std::getenv);
        std::erase_if(names, [&](const std::string& name) { return !shard.takes(absoluteName(name)); });
    }
    if (!options.store.folder.empty()) {
        std::set<std::string> known;
        std::erase_if(names,
                      [&](const std::string& name) { return !known.insert(absoluteName(name)).second; });
    }
    return names;
}

/// One run of the command.
class Scan {
  public:
    /// `stored` may be null: nothing is kept.
    Scan(const ScanOptions& options, std::vector<std::string> inputs, const StoredScans* stored,
         Outputs& outputs, Console& console, const std::atomic<bool>& stop)
        : options_(options),
          inputs_(std::move(inputs)),
          stored_(stored),
          outputs_(outputs),
          stop_(stop),
          in_full_([&] {
              ScanSettings settings = options.settings;
              settings.survey = false;
              return settings;
          }()),
          progress_(console, options.quiet ? ProgressOf::kNothing : ProgressOf::kFiles, inputs_.size()),
          scans_(inputs_.size()) {}

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

    /// How many inputs had a report in the store that was good enough.
    size_t knownBefore() const { return known_before_; }

  private:
    /// Takes one input after another until none is left.
    void work() {
        try {
            for (size_t i = next_++; i < scans_.size(); i = next_++) {
                const std::string& input = inputs_[i];
                finishInput(i, stop_ ? notBegun(input) : scanOrLookUp(input, i));
            }
        } catch (...) {
            abandon();
        }
    }

    InputScan scanOrLookUp(const std::string& input, size_t i) {
        if (stored_ == nullptr) {
            return scanInput(input, i);
        }
        StoredScans::Known known = stored_->look(input);
        const bool goes_on = known.report && options_.then_scan && deservesScan(*known.report);
        if (known.report && !goes_on) {
            ++known_before_;
            progress_.slot(i).done = true;
            InputScan scan{.report = std::move(*known.report), .record = {}};
            for (const ZEL::Event& event : scan.report.events) {
                tellEvent(input, event, scan.report.survey.has_value());
            }
            return scan;
        }
        const auto begun = std::chrono::steady_clock::now();
        InputScan scan = goes_on ? scanInFull(input, i, in_full_) : scanInput(input, i);
        std::error_code ignored;
        if (!stop_ && !std::filesystem::is_directory(input, ignored)) {
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
            scan.report = stored_->keep(known, scan.report, took.count());
        }
        return scan;
    }

    InputScan scanInput(const std::string& input, size_t i) {
        if (!options_.settings.survey) {
            return scanInFull(input, i, options_.settings);
        }
        const auto later = [](const ZEL::Event&) {};  // what is found in full takes its place
        InputScan scan =
            zel_monitor::scanInput(input, orderFor(options_.settings), progress_.slot(i), later, stop_);
        if (options_.then_scan && deservesScan(scan.report) && !stop_) {
            progress_.slot(i).events = 0;
            progress_.slot(i).done = false;
            return scanInFull(input, i, in_full_);
        }
        for (const ZEL::Event& event : scan.report.events) {
            tellEvent(input, event, scan.report.survey.has_value());
        }
        return scan;
    }

    InputScan scanInFull(const std::string& input, size_t i, const ScanSettings& settings) {
        const auto on_event = [this, &input](const ZEL::Event& event) { tellEvent(input, event, false); };
        return zel_monitor::scanInput(input, orderFor(settings), progress_.slot(i), on_event, stop_);
    }

    ScanOrder orderFor(const ScanSettings& settings) const {
        return {settings, options_.limit, outputs_.wantsRecords()};
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
    void tellEvent(const std::string& input, const ZEL::Event& event, bool of_survey) {
        try {
            outputs_.event(input, event, of_survey);
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
    const std::vector<std::string> inputs_;
    const StoredScans* stored_;
    Outputs& outputs_;
    const std::atomic<bool>& stop_;
    const ScanSettings in_full_;
    Progress progress_;
    std::atomic<size_t> next_{0};
    std::atomic<size_t> known_before_{0};
    std::mutex mutex_;
    std::vector<std::optional<InputScan>> scans_;  // guarded by mutex_ while helpers run, like all below
    size_t told_ = 0;
    std::exception_ptr failure_;  // the report takes no more
};

/// Does the work once it is clear what is asked for.
int scan(const ScanOptions& options, std::vector<std::string> inputs) {
    const std::atomic<bool>& stop = watchStopSignals();
    Console console(options.quiet ? StatusLine::kNever : StatusLine::kOnTerminal);
    std::optional<StoredScans> stored;
    std::optional<Outputs> outputs;
    try {
        if (!options.store.folder.empty()) {
            stored.emplace(options.store, options.settings);
        }
        outputs.emplace(options, console);
    } catch (const std::exception& error) {
        complain(error.what());
        return kExitUsage;
    }
    // The detectors log every frame like its predecessor; what is wrong with an input stands in its report.
    redirectLogs("");
    const size_t count = inputs.size();
    Scan run(options, std::move(inputs), stored ? &*stored : nullptr, *outputs, console, stop);
    try {
        const int status = run.run();
        if (stored && !options.quiet) {
            console.aside([&] {
                writeError(fmt::format("{} of {} inputs were in the store\n", run.knownBefore(), count));
            });
        }
        return status;
    } catch (const StoreError& error) {
        complain(error.what());
        return mayPassLater(error.code().value()) ? kExitTryAgain : kExitFailed;
    }
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
    std::vector<std::string> inputs;
    try {
        inputs = inputsOf(options);
    } catch (const std::runtime_error& error) {
        complain(error.what());
        return kExitUsage;
    }
    if (const auto fault = collision(options, inputs)) {
        complain(*fault);
        return kExitUsage;
    }
    return scan(options, std::move(inputs));
}

}  // namespace zel_monitor
