#include "pc/timer_pc.h"

#include <chrono>
#include <string>
#include <thread>
#include <utility>

#include "base/thread_name.h"

void ZELPCTimer::RunningFlag::clear() {
    {
        const ZEL::MutexLock lock(mutex_);
        set_ = false;
    }
    cleared_.notify_all();
}

bool ZELPCTimer::RunningFlag::isSet() const {
    const ZEL::MutexLock lock(mutex_);
    return set_;
}

bool ZELPCTimer::RunningFlag::holdsFor(int32_t seconds) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    const ZEL::MutexLock lock(mutex_);
    while (set_ && cleared_.wait_until(mutex_, end) == std::cv_status::no_timeout) {
    }
    return set_;
}

ZELPCTimer::ZELPCTimer(int32_t period_seconds, Mode mode, Task task, std::shared_ptr<RunningFlag> running)
    : running_(std::move(running)) {
    std::thread thread([running = running_, period_seconds, task = std::move(task)] {
        ZEL::setThreadName("zel_timer_thread_" + std::to_string(ZEL::threadId()));
        while (running->holdsFor(period_seconds)) {
            task();
        }
    });
    if (mode == Mode::kDetached) {
        thread.detach();
    } else {
        thread.join();
    }
}

void ZELPCTimer::stop() {
    running_->clear();
}
