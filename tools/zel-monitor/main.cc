#include <CLI/App.hpp>
#include <cstdio>
#include <exception>
#include <system_error>

#include "console.h"
#include "log_file.h"
#include "options.h"
#include "scan/scan.h"
#include "selftest/selftest.h"
#include "stop_signal.h"
#include "watch.h"

namespace {

using namespace zel_monitor;  // NOLINT(google-build-using-namespace): the program is the namespace

int watch(const WatchOptions& options) {
    Console console;
    try {
        redirectLogs(options.log_file);
    } catch (const std::system_error& error) {
        console.error(error.what());
        return kExitUsage;
    }
    try {
        return runWatch(options, console, watchStopSignals());
    } catch (const std::exception& error) {
        console.error(error.what());
        return kExitStream;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto app = makeCommandLine();
    WatchOptions watch_options;
    WatchOptions demo_options;
    scan::ScanOptions scan_options;
    const CLI::App* const demo_command = addDemoCommand(*app, demo_options);
    const CLI::App* const watch_command = addWatchCommand(*app, watch_options);
    const CLI::App* const scan_command = scan::addScanCommand(*app, scan_options);
    selftest::SelftestOptions selftest_options;
    selftest::addSelftestCommand(*app, selftest_options);
    if (const auto answer = parseArguments(*app, {argv + 1, argv + argc})) {
        std::fputs(answer->output.c_str(), stdout);
        std::fputs(answer->error.c_str(), stderr);
        return answer->status;
    }
    if (demo_command->parsed()) {
        return watch(demo_options);
    }
    if (watch_command->parsed()) {
        return watch(watch_options);
    }
    return scan_command->parsed() ? scan::runScan(scan_options) : selftest::runSelftest(selftest_options);
}
