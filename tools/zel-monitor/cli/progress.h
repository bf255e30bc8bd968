#ifndef ZEL_TOOLS_CLI_PROGRESS_H_
#define ZEL_TOOLS_CLI_PROGRESS_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace zel_monitor {

/// How far all inputs have come together.
struct ProgressState {
    double position_s = 0.0;
    std::optional<double> length_s;  ///< none if an input does not say
    double elapsed_s = 0.0;          ///< wall time
    size_t events = 0;
    size_t inputs = 1;
    size_t inputs_done = 0;
    double inputs_share = 0.0;  ///< mean share of each input that is done; 0 for one that does not say
};

/// One line without its end: position, speed as a multiple of real time, time to go, events; with a bar that
/// is `bar_width` wide, if that is not 0.
std::string progressText(const ProgressState& state, size_t bar_width);

/// Shows progress on standard error from a thread of its own: a live bar on a terminal, a line every ten
/// seconds elsewhere, and the first within a second.
class Progress {
  public:
    /// One input's part. Written by the thread that scans it.
    struct Slot {
        std::atomic<double> position_s{0.0};
        std::atomic<double> length_s{0.0};  ///< 0 while unknown
        std::atomic<size_t> events{0};
        std::atomic<bool> done{false};
    };

    Progress(size_t inputs, bool quiet);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    Slot& slot(size_t input) { return slots_.at(input); }

    /// Runs `print`, which writes to the terminal, while the bar is out of its way. Any thread.
    void withoutBar(const std::function<void()>& print);

  private:
    void run();
    ProgressState state() const;
    void clearBar();

    std::deque<Slot> slots_;  // never moves its elements
    const bool terminal_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::mutex mutex_;
    std::condition_variable ended_;
    bool stopping_ = false;   // guarded by mutex_
    bool bar_shown_ = false;  // guarded by mutex_
    std::thread thread_;      // last: uses every field above; none if quiet
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_PROGRESS_H_
