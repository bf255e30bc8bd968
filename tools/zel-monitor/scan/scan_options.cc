#include "scan/scan_options.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <utility>

#include "cli/command_line.h"
#include "cli/file_names.h"
#include "cli/time_text.h"
#include "report/kind_options.h"
#include "scan/archive_options.h"

namespace zel_monitor {
namespace {

constexpr int kMostJobs = 64;

/// What stood on the command line, where that is more than the options tell.
struct Given {
    ZEL::PerEventKind<bool> minimum{};
    ZEL::PerEventKind<bool> limit{};  ///< of --fail-on, as a time
};

void addWanted(CLI::App& command, ScanOptions& options) {
    command
        .add_option_function<std::vector<std::string>>(
            "--also",
            [&options](const std::vector<std::string>& names) {
                for (const std::string& name : names) {
                    options.settings.wanted[indexOf(kindOf("--also", name))] = true;
                }
            },
            "Report these looks too, as does naming them in another option")
        ->delimiter(',')
        ->type_name("KIND")
        ->allow_extra_args(false);
    command.add_flag_callback(
        "--all", [&options] { options.settings.wanted.fill(true); }, "Report looks as well as faults");
}

/// Sets the shortest event of a kind, as --min and --stall ask for it.
void setMinimum(const std::string& option, ScanOptions& options, Given& given, ZEL::EventKind kind,
                double seconds) {
    if (std::exchange(given.minimum[indexOf(kind)], true)) {
        throw CLI::ValidationError(option, fmt::format("{} is given twice", infoOf(kind).name));
    }
    options.settings.rules[indexOf(kind)].min_s = seconds;
    options.settings.wanted[indexOf(kind)] = true;
}

/// Whoever names the length from which an event is a violation wants events that short to be found.
void applyLimits(ScanOptions& options, const Given& given) {
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const size_t i = indexOf(info.kind);
        double& min_s = options.settings.rules[i].min_s;
        if (!given.limit[i] || min_s <= *options.settings.policy[i]) {
            continue;
        }
        if (given.minimum[i]) {
            throw CLI::ValidationError(
                "--fail-on", fmt::format("{0}={1:g}s is shorter than the shortest event, --min {0}={2:g}s",
                                         info.name, *options.settings.policy[i], min_s));
        }
        min_s = *options.settings.policy[i];
    }
}

void addFormats(CLI::App& command, ScanOptions& options) {
    auto* const group = command.add_option_group("Output");
    std::vector<CLI::Option*> exclusive;
    for (const ReportFormat& format : kReportFormats) {
        if (format.option == nullptr) {
            continue;
        }
        if (format.has_own_file) {
            group
                ->add_option_function<std::string>(
                    format.option,
                    [&options, &format](const std::string& file) {
                        if (namesStandardOutput(file)) {
                            throw CLI::ValidationError(format.option, "needs a file");
                        }
                        options.beside.push_back({&format, file});
                    },
                    format.help)
                ->type_name("FILE");
            continue;
        }
        CLI::Option* const flag = group->add_flag_callback(
            format.option, [&options, &format] { options.format = &format; }, format.help);
        for (CLI::Option* const other : exclusive) {
            other->excludes(flag);
        }
        exclusive.push_back(flag);
    }
    group->add_option("-o,--output", options.output, "Write there instead of to standard output (-)")
        ->type_name("FILE");
    group->add_flag("-y,--overwrite", options.overwrite, "Overwrite files that exist");
    group->add_flag("-q,--quiet", options.quiet,
                    "No progress on standard error, and beside -o no verdicts on standard output");
}

}  // namespace

void addScanOptions(CLI::App& command, ScanOptions& options) {
    command.footer(
        "Exit status: 0 clean, 1 an input violates --fail-on, 2 usage, 3 an input could not be analysed to "
        "its end, or an output not be written, 75 the same for a reason that may be gone when tried again.");
    // Options that take any number of words read "[a,b]" as a list. This one takes a fixed number, which is
    // never reached, so that such a name stays one.
    command.add_option("INPUT", options.inputs.names, "Files, folders, URLs, or - for standard input")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false)
        ->expected(CLI::detail::expected_max_vector_size - 1, CLI::detail::expected_max_vector_size)
        ->type_name("");
    const auto given = std::make_shared<Given>();
    command.add_flag("--list-detectors", options.list_detectors,
                     "List the kinds of faults, with the defaults");
    command.add_flag("--schema", options.schema, "Print the JSON Schema of the --json report");
    addWanted(command, options);
    addPerKind(command, "--min", "Shortest event of a kind", false,
               [&options, given](ZEL::EventKind k, std::optional<double> s) {
                   setMinimum("--min", options, *given, k, *s);
               });
    addPerKind(command, "--gap", "How long without the fault ends an event", false,
               [&options](ZEL::EventKind k, std::optional<double> s) {
                   options.settings.rules[indexOf(k)].gap_s = *s;
                   options.settings.wanted[indexOf(k)] = true;
               });
    command
        .add_option_function<std::string>(
            "--stall",
            [&options, given](const std::string& text) {
                setMinimum("--stall", options, *given, ZEL::EventKind::kStall, seconds("--stall", text));
            },
            "Shortest gap in the timestamps that is an event; as --min stall=TIME")
        ->type_name("TIME");
    addPerKind(
        command, "--fail-on",
        "Exit with 1 if an event of the kind is this long, which lowers --min to that; without a time: "
        "if there is any event",
        true, [&options, given](ZEL::EventKind k, std::optional<double> s) {
            options.settings.policy[indexOf(k)] = s.value_or(0.0);
            options.settings.wanted[indexOf(k)] = true;
            given->limit[indexOf(k)] = s.has_value();
        });
    addFormats(command, options);
    addArchiveOptions(command, options);
    command.add_option("-j,--jobs", options.jobs, "Inputs to scan at the same time, 1 to 64")
        ->check(wholeNumberFrom(1, kMostJobs))
        ->type_name("N");

    command.final_callback([&options, given] {
        applyLimits(options, *given);
        if (options.inputs.names.empty() && options.inputs.from.empty() && !options.list_detectors &&
            !options.schema) {
            throw CLI::RequiredError("INPUT");
        }
        if (!options.store.folder.empty() && options.format == &kTableFormat) {
            options.format = &kBriefFormat;
        }
        if (namesStandardOutput(options.output)) {
            options.output.clear();
        }
    });
}

}  // namespace zel_monitor
