#ifndef ZEL_TOOLS_CLI_CONSOLE_H_
#define ZEL_TOOLS_CLI_CONSOLE_H_

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace zel_monitor {

/// When there is a status line.
enum class StatusLine {
    kNever,
    kOnTerminal,    ///< standard error is a terminal that can be drawn on
    kUnlessInPipe,  ///< and no other program reads standard output, whose lines would run into it
};

/// What people see: lines on standard output and, below them, one status line on standard error. Any thread.
class Console {
  public:
    explicit Console(StatusLine when);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    ~Console();

    /// Writes `text` and a newline at once, so that a reader of a pipe sees it. Does not throw, since
    /// heartbeats come on a thread of the library's: the first line that is not taken requests a stop, and
    /// requireOutput() tells.
    void line(std::string_view text);

    /// Throws OutputError if a line was not taken.
    void requireOutput();

    /// Runs `write`, which writes to either stream or to anything else, while the status line is out of its
    /// way and nobody else writes. Throws what it throws.
    void aside(const std::function<void()>& write);

    /// Replaces the status line, cut to the terminal's width; empty removes it.
    void status(std::string text);

    /// Removes the status line and writes "zel-monitor: <text>" to standard error.
    void error(std::string_view text);

    /// Whether colours are welcome on standard output: a terminal, and NO_COLOR not set.
    bool colour() const { return colour_; }

    bool showsStatus() const { return shows_status_; }

    /// Whether both streams are a terminal, where one sees what goes to either.
    static bool showsBoth();

  private:
    void eraseStatus();
    void drawStatus();

    bool colour_;
    bool shows_status_;
    std::mutex mutex_;
    std::string status_;    // guarded by mutex_
    int output_error_ = 0;  // guarded by mutex_
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_CONSOLE_H_
