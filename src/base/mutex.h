#ifndef ZEL_SRC_BASE_MUTEX_H_
#define ZEL_SRC_BASE_MUTEX_H_

#include <mutex>

#if defined(__clang__)
#define ZEL_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define ZEL_THREAD_ATTRIBUTE(x)
#endif
#define ZEL_GUARDED_BY(mutex) ZEL_THREAD_ATTRIBUTE(guarded_by(mutex))
#define ZEL_REQUIRES(...) ZEL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ZEL_EXCLUDES(...) ZEL_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

namespace ZEL {

/// A plain, non-recursive mutex that Clang's thread-safety analysis can follow. Wait on it with
/// std::condition_variable_any in a `while` loop: the analysis does not see into a predicate.
class ZEL_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
  public:
    void lock() ZEL_THREAD_ATTRIBUTE(acquire_capability()) { mutex_.lock(); }
    void unlock() ZEL_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }

    /// Tells the analysis, and the reader, that the caller's caller holds the lock. Checks nothing.
    void assertHeld() const ZEL_THREAD_ATTRIBUTE(assert_capability(this)) {}

  private:
    std::mutex mutex_;
};

class ZEL_THREAD_ATTRIBUTE(scoped_lockable) MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ZEL_THREAD_ATTRIBUTE(acquire_capability(mutex)) : mutex_(mutex) {
        mutex_.lock();
    }
    ~MutexLock() ZEL_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_MUTEX_H_
