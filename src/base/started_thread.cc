#include "base/started_thread.h"

#include <condition_variable>
#include <csignal>
#include <mutex>
#include <pthread.h>
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

/// Threads started while it lives leave the process's signals to the host's own threads. What a thread
/// raises by its own doing still reaches it.
class AsynchronousSignalsBlocked {
  public:
    AsynchronousSignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
            sigdelset(&all, own);
        }
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~AsynchronousSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    AsynchronousSignalsBlocked(const AsynchronousSignalsBlocked&) = delete;
    AsynchronousSignalsBlocked& operator=(const AsynchronousSignalsBlocked&) = delete;

  private:
    sigset_t before_{};
};

}  // namespace

std::thread startThread(const std::function<ThreadName()>& name_of, std::function<void()> body) {
    const AsynchronousSignalsBlocked blocked;  // a thread begins with the mask of its maker
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
