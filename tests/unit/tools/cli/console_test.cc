#include "cli/console.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "cli/standard_streams.h"
#include "cli/stop_signal.h"

namespace {

using namespace zel_monitor;

/// Puts other files in the place of standard output and standard error while it lives.
class Redirected {
  public:
    Redirected(int output, int error) : saved_{dup(STDOUT_FILENO), dup(STDERR_FILENO)} {
        dup2(output, STDOUT_FILENO);
        dup2(error, STDERR_FILENO);
    }
    ~Redirected() {
        dup2(saved_[0], STDOUT_FILENO);
        dup2(saved_[1], STDERR_FILENO);
        close(saved_[0]);
        close(saved_[1]);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

  private:
    std::array<int, 2> saved_;
};

/// A terminal of 20 columns.
class Terminal {
  public:
    Terminal() {
        setenv("TERM", "xterm", 1);  // NOLINT(concurrency-mt-unsafe): one thread
        const winsize size{.ws_row = 24, .ws_col = 20, .ws_xpixel = 0, .ws_ypixel = 0};
        EXPECT_EQ(openpty(&primary_, &secondary_, nullptr, nullptr, &size), 0);
    }
    ~Terminal() {
        close(primary_);
        close(secondary_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int end() const { return secondary_; }

    /// What comes next, as long as `expected`; a terminal hands on what it was given in its own time.
    std::string next(const std::string& expected) const {
        std::string shown;
        pollfd output{.fd = primary_, .events = POLLIN, .revents = 0};
        while (shown.size() < expected.size() && poll(&output, 1, 60'000) == 1) {
            std::array<char, 4096> part{};
            const ssize_t count = read(primary_, part.data(), expected.size() - shown.size());
            shown.append(part.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
        }
        return shown;
    }

  private:
    int primary_ = -1;
    int secondary_ = -1;
};

TEST(Console, KeepsTheStatusBelowTheLinesAndWithinTheTerminal) {
    const Terminal terminal;
    const Redirected streams(terminal.end(), terminal.end());
    const auto expect = [&](const std::string& expected) { EXPECT_EQ(terminal.next(expected), expected); };
    Console console(StatusLine::kUnlessInPipe);
    EXPECT_TRUE(console.colour());
    console.status("a status of 25 characters");
    expect("\ra status of 25 char\033[K");  // in the last column it would wrap
    console.line("a line");
    expect("\r\033[Ka line\r\n\ra status of 25 char\033[K");
    console.aside([] { writeError("a word\n"); });
    expect("\r\033[Ka word\r\n\ra status of 25 char\033[K");
    console.status("");
    expect("\r\033[K");
    console.line("another");
    console.status("again");
    console.error("a \033 fault");
    expect("another\r\n\ragain\033[K\r\033[Kzel-monitor: a \\x1b fault\r\n");
}

TEST(Console, ShowsNoStatusWhereItWouldDisturb) {
    const Terminal terminal;
    std::array<int, 2> pipe_ends{};
    ASSERT_EQ(pipe(pipe_ends.data()), 0);
    {
        const Redirected streams(pipe_ends[1], terminal.end());
        EXPECT_FALSE(Console(StatusLine::kUnlessInPipe).showsStatus());
        EXPECT_TRUE(Console(StatusLine::kOnTerminal).showsStatus());
        Console console(StatusLine::kNever);
        EXPECT_FALSE(console.colour());
        console.status("unseen");
        writeError("seen");
        EXPECT_EQ(terminal.next("seen"), "seen");
    }
    {
        const Redirected streams(terminal.end(), pipe_ends[1]);
        EXPECT_FALSE(Console(StatusLine::kOnTerminal).showsStatus());
    }
    close(pipe_ends[0]);
    close(pipe_ends[1]);
}

TEST(Console, TellsOfALineThatWasNotTakenAndWantsAStop) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    {
        const Redirected streams(full, STDERR_FILENO);
        Console console(StatusLine::kNever);
        EXPECT_NO_THROW(console.requireOutput());
        console.line("lost");
        EXPECT_THROW(console.requireOutput(), OutputError);
    }
    close(full);
    EXPECT_TRUE(watchStopSignals());
}

}  // namespace
