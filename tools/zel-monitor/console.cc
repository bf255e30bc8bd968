#include "console.h"

#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zel_monitor {
namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets variables
    return value != nullptr ? value : "";
}

bool isTerminal(std::FILE* file) {
    return isatty(fileno(file)) != 0 && environment("TERM") != "dumb";
}

/// Whether another program reads standard output; what it prints would run into a status line.
bool feedsAnotherProgram() {
    struct stat state = {};
    return fstat(STDOUT_FILENO, &state) == 0 && S_ISFIFO(state.st_mode);
}

size_t terminalColumns() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void write(std::FILE* file, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), file);
}

}  // namespace

Console::Console()
    : colour_(isTerminal(stdout) && environment("NO_COLOR").empty()),
      shows_status_(isTerminal(stderr) && !feedsAnotherProgram()) {}

Console::~Console() {
    eraseStatus();
}

void Console::line(std::string_view text) {
    const std::lock_guard<std::mutex> lock(mutex_);
    eraseStatus();
    write(stdout, std::string(text) + '\n');
    std::fflush(stdout);
    drawStatus();
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
    write(stderr, "zel-monitor: " + std::string(text) + '\n');
}

void Console::eraseStatus() {
    if (!status_.empty()) {
        write(stderr, "\r\033[K");
    }
}

void Console::drawStatus() {
    if (!status_.empty()) {
        write(stderr, std::string_view(status_).substr(0, terminalColumns() - 1));
    }
}

}  // namespace zel_monitor
