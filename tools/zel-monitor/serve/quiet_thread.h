#ifndef ZEL_TOOLS_SERVE_QUIET_THREAD_H_
#define ZEL_TOOLS_SERVE_QUIET_THREAD_H_

#include <csignal>
#include <pthread.h>
#include <thread>
#include <utility>

namespace zel_monitor {

/// Blocks the signals meant for the process on the calling thread while it lives, and on threads that are
/// started meanwhile for good, so that the main thread gets them.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_{};
};

/// A thread that signals leave alone.
template <typename Run>
std::thread quietThread(Run run) {
    const SignalsBlocked blocked;
    return std::thread(std::move(run));
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_QUIET_THREAD_H_
