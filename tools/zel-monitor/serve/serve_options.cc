#include "serve/serve_options.h"

#include <CLI/App.hpp>

#include "cli/command_line.h"
#include "cli/file_names.h"
#include "serve/http_address.h"

namespace zel_monitor {

void addServeOptions(CLI::App& command, ServeOptions& options) {
    command.footer(
        "Exit status: 0 stopped with Ctrl-C or SIGTERM, 2 wrong usage or configuration, 3 an output could "
        "not "
        "be opened or took no more. SIGHUP reads the configuration again and reopens the files.");
    command.add_option("--config", options.config, "What to monitor: a YAML file, see docs/serve.md")
        ->required()
        ->type_name("FILE");
    command.add_flag("--check", options.check, "Only check the configuration");
    command
        .add_option("--listen", options.listen, "Serve HTTP there, in place of what the configuration says")
        ->check([](const std::string& text) {
            return isHttpAddress(text) ? std::string() : std::string(kHttpAddressForm);
        })
        ->type_name("ADDRESS:PORT");
    command
        .add_option_function<std::string>(
            "--events",
            [&options](const std::string& file) { options.events = namesStandardOutput(file) ? "" : file; },
            "Write alarms as JSON lines to the end of FILE (-: standard output), in place of what the "
            "configuration says")
        ->type_name("FILE");
    command
        .add_option_function<std::string>(
            "--shard",
            [&options](const std::string& text) {
                const auto shard = parseShard(text);
                if (!shard) {
                    throw CLI::ValidationError("--shard", "'" + text + "' is not I/N with I from 1 to N");
                }
                options.shard = *shard;
            },
            "Monitor only the streams whose name's hash falls to part I of N")
        ->type_name("I/N");
    command.add_option("--log", options.log_file, "Keep the log lines of the library and of FFmpeg in FILE")
        ->type_name("FILE");
}

}  // namespace zel_monitor
