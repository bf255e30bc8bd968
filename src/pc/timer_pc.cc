#include "pc/timer_pc.h"

#include <chrono>
#include <cxxabi.h>
#include <exception>
#include <thread>
#include <utility>

#include "base/clock.h"
#include "base/log_format.h"
#include "base/started_thread.h"

namespace {

/// A tick that fails is left out: what a host's callback throws must not end the process from this thread.
void runTick(const ZELPCTimer::Task& task) {
    try {
        task();
    } catch (const abi::__forced_unwind&) {
        throw;  // the thread is being cancelled, which cannot be stopped
    } catch (const std::exception& error) {
        ZEL::zel_log("WARN: a heartbeat failed: %s\n", error.what());
    } catch (...) {
        ZEL::zel_log("WARN: a heartbeat failed\n");
    }
}

}  // namespace

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
    const auto end = std::chrono::steady_clock::now() + seconds * ZEL::timerSecond();
    const ZEL::MutexLock lock(mutex_);
    while (set_ && cleared_.wait_until(mutex_, end) == std::cv_status::no_timeout) {
    }
    return set_;
}

ZELPCTimer::ZELPCTimer(int32_t period_seconds, Mode mode, Task task, std::shared_ptr<RunningFlag> running)
    : running_(std::move(running)) {
    std::thread thread =
        ZEL::startThread([] { return ZEL::ThreadName("zel_timer_thread_%lu", ZEL::threadId()); },
                         [running = running_, period_seconds, task = std::move(task)] {
                             while (running->holdsFor(period_seconds)) {
                                 runTick(task);
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
