#include "watch/watch_options.h"

#include <CLI/App.hpp>

#include "cli/command_line.h"
#include "cli/time_text.h"
#include "input/demo_source.h"

namespace zel_monitor {
namespace {

void addTimeout(CLI::App& command, const std::string& name, const std::string& help,
                std::optional<double>& timeout_s) {
    command
        .add_option_function<std::string>(
            name,
            [name, &timeout_s](const std::string& text) {
                timeout_s = parseSeconds(text);
                if (!timeout_s || *timeout_s <= 0.0) {
                    throw CLI::ValidationError(
                        name, "'" + text + "' is no length of time; write for example 10s or 1m");
                }
            },
            help)
        ->type_name("TIME");
}

void addSharedOptions(CLI::App& command, WatchOptions& options) {
    command.footer(
        "Exit status: 0 monitored to the end or stopped with Ctrl-C, 2 wrong usage, 3 the stream could not "
        "be opened or decoded, or the output not be written.");
    command.add_option("--speed", options.speed, "Stream seconds per second, 0.01 to 1000")
        ->check(numberFrom(0.01, 1000.0))
        ->type_name("FACTOR")
        ->capture_default_str();
    command.add_option("--interval", options.interval, "Seconds between heartbeats, 1 to 86400")
        ->check(wholeNumberFrom(1, 86400))
        ->type_name("SECONDS")
        ->capture_default_str();
    for (const HeartbeatFormat& format : kHeartbeatFormats) {
        if (format.option != nullptr) {
            command.add_flag_callback(
                format.option, [&options, &format] { options.format = &format; }, format.help);
        }
    }
    command.add_flag_callback(
        "--no-audio", [&options] { options.audio = false; }, "Leave the audio out");
    command.add_option("--name", options.name, "Call the stream so")->type_name("NAME");
    command
        .add_option(
            "--log", options.log_file,
            "Append what the library and FFmpeg log to FILE, repeated lines left out; SIGHUP opens it anew")
        ->type_name("FILE");
}

}  // namespace

void addWatchOptions(CLI::App& command, WatchOptions& options) {
    command.add_option("INPUT", options.input, "A file, a URL, or - for standard input")
        ->required()
        ->type_name("");
    command.add_flag("--reconnect", options.reconnect,
                     "Open the input again when it ends or fails, for ever");
    addTimeout(command, "--open-timeout", "Give up an input that does not open within TIME",
               options.open_timeout_s);
    addTimeout(command, "--read-timeout", "Give up an input of which nothing has come for TIME",
               options.read_timeout_s);
    addSharedOptions(command, options);
}

void addDemoOptions(CLI::App& command, WatchOptions& options) {
    addSharedOptions(command, options);
    options.input = kDemoInput;
}

}  // namespace zel_monitor
