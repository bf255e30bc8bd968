#include <CLI/App.hpp>
#include <csignal>
#include <exception>
#include <system_error>

#include "cli/console.h"
#include "cli/file_names.h"
#include "cli/log_file.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "scan/scan.h"
#include "watch/options.h"
#include "watch/watch.h"

namespace {

using namespace zel_monitor;  // NOLINT(google-build-using-namespace): the program is the namespace

int watch(const WatchOptions& options) {
    if (writesOver(options.log_file, options.input)) {
        complain("--log: " + options.log_file + " is the input");
        return kExitUsage;
    }
    try {
        redirectLogs(options.log_file);
    } catch (const std::system_error& error) {
        complain(error.what());
        return kExitUsage;
    }
    Console console;
    const int status = runWatch(options, console, watchStopSignals());
    requireLogs();
    return status;
}

int run(int argc, char** argv) {
    const auto app = makeCommandLine();
    WatchOptions watch_options;
    WatchOptions demo_options;
    ScanOptions scan_options;
    const CLI::App* const demo_command = addDemoCommand(*app, demo_options);
    const CLI::App* const watch_command = addWatchCommand(*app, watch_options);
    addScanCommand(*app, scan_options);
    if (const auto answer = parseArguments(*app, {argv + 1, argv + argc})) {
        writeError(answer->error);
        writeOutput(answer->output);
        return answer->status;
    }
    if (demo_command->parsed()) {
        return watch(demo_options);
    }
    if (watch_command->parsed()) {
        return watch(watch_options);
    }
    return runScan(scan_options);
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);  // outputs tidy up first
    try {
        return run(argc, argv);
    } catch (const OutputError& error) {
        if (error.code() == std::errc::broken_pipe) {  // the reader has seen enough
            std::signal(SIGPIPE, SIG_DFL);
            std::raise(SIGPIPE);
        }
        complain(error.what());
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return kExitStream;
}
