#include "session/task_queue.h"

#include <utility>

namespace ZEL {

void TaskQueue::setSeparateAudio(bool separate) {
    const MutexLock lock(mutex_);
    separate_audio_ = separate;
}

std::optional<ZELTask> TaskQueue::pushDropOldest(ZELTask task) {
    std::optional<ZELTask> dropped;
    bool wake = false;
    {
        const MutexLock lock(mutex_);
        const bool own_list =
            separate_audio_ && std::holds_alternative<std::shared_ptr<AudioFrame>>(task.frame);
        dropped = own_list ? audio_.pushDropOldest(std::move(task)) : shared_.pushDropOldest(std::move(task));
        wake = std::exchange(consumer_waits_, false);
    }
    if (wake) {
        ready_.notify_one();
    }
    return dropped;
}

std::optional<TaskQueue::Round> TaskQueue::waitForRound() {
    const MutexLock lock(mutex_);
    while (!closed_ && shared_.empty() && audio_.empty()) {
        consumer_waits_ = true;
        ready_.wait(mutex_);
    }
    consumer_waits_ = false;
    if (closed_) {
        return std::nullopt;
    }
    Round round{std::nullopt, !audio_.empty()};
    if (!shared_.empty()) {
        round.shared = shared_.takeOldest();
    }
    return round;
}

ZELTask TaskQueue::takeAudio() {
    const MutexLock lock(mutex_);
    return audio_.takeOldest();
}

void TaskQueue::open() {
    const MutexLock lock(mutex_);
    closed_ = false;
}

void TaskQueue::close() {
    {
        const MutexLock lock(mutex_);
        closed_ = true;
    }
    ready_.notify_all();
}

std::optional<ZELTask> TaskQueue::discardOne() {
    const MutexLock lock(mutex_);
    if (!shared_.empty()) {
        return shared_.takeOldest();
    }
    return audio_.empty() ? std::nullopt : std::optional(audio_.takeOldest());
}

TaskQueue::Sizes TaskQueue::sizes() const {
    const MutexLock lock(mutex_);
    return {shared_.size(), audio_.size()};
}

}  // namespace ZEL
