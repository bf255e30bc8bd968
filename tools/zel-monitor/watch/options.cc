#include "watch/options.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "cli/file_names.h"
#include "input/demo_source.h"

namespace zel_monitor {
namespace {

/// "nan" is in every CLI::Range.
std::string isNumber(const std::string& text) {
    return std::isnan(std::strtod(text.c_str(), nullptr)) ? text + " is no number" : "";
}

void addSharedOptions(CLI::App& command, WatchOptions& options) {
    command.footer(
        "Exit status: 0 monitored to the end or stopped with Ctrl-C, 2 wrong usage, 3 the stream could not "
        "be opened or decoded, or the output not be written.");
    command.add_option("--speed", options.speed, "Stream seconds per second, 0.01 to 1000")
        ->check(CLI::Range(0.01, 1000.0).description(""))
        ->check(isNumber)
        ->type_name("FACTOR")
        ->capture_default_str();
    command.add_option("--interval", options.interval, "Seconds between heartbeats, 1 to 86400")
        ->check(CLI::Range(1, 86400).description(""))
        ->type_name("SECONDS")
        ->capture_default_str();
    command.add_flag("--json", options.json, "One JSON object per heartbeat and line instead of a table");
    command.add_flag_callback(
        "--no-audio", [&options] { options.audio = false; }, "Leave the sound out");
    command.add_option("--log", options.log_file, "Keep the log lines of the library and of FFmpeg in FILE")
        ->type_name("FILE");
}

}  // namespace

std::shared_ptr<CLI::App> makeCommandLine() {
    auto app = std::make_shared<CLI::App>("Monitors the quality of video and audio streams.", "zel-monitor");
    app->set_version_flag("--version", "zel-monitor " ZEL_VERSION);
    app->require_subcommand(1);
    app->failure_message([](const CLI::App* program, const CLI::Error& error) {
        const std::vector<std::string> unknown = program->remaining();
        const std::string fault = program->get_subcommands().empty() && !unknown.empty()
                                      ? "'" + unknown.front() + "' is neither a command nor an option"
                                      : error.what();
        return "zel-monitor: " + printable(fault) + " (--help tells more)\n";
    });
    return app;
}

CLI::App* addWatchCommand(CLI::App& app, WatchOptions& options) {
    CLI::App* const command =
        app.add_subcommand("watch", "Play a stream at its own pace and print heartbeats");
    command->add_option("INPUT", options.input, "A file, a URL, or - for standard input")
        ->required()
        ->type_name("");
    addSharedOptions(*command, options);
    return command;
}

CLI::App* addDemoCommand(CLI::App& app, WatchOptions& options) {
    CLI::App* const command =
        app.add_subcommand("demo", "Watch a built-in stream that shows each fault in turn");
    addSharedOptions(*command, options);
    options.input = kDemoInput;
    return command;
}

std::optional<EarlyExit> parseArguments(CLI::App& app, std::vector<std::string> arguments) {
    try {
        std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
        app.parse(std::move(arguments));
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::ostringstream output;
        std::ostringstream messages;
        const bool asked_for = app.exit(error, output, messages) == 0;  // --help or --version
        return EarlyExit{
            .status = asked_for ? kExitDone : kExitUsage, .output = output.str(), .error = messages.str()};
    }
}

}  // namespace zel_monitor
