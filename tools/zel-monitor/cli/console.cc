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

/// Whether another program reads standard output.
bool feedsAnotherProgram() {
    struct stat state = {};
    return fstat(STDOUT_FILENO, &state) == 0 && S_ISFIFO(state.st_mode);
}

}  // namespace

Console::Console(StatusLine when)
    : colour_(isTerminal(STDOUT_FILENO) && environment("NO_COLOR").empty()),
      shows_status_(when != StatusLine::kNever && isTerminal(STDERR_FILENO) &&
                    (when == StatusLine::kOnTerminal || !feedsAnotherProgram())) {}

Console::~Console() {
    eraseStatus();
}

void Console::line(std::string_view text) {
    aside([&] {
        if (output_error_ == 0) {
            output_error_ = writeAll(STDOUT_FILENO, std::string(text) + '\n');
            if (output_error_ != 0) {
                requestStop();
            }
        }
    });
}

void Console::aside(const std::function<void()>& write) {
    const std::lock_guard<std::mutex> lock(mutex_);
    eraseStatus();
    write();
    drawStatus();
}

void Console::status(std::string text) {
    if (!shows_status_) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    if (text.empty()) {
        eraseStatus();
    }
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

bool Console::showsBoth() {
    return isatty(STDOUT_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

void Console::eraseStatus() {
    if (!status_.empty()) {
        writeError("\r\033[K");
    }
}

/// Over the one that may be there, so that it does not flicker.
void Console::drawStatus() {
    if (!status_.empty()) {
        // One that wraps could not be drawn over.
        writeError('\r' + status_.substr(0, terminalColumns() - 1) + "\033[K");
    }
}

}  // namespace zel_monitor
