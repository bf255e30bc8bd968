#include "scan/outputs.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

#include "cli/exit_status.h"
#include "cli/file_names.h"
#include "cli/standard_streams.h"

namespace zel_monitor {

Outputs::Output::Output(const ReportFormat& format, const ScanSettings& settings, const std::string& path,
                        bool overwrite)
    : writer(format.make(settings)), file(path, overwrite, format.appears) {}

Outputs::Outputs(const ScanOptions& options, Console& console)
    : options_(options),
      policy_(options.settings.policy),
      console_(console),
      beside_([&] {
          std::deque<std::optional<Output>> made;
          for (const FormatFile& wanted : options.beside) {
              made.emplace_back(std::in_place, *wanted.format, options.settings, wanted.file,
                                options.overwrite);
          }
          return made;
      }()),
      report_(*options.format, options.settings, options.output, options.overwrite) {}

bool Outputs::wantsRecords() const {
    return std::any_of(options_.beside.begin(), options_.beside.end(),
                       [](const FormatFile& wanted) { return wanted.format->wants_record; });
}

void Outputs::begin() {
    write([](ReportWriter& writer) { return writer.begin(); });
}

void Outputs::event(const std::string& input, const ZEL::Event& event, bool of_survey) {
    write([&](ReportWriter& writer) { return writer.event(input, event, of_survey); });
}

void Outputs::inputFinished(const InputReport& report, const PageRecord* record) {
    write([&](ReportWriter& writer) { return writer.inputFinished(report, record); });
    tell(report);
}

int Outputs::end(const std::vector<InputReport>& reports) {
    const int found = exitStatus(reports, policy_);
    const std::lock_guard lock(mutex_);
    writeBeside([&](Output& output) {
        print(output.file, output.writer->end(reports, found));
        output.file.complete();
    });
    // The last of all, because it may tell the exit status.
    const int status = loss_ ? kExitFailed : found;
    print(report_.file, report_.writer->end(reports, status));
    report_.file.complete();
    if (loss_) {
        std::rethrow_exception(loss_);
    }
    return status;
}

template <typename Text>
void Outputs::write(const Text& text) {
    const std::lock_guard lock(mutex_);
    writeBeside([&](Output& output) { print(output.file, text(*output.writer)); });
    print(report_.file, text(*report_.writer));
}

template <typename Write>
void Outputs::writeBeside(const Write& write) {
    for (std::optional<Output>& output : beside_) {
        try {
            if (output) {
                write(*output);
            }
        } catch (const OutputError&) {
            loss_ = std::current_exception();
            output.reset();
        }
    }
}

void Outputs::print(OutputFile& file, const std::string& text) {
    if (!text.empty()) {  // a file with nothing in it is removed if the scan fails
        console_.aside([&] { file.write(text); });
    }
}

/// The verdict goes to standard output if that is free, and to standard error if a report for machines is
/// there. Why an input was not analysed to its end is on standard error in any case.
void Outputs::tell(const InputReport& report) {
    const std::string name = printable(report.facts.input);
    const std::string verdict = verdictText(report, policy_);
    const bool to_file = !options_.output.empty();
    if (to_file && !options_.quiet && !verdict.empty()) {
        writeVerdict(fmt::format("{}: {}\n", name, verdict));
    }
    const bool shown = to_file ? !options_.quiet && !verdict.empty() : options_.format->for_people;
    std::string unseen = !to_file && !shown ? verdict : "";
    if (unseen.empty() && report.problem && !(shown && Console::showsBoth())) {
        unseen = *report.problem;
    }
    if (!unseen.empty()) {
        console_.aside([&] { writeError(fmt::format("{}: {}\n", name, unseen)); });
    }
}

void Outputs::writeVerdict(const std::string& line) {
    try {
        console_.aside([&] { writeOutput(line); });
    } catch (const OutputError&) {
        loss_ = std::current_exception();
    }
}

}  // namespace zel_monitor
