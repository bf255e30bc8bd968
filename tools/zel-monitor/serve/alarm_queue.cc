#include "serve/alarm_queue.h"

#include <iterator>
#include <utility>

namespace zel_monitor {

void AlarmQueue::take(const Alarm& alarm) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) {
            return;
        }
        waiting_.push_back(alarm);
        shrink();
    }
    changed_.notify_one();
}

void AlarmQueue::close() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
    }
    changed_.notify_all();
}

std::deque<Alarm> AlarmQueue::wait(std::chrono::steady_clock::time_point until) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_until(lock, until, [this] { return !waiting_.empty() || closed_; });
    return std::exchange(waiting_, {});
}

void AlarmQueue::putBack(std::deque<Alarm> alarms) {
    const std::lock_guard<std::mutex> lock(mutex_);
    waiting_.insert(waiting_.begin(), std::make_move_iterator(alarms.begin()),
                    std::make_move_iterator(alarms.end()));
    shrink();
}

void AlarmQueue::pause(std::chrono::steady_clock::time_point until) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_until(lock, until, [this] { return closed_; });
}

bool AlarmQueue::isClosed() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return closed_;
}

size_t AlarmQueue::size() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return waiting_.size();
}

uint64_t AlarmQueue::dropped() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return dropped_;
}

void AlarmQueue::shrink() {
    while (waiting_.size() > most_) {
        waiting_.pop_front();
        ++dropped_;
    }
}

}  // namespace zel_monitor
