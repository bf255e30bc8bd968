#include "cli/console.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
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
        fcntl(primary_, F_SETFL, O_NONBLOCK);
    }
    ~Terminal() {
        close(primary_);
        close(secondary_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int end() const { return secondary_; }

    /// What was written since the last call.
    std::string shown() const {
        std::array<char, 4096> text{};
        const ssize_t count = read(primary_, text.data(), text.size());
        return {text.data(), static_cast<size_t>(count > 0 ? count : 0)};
    }

  private:
    int primary_ = -1;
    int secondary_ = -1;
};

TEST(Console, KeepsTheStatusBelowTheLinesAndWithinTheTerminal) {
    const Terminal terminal;
    const Redirected streams(terminal.end(), terminal.end());
    Console console(StatusLine::kUnlessInPipe);
    EXPECT_TRUE(console.colour());
    console.status("a status of 25 characters");
    EXPECT_EQ(terminal.shown(), "\ra status of 25 char\033[K") << "the last column would wrap";
    console.line("a line");
    EXPECT_EQ(terminal.shown(), "\r\033[Ka line\r\n\ra status of 25 char\033[K");
    console.aside([] { writeError("a word\n"); });
    EXPECT_EQ(terminal.shown(), "\r\033[Ka word\r\n\ra status of 25 char\033[K");
    console.status("");
    EXPECT_EQ(terminal.shown(), "\r\033[K");
    console.line("another");
    console.status("again");
    console.error("a \033 fault");
    EXPECT_EQ(terminal.shown(), "another\r\n\ragain\033[K\r\033[Kzel-monitor: a \\x1b fault\r\n");
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
        console.status("unseen");
        EXPECT_EQ(terminal.shown(), "");
        EXPECT_FALSE(console.colour());
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
