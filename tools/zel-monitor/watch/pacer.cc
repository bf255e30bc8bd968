#include "watch/pacer.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace zel_monitor {
namespace {

using std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double kLongestWait = 10.0;  ///< a longer step in stream time is a jump, not a pause
constexpr Seconds kMostLate{0.5};      ///< further behind, the input could not keep up
constexpr std::chrono::milliseconds kSlice{100};

}  // namespace

Pacer::TimePoint Pacer::due(double stream_time, TimePoint now) {
    const bool jump = !tie_ || std::abs(stream_time - latest_) > kLongestWait;
    if (!jump && stream_time < latest_) {
        return now;  // out of order: sound and pictures are interleaved only roughly
    }
    latest_ = stream_time;
    if (!jump) {
        const Seconds after((stream_time - tie_->stream_time) / speed_);
        const TimePoint due = tie_->wall_time + std::chrono::duration_cast<steady_clock::duration>(after);
        if (now - due <= kMostLate) {
            return due;
        }
        stalled_ += now - due;
    }
    tie_ = {.stream_time = stream_time, .wall_time = now};
    return now;
}

void sleepUntil(Pacer::TimePoint due, const std::atomic<bool>& stop) {
    for (auto now = steady_clock::now(); now < due && !stop.load(); now = steady_clock::now()) {
        std::this_thread::sleep_until(std::min(due, now + kSlice));
    }
}

}  // namespace zel_monitor
