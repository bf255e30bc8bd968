#include "cli/console.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/standard_streams.h"
#include "cli/stop_signal.h"

namespace zel_monitor {
namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets variables
    return value != nullptr ? value : "";
}

bool isTerminal(int descriptor) {
    return isatty(descriptor) != 0 && environment("TERM") != "dumb";
}

/// Whether another program reads standard output; what it prints would run into a status line.
bool feedsAnotherProgram() {
    struct stat state = {};
    return fstat(STDOUT_FILENO, &state) == 0 && S_ISFIFO(state.st_mode);
}

}  // namespace

Console::Console()
    : colour_(isTerminal(STDOUT_FILENO) && environment("NO_COLOR").empty()),
      shows_status_(isTerminal(STDERR_FILENO) && !feedsAnotherProgram()) {}

Console::~Console() {
    eraseStatus();
}

void Console::line(std::string_view text) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (output_error_ != 0) {
        return;
    }
    eraseStatus();
    output_error_ = writeAll(STDOUT_FILENO, std::string(text) + '\n');
    drawStatus();
    if (output_error_ != 0) {
        requestStop();
    }
}

void Console::status(std::string text) {
    if (!shows_status_) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    eraseStatus();
    status_ = std::move(text);
    drawStatus();
}

void Console::error(std::string_view text) {
    const std::lock_guard<std::mutex> lock(mutex_);
    eraseStatus();
    status_.clear();
    complain(text);
}

void Console::requireOutput() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (output_error_ != 0) {
        throw OutputError(output_error_, "standard output");
    }
}

void Console::eraseStatus() {
    if (!status_.empty()) {
        writeError("\r\033[K");
    }
}

void Console::drawStatus() {
    if (!status_.empty()) {
        writeError(std::string_view(status_).substr(0, terminalColumns() - 1));
    }
}

}  // namespace zel_monitor
