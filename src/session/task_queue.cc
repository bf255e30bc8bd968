#include "session/task_queue.h"

#include <iterator>
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
        const bool own_list = separate_audio_ && std::holds_alternative<std::shared_ptr<AudioFrame>>(task);
        std::deque<ZELTask>& list = own_list ? audio_ : shared_;
        list.push_back(std::move(task));
        if (list.size() > (own_list ? kAudioBound : kSharedBound)) {
            dropped = std::move(list.front());
            list.pop_front();
        }
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
        round.shared = std::move(shared_.front());
        shared_.pop_front();
    }
    return round;
}

ZELTask TaskQueue::takeAudio() {
    const MutexLock lock(mutex_);
    ZELTask task = std::move(audio_.front());
    audio_.pop_front();
    return task;
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

std::vector<ZELTask> TaskQueue::clear() {
    std::vector<ZELTask> tasks;
    const MutexLock lock(mutex_);
    tasks.reserve(shared_.size() + audio_.size());
    for (std::deque<ZELTask>* const list : {&shared_, &audio_}) {
        tasks.insert(tasks.end(), std::make_move_iterator(list->begin()),
                     std::make_move_iterator(list->end()));
        list->clear();
    }
    return tasks;
}

TaskQueue::Sizes TaskQueue::sizes() const {
    const MutexLock lock(mutex_);
    return {shared_.size(), audio_.size()};
}

}  // namespace ZEL
