#ifndef ZEL_TOOLS_CLI_PROGRESS_H_
#define ZEL_TOOLS_CLI_PROGRESS_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "cli/console.h"

namespace zel_monitor {

/// What is followed, and so what one wants to know of it.
enum class ProgressOf {
    kNothing,  ///< shows none
    kStream,   ///< at its own pace: speed over the last seconds, frames; on a status line only
    kFiles,    ///< as fast as they go: speed since the start, time to go, events; else a line now and then
};

/// How far all inputs have come together.
struct ProgressState {
    double position_s = 0.0;
    std::optional<double> length_s;  ///< none if an input does not say
    double elapsed_s = 0.0;          ///< wall time
    double speed = 0.0;              ///< as a multiple of real time
    size_t events = 0;
    uint64_t video_frames = 0;
    uint64_t audio_frames = 0;
    size_t inputs = 1;
    size_t inputs_done = 0;
    double inputs_share = 0.0;  ///< mean share of each input that is done; 0 for one that does not say
};

/// One line without its end, with a bar if one is to be drawn and the length is known.
std::string progressText(const ProgressState& state, ProgressOf what, bool bar);

/// Shows progress from a thread of its own, the first within a second: on the console's status line or, if it
/// has none, of files as a line on standard error every ten seconds.
class Progress {
  public:
    /// One input's part. Written by the thread that is at work on it.
    struct Slot {
        std::atomic<double> position_s{0.0};
        std::atomic<double> length_s{0.0};  ///< 0 while unknown
        std::atomic<size_t> events{0};
        std::atomic<uint64_t> video_frames{0};
        std::atomic<uint64_t> audio_frames{0};
        std::atomic<bool> done{false};
    };

    /// `console` outlives this object.
    Progress(Console& console, ProgressOf what, size_t inputs);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// Removes the status line.
    ~Progress();

    Slot& slot(size_t input) { return slots_.at(input); }

  private:
    using TimePoint = std::chrono::steady_clock::time_point;

    void run();
    ProgressState state(TimePoint now);
    void measureSpeed(ProgressState& state);

    Console& console_;
    const ProgressOf what_;
    std::deque<Slot> slots_;  // never moves its elements
    const TimePoint start_ = std::chrono::steady_clock::now();
    ProgressState mark_;  // the thread's alone; speed of a stream is measured from here
    double speed_ = 0.0;  // the same
    std::mutex mutex_;
    std::condition_variable ended_;
    bool stopping_ = false;  // guarded by mutex_
    std::thread thread_;     // last: uses every field above; none if nothing is shown
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_PROGRESS_H_
