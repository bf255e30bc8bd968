#ifndef ZEL_TESTS_SUPPORT_WAIT_H_
#define ZEL_TESTS_SUPPORT_WAIT_H_

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace support {

/// Long enough for a loaded machine under a sanitizer; only a failing test waits it out.
constexpr std::chrono::seconds kPatience{60};

/// A number that one thread raises and another waits for.
class Count {
  public:
    void add() {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++value_;
        changed_.notify_all();  // under the lock: whoever waits may end the count as soon as it is free
    }

    bool waitFor(int at_least) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, kPatience, [&] { return value_ >= at_least; });
    }

    int value() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return value_;
    }

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    int value_ = 0;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_WAIT_H_
