#include <csignal>
#include <exception>
#include <system_error>
#include <vector>

#include "archive/archive_options.h"
#include "archive/archive_report.h"
#include "cli/command_line.h"
#include "cli/exit_status.h"
#include "cli/standard_streams.h"
#include "scan/scan.h"
#include "scan/scan_options.h"
#include "serve/serve.h"
#include "serve/serve_options.h"
#include "watch/watch.h"
#include "watch/watch_options.h"

namespace {

using namespace zel_monitor;  // NOLINT(google-build-using-namespace): the program is the namespace

/// In the order of --help.
std::vector<Command> commands() {
    return {
        command("demo", "Watch a built-in stream that shows each fault in turn", &addDemoOptions, &runWatch),
        command("watch", "Play a stream at its own pace and print heartbeats", &addWatchOptions, &runWatch),
        command("serve", "Monitor many live streams, with alarms, metrics and a wall of pictures",
                &addServeOptions, &runServe),
        command("scan", "Find out when a file is broken, and how", &addScanOptions, &runScan),
        command("report", "Sum up what scans have stored", &addArchiveReportOptions, &runArchiveReport),
    };
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);  // outputs tidy up first
    try {
        return runCommandLine(commands(), {argv + 1, argv + argc});
    } catch (const OutputError& error) {
        if (error.code() == std::errc::broken_pipe) {  // the reader has seen enough
            std::signal(SIGPIPE, SIG_DFL);
            std::raise(SIGPIPE);
        }
        complain(error.what());
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return kExitFailed;
}
