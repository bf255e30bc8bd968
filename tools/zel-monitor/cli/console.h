#ifndef ZEL_TOOLS_CLI_CONSOLE_H_
#define ZEL_TOOLS_CLI_CONSOLE_H_

#include <mutex>
#include <string>
#include <string_view>

namespace zel_monitor {

/// Lines on standard output, and below them one status line on standard error if that is a terminal and
/// standard output is not a pipe. Any thread.
class Console {
  public:
    Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    ~Console();

    /// Writes `text` and a newline at once, so that a reader of a pipe sees it. Does not throw, since
    /// heartbeats come on a thread of the library's: the first line that is not taken requests a stop, and
    /// requireOutput() tells.
    void line(std::string_view text);

    /// Throws OutputError if a line was not taken.
    void requireOutput();

    /// Replaces the status line, cut to the terminal's width; empty removes it.
    void status(std::string text);

    /// Removes the status line and writes "zel-monitor: <text>" to standard error.
    void error(std::string_view text);

    /// Whether colours are welcome on standard output: a terminal, and NO_COLOR not set.
    bool colour() const { return colour_; }

    bool showsStatus() const { return shows_status_; }

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
