#ifndef ZEL_SRC_PC_TIMER_PC_H_
#define ZEL_SRC_PC_TIMER_PC_H_

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>

#include "base/mutex.h"

/// The heartbeat thread: sleeps a period, runs its task, and so on. Dropping the timer does not end the
/// thread; only stop does, and the thread then ends at once or after the task in work.
class ZELPCTimer {
  public:
    using Task = std::function<void()>;

    /// Outlives the timer: the detached thread keeps reading it.
    class RunningFlag {
      public:
        void clear();
        bool isSet() const;
        /// Waits `seconds` (not at all below 1), or until the flag is cleared. True while it is set.
        bool holdsFor(int32_t seconds) const;

      private:
        mutable ZEL::Mutex mutex_;
        mutable std::condition_variable_any cleared_;
        bool set_ ZEL_GUARDED_BY(mutex_) = true;
    };

    enum class Mode {
        kDetached,  ///< a thread of its own
        kJoined,    ///< the constructor returns when the flag was cleared
    };

    /// Throws std::system_error if no thread is to be had.
    ZELPCTimer(int32_t period_seconds, Mode mode, Task task,
               std::shared_ptr<RunningFlag> running = std::make_shared<RunningFlag>());

    void stop();

  private:
    const std::shared_ptr<RunningFlag> running_;
};

#endif  // ZEL_SRC_PC_TIMER_PC_H_
