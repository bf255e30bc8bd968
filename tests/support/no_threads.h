#ifndef ZEL_TESTS_SUPPORT_NO_THREADS_H_
#define ZEL_TESTS_SUPPORT_NO_THREADS_H_

#include <limits>
#include <pthread.h>

namespace support {

/// While it lives, no thread can be started: none would get the stack that it asks for.
class NoThreads {
  public:
    NoThreads() {
        pthread_getattr_default_np(&usual_);
        pthread_attr_t huge;
        pthread_getattr_default_np(&huge);
        pthread_attr_setstacksize(&huge, std::numeric_limits<size_t>::max() / 4);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }
    ~NoThreads() {
        pthread_setattr_default_np(&usual_);
        pthread_attr_destroy(&usual_);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

  private:
    pthread_attr_t usual_;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_NO_THREADS_H_
