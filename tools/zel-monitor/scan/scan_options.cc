#include "scan/scan_options.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <functional>
#include <string_view>
#include <utility>

#include "scan/text.h"

namespace zel_monitor::scan {
namespace {

constexpr unsigned kMostJobs = 64;

double seconds(const std::string& option, std::string_view text) {
    const auto value = parseSeconds(text);
    if (!value) {
        throw CLI::ValidationError(
            option, fmt::format("'{}' is no length of time; write for example 0.5s, 500ms or 2m", text));
    }
    return *value;
}

Kind kind(const std::string& option, std::string_view name) {
    const auto found = kindByName(name);
    if (!found) {
        throw CLI::ValidationError(
            option, fmt::format("'{}' is not a kind of fault; --list-detectors names them all", name));
    }
    return *found;
}

/// Adds an option that takes "kind=time", several with commas or by repetition. `bare` allows "kind" alone,
/// which means any length.
void addPerKind(CLI::App& command, const std::string& name, const std::string& help, bool bare,
                std::function<void(Kind, double)> set) {
    command
        .add_option_function<std::vector<std::string>>(
            name,
            [name, bare, set = std::move(set)](const std::vector<std::string>& items) {
                PerKind<bool> given{};
                for (const std::string& item : items) {
                    const size_t equals = item.find('=');
                    if (equals == std::string::npos && !bare) {
                        throw CLI::ValidationError(
                            name, fmt::format("'{}' lacks a length of time; write {}=0.5s", item, item));
                    }
                    const Kind wanted = kind(name, item.substr(0, equals));
                    if (std::exchange(given[indexOf(wanted)], true)) {
                        throw CLI::ValidationError(name,
                                                   fmt::format("{} is given twice", infoOf(wanted).name));
                    }
                    set(wanted, equals == std::string::npos ? 0.0 : seconds(name, item.substr(equals + 1)));
                }
            },
            help)
        ->delimiter(',')
        ->type_name("KIND=TIME")
        ->allow_extra_args(false);
}

}  // namespace

CLI::App* addScanCommand(CLI::App& app, ScanOptions& options) {
    CLI::App* const command = app.add_subcommand("scan", "Find out when a file is broken, and how");
    command->footer(
        "Exit status: 0 clean, 1 an input violates --fail-on, 2 usage, 3 an input could not be analysed to "
        "its end, or an output not be written.");
    command->add_option("INPUT", options.inputs, "Files, URLs, or - for standard input");
    command->add_flag("--list-detectors", options.list_detectors,
                      "List the kinds of faults, with the defaults");
    addPerKind(*command, "--min", "Shortest event of a kind", false,
               [&options](Kind k, double s) { options.rules[indexOf(k)].min_s = s; });
    addPerKind(*command, "--gap", "How long without the fault ends an event", false,
               [&options](Kind k, double s) { options.rules[indexOf(k)].gap_s = s; });
    command
        ->add_option_function<std::string>(
            "--stall",
            [&options](const std::string& text) {
                options.rules[indexOf(Kind::kStall)].min_s = seconds("--stall", text);
            },
            "Shortest gap in the timestamps that is an event; as --min stall=TIME")
        ->type_name("TIME");
    addPerKind(*command, "--fail-on", "Exit with 1 if an event of the kind is this long", true,
               [&options](Kind k, double s) { options.policy[indexOf(k)] = s; });

    auto* const formats = command->add_option_group("Output");
    const auto add_format = [&](const char* name, Format format, const char* help) {
        return formats->add_flag_callback(
            name, [&options, format] { options.format = format; }, help);
    };
    auto* const json = add_format("--json", Format::kJson, "One JSON object at the end");
    auto* const lines = add_format("--jsonl", Format::kJsonLines, "One JSON object per event, as it ends");
    auto* const csv = add_format("--csv", Format::kCsv, "One line per event");
    json->excludes(lines)->excludes(csv);
    lines->excludes(csv);
    formats->add_option("-o,--output", options.output, "Write there instead of to standard output (-)")
        ->type_name("FILE");
    formats->add_option("--html", options.html, "Also write a page with the timeline")->type_name("FILE");
    formats->add_flag("-y,--overwrite", options.overwrite, "Overwrite files that exist");
    formats->add_flag("-q,--quiet", options.quiet, "No progress on standard error");
    command->add_option("-j,--jobs", options.jobs, "Inputs to scan at the same time")
        ->check(CLI::Range(1U, kMostJobs));

    command->final_callback([&options] {
        if (options.inputs.empty() && !options.list_detectors) {
            throw CLI::RequiredError("INPUT");
        }
        if (options.html == "-") {
            throw CLI::ValidationError("--html", "a page needs a file");
        }
        if (options.output == "-") {
            options.output.clear();
        }
    });
    return command;
}

}  // namespace zel_monitor::scan
