#include "scan/scan.h"

#include <zel/base/log.h>

#include <atomic>
#include <cstdio>
#include <exception>
#include <fmt/format.h>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

#include "scan/output_file.h"
#include "scan/page.h"
#include "scan/progress.h"
#include "scan/scan_input.h"
#include "scan/writers.h"

namespace zel_monitor::scan {
namespace {

void complain(const std::exception& error) {
    fmt::print(stderr, "zel-monitor: {}\n", error.what());
}

/// The files of one scan, opened before any work is done.
struct Outputs {
    explicit Outputs(const ScanOptions& options) : report(options.output, options.overwrite) {
        if (options.format != Format::kTable && !options.output.empty()) {
            table = std::make_unique<OutputFile>("", false);
        }
        if (!options.html.empty()) {
            page = std::make_unique<OutputFile>(options.html, options.overwrite);
        }
    }

    OutputFile report;
    std::unique_ptr<OutputFile> table;  ///< standard output, if the report goes to a file and is for machines
    std::unique_ptr<OutputFile> page;
};

/// One run of the command.
class Scan {
  public:
    Scan(const ScanOptions& options, Outputs& outputs)
        : options_(options),
          outputs_(outputs),
          progress_(options.inputs.size(), options.quiet),
          scans_(options.inputs.size()) {}

    int run() {
        if (options_.format == Format::kCsv) {
            outputs_.report.write(csvHeader());
        }
        std::vector<std::thread> helpers;
        for (size_t i = 1; i < std::min<size_t>(options_.jobs, scans_.size()); ++i) {
            helpers.emplace_back([this] { work(); });
        }
        work();
        for (std::thread& helper : helpers) {
            helper.join();
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
                InputScan scan =
                    scanInput(options_.inputs[i], options_.rules, outputs_.page != nullptr, progress_.slot(i),
                              [this, i](const Event& event) { writeEvent(options_.inputs[i], event); });
                finishInput(i, std::move(scan));
            }
        } catch (...) {  // an output that takes no more; the inputs that are left would be for nothing
            next_ = scans_.size();
            const std::lock_guard lock(mutex_);
            failure_ = std::current_exception();
        }
    }

    void writeEvent(const std::string& input, const Event& event) {
        if (options_.format == Format::kJsonLines || options_.format == Format::kCsv) {
            const std::string line =
                options_.format == Format::kCsv ? csvLine(input, event) : eventLine(input, event);
            progress_.withoutBar([&] { outputs_.report.write(line); });
        }
    }

    /// Shows the tables in the order of the inputs, whichever is ready first.
    void finishInput(size_t i, InputScan scan) {
        const std::lock_guard lock(mutex_);
        scans_[i] = std::move(scan);
        for (; shown_ < scans_.size() && scans_[shown_]; ++shown_) {
            show(scans_[shown_]->report);
        }
    }

    /// Shows people the table where it disturbs nothing; else, on standard error, at least the verdict.
    void show(const InputReport& report) {
        const std::string verdict = verdictText(report, options_.policy);
        if (OutputFile* const table = tableOutput()) {
            progress_.withoutBar([&] { table->write(inputTable(report, options_.policy)); });
        } else if (!verdict.empty() || report.problem) {
            progress_.withoutBar([&] {
                fmt::print(stderr, "{}: {}\n", report.facts.input,
                           verdict.empty() ? *report.problem : verdict);
            });
        }
    }

    /// Null if standard output holds something for machines.
    OutputFile* tableOutput() {
        if (options_.format == Format::kTable) {
            return &outputs_.report;
        }
        return outputs_.table.get();
    }

    int conclude() {
        std::vector<InputReport> reports;
        nlohmann::ordered_json records = nlohmann::ordered_json::array();
        for (std::optional<InputScan>& scan : scans_) {
            reports.push_back(std::move(scan->report));
            records.push_back(scan->record ? scan->record->json() : nullptr);
        }
        if (OutputFile* const table = tableOutput(); table != nullptr && reports.size() > 1) {
            progress_.withoutBar([&] { table->write(totalTable(reports, options_.policy)); });
        }
        if (options_.format == Format::kJson) {
            outputs_.report.write(jsonText(reportJson(reports, options_)));
        }
        if (outputs_.page) {
            outputs_.page->write(
                pageHtml({{"report", reportJson(reports, options_)}, {"records", std::move(records)}}));
        }
        return exitStatus(reports, options_.policy);
    }

    const ScanOptions& options_;
    Outputs& outputs_;
    Progress progress_;
    std::atomic<size_t> next_{0};
    std::mutex mutex_;
    std::vector<std::optional<InputScan>> scans_;  // guarded by mutex_ while helpers run, like all below
    size_t shown_ = 0;
    std::exception_ptr failure_;
};

void discardLog(const char* /*text*/, size_t /*length*/, void* /*context*/) {}

}  // namespace

int runScan(const ScanOptions& options) {
    if (options.list_detectors) {
        fmt::print("{}", detectorTable());
        return kClean;
    }
    if (!options.html.empty() && !hasPage()) {
        fmt::print(stderr,
                   "zel-monitor: --html: this program was built without the page (ZEL_BUILD_PAGE=OFF)\n");
        return kUsage;
    }
    std::unique_ptr<Outputs> outputs;
    try {
        outputs = std::make_unique<Outputs>(options);
    } catch (const std::exception& error) {
        complain(error);
        return kUsage;
    }
    ZEL::setLogSink(&discardLog, nullptr);  // the detectors log every picture like its predecessor
    av_log_set_level(AV_LOG_QUIET);         // what is wrong with an input stands in its report
    try {
        return Scan(options, *outputs).run();
    } catch (const std::exception& error) {
        complain(error);
        return kNotAnalysed;
    }
}

}  // namespace zel_monitor::scan
