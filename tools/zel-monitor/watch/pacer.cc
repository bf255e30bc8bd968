#include "watch/pacer.h"

#include <zel/events/stream_clock.h>

#include <algorithm>
#include <thread>

namespace zel_monitor {
namespace {

using std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kMostLate{0.5};  ///< further behind, the input could not keep up
constexpr std::chrono::milliseconds kSlice{100};

}  // namespace

Pacer::TimePoint Pacer::due(double stream_time, TimePoint now) {
    if (tie_ && stream_time < latest_) {
        return now;  // the tracks are interleaved only roughly
    }
    const bool waits = tie_ && stream_time - latest_ <= ZEL::StreamClock::kLongestWaitS;
    latest_ = stream_time;
    if (waits) {
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
