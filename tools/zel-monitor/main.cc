#include <cstdio>
#include <exception>
#include <system_error>

#include "console.h"
#include "log_file.h"
#include "options.h"
#include "stop_signal.h"
#include "watch.h"

namespace {

using namespace zel_monitor;  // NOLINT(google-build-using-namespace): the program is the namespace

int run(const WatchOptions& options) {
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

int run(const EarlyExit& answer) {
    std::fputs(answer.output.c_str(), stdout);
    std::fputs(answer.error.c_str(), stderr);
    return answer.status;
}

}  // namespace

int main(int argc, char** argv) {
    return std::visit([](const auto& wanted) { return run(wanted); }, parseOptions({argv + 1, argv + argc}));
}
