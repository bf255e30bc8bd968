#include "scan/archive_options.h"

#include <CLI/CLI.hpp>
#include <string>

#include "cli/command_line.h"

namespace zel_monitor {

void addArchiveOptions(CLI::App& command, ScanOptions& options) {
    auto* const group = command.add_option_group("Archives");
    CLI::Option* const list =
        group->add_option("--files-from", options.inputs.from, "Also the inputs named in it, one per line")
            ->type_name("FILE");
    group->add_flag("-0,--null", options.inputs.null_separated, "In that list a zero byte ends each name")
        ->needs(list);
    CLI::Option* const store =
        group
            ->add_option("--store", options.store.folder,
                         "Keep each input's report there, and scan only inputs that have none yet or have "
                         "changed")
            ->type_name("DIR");
    group->add_flag("--retry-failed", options.store.retry_failed, "Scan those that failed once more")
        ->needs(store);
    group->add_flag("--rescan", options.store.rescan, "Scan all of them once more")->needs(store);
    group
        ->add_flag("--by-content", options.store.by_content,
                   "Keep a hash of each file's content: what was only touched or copied has not changed")
        ->needs(store);
    group
        ->add_option("--shard", options.shard,
                     "Only the part that falls to this process: I/N, or auto in a Slurm job array, or auto/N "
                     "there and in an indexed Kubernetes Job")
        ->type_name("I/N");
    CLI::Option* const limit =
        group
            ->add_option_function<std::string>(
                "--time-limit",
                [&options](const std::string& text) { options.limit.base_s = seconds("--time-limit", text); },
                "Leave a file, as failed, when its scan takes longer")
            ->type_name("TIME");
    group
        ->add_option_function<std::string>(
            "--time-limit-per-gb",
            [&options](const std::string& text) {
                options.limit.per_gigabyte_s = seconds("--time-limit-per-gb", text);
            },
            "Let it take that much longer for each gigabyte")
        ->type_name("TIME")
        ->needs(limit);
    CLI::Option* const survey =
        group->add_flag("--survey", options.settings.survey,
                        "Of the video, judge key frames only: coarse, at a fraction of the cost");
    group->add_flag("--then-scan", options.then_scan, "And scan in full what a survey finds worth it")
        ->needs(survey);
}

}  // namespace zel_monitor
