#include "base/clock.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace ZEL {
namespace {

double systemNow() {
    using Ticks = std::chrono::duration<int64_t, std::ratio<1, 10'000'000>>;  // 100 ns
    const int64_t ticks =
        std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
    const int64_t seconds = ticks / 10'000'000;
    const int64_t microseconds = ticks % 10'000'000 / 10;
    return static_cast<double>(seconds) + static_cast<double>(microseconds) / 1e6;
}

std::atomic<double (*)()> current_clock{&systemNow};
std::atomic<std::chrono::nanoseconds> timer_second{std::chrono::seconds(1)};

}  // namespace

double now() {
    return current_clock.load(std::memory_order_relaxed)();
}

void setClockForTesting(double (*clock)()) {
    current_clock.store(clock != nullptr ? clock : &systemNow, std::memory_order_relaxed);
}

std::chrono::nanoseconds timerSecond() {
    return timer_second.load(std::memory_order_relaxed);
}

void setTimerSecondForTesting(std::chrono::nanoseconds length) {
    timer_second.store(length, std::memory_order_relaxed);
}

}  // namespace ZEL
