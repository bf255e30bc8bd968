#include "archive/archive_options.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>

#include "cli/command_line.h"
#include "cli/file_names.h"
#include "report/kind_options.h"

namespace zel_monitor {

void addArchiveReportOptions(CLI::App& command, ArchiveOptions& options) {
    command.footer(
        "Exit status: 0 clean, 1 an input violates the policy, 2 usage, 3 an input is missing in the store "
        "or "
        "was not analysed to its end, or an output could not be written.");
    command.add_option("DIR", options.store, "The folder that `zel-monitor scan --store` filled")
        ->type_name("");
    CLI::Option* const list =
        command
            .add_option("--files-from", options.list.from,
                        "Report on the inputs named in it, one per line, in place of all "
                        "that is stored; - is standard input")
            ->type_name("FILE");
    command.add_flag("-0,--null", options.list.null_separated, "In that list a zero byte ends each name")
        ->needs(list);
    addPerKind(command, "--fail-on",
               "Judge by this policy in place of that of the scans: an event of the kind is this long, or "
               "without a time: there is any",
               true, [&options](ZEL::EventKind kind, std::optional<double> limit_s) {
                   if (!options.policy) {
                       options.policy.emplace();
                   }
                   (*options.policy)[indexOf(kind)] = limit_s.value_or(0.0);
               });
    auto* const group = command.add_option_group("Output");
    const auto add_format = [&](const char* name, ArchiveFormat format, const char* help) {
        return group->add_flag_callback(
            name, [&options, format] { options.format = format; }, help);
    };
    CLI::Option* const json = add_format("--json", ArchiveFormat::kJson, "One JSON object, see --schema");
    CLI::Option* const lines = add_format("--jsonl", ArchiveFormat::kJsonLines,
                                          "One JSON object per event and per input, as of scan");
    CLI::Option* const csv = add_format("--csv", ArchiveFormat::kCsv, "One row per input");
    json->excludes(lines, csv);
    lines->excludes(csv);
    group->add_option("-o,--output", options.output, "Write there instead of to standard output (-)")
        ->type_name("FILE");
    CLI::Option* const html =
        group->add_option("--html", options.html, "Also write an index that leads to a page for each file")
            ->type_name("FILE");
    group
        ->add_option("--pages", options.pages,
                     "Write the pages of so many files, the worst first, into a folder beside the index")
        ->check(wholeNumberFrom(0, std::numeric_limits<int32_t>::max()))
        ->type_name("N")
        ->needs(html);
    group->add_option("--page", options.pages_of, "And the page of this one; may be repeated")
        ->type_name("INPUT")
        ->allow_extra_args(false)
        ->needs(html);
    group->add_flag("-y,--overwrite", options.overwrite, "Overwrite files that exist");
    group->add_flag("--schema", options.schema, "Print the JSON Schema of the --json report");
    command.final_callback([&options] {
        if (options.store.empty() && !options.schema) {
            throw CLI::RequiredError("DIR");
        }
        if (namesStandardOutput(options.output)) {
            options.output.clear();
        }
    });
}

}  // namespace zel_monitor
