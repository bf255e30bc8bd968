#include "base/started_thread.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace ZEL {
namespace {

/// A promise without memory: one would ask for some while it unwinds from a thread that did not start.
class Signal {
  public:
    void give() {
        const std::lock_guard<std::mutex> lock(mutex_);
        given_ = true;
        changed_.notify_one();  // under the lock: the waiter ends the signal as soon as it is free
    }
    void wait() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return given_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool given_ = false;
};

}  // namespace

std::thread startThread(const std::function<ThreadName()>& name_of, std::function<void()> body) {
    Signal named;
    // `name_of` and `named` are used before the signal is given, that is while this function still waits.
    std::thread thread([&name_of, &named, body = std::move(body)] {
        name_of().apply();
        named.give();
        body();
    });
    named.wait();
    return thread;
}

}  // namespace ZEL
