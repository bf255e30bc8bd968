#include "base/thread_name.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZEL {

void setThreadName(const std::string& name) {
    constexpr size_t kLongestName = 15;
    pthread_setname_np(pthread_self(), name.substr(0, kLongestName).c_str());
}

unsigned long threadId() {
    return static_cast<unsigned long>(syscall(SYS_gettid));
}

}  // namespace ZEL
