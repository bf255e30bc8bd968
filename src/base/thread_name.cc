#include "base/thread_name.h"

#include <cstdarg>
#include <cstdio>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZEL {

ThreadName::ThreadName(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (std::vsnprintf(text_, sizeof text_, format, arguments) < 0) {
        text_[0] = '\0';
    }
    va_end(arguments);
}

void ThreadName::apply() const {
    pthread_setname_np(pthread_self(), text_);
}

unsigned long threadId() {
    return static_cast<unsigned long>(syscall(SYS_gettid));
}

}  // namespace ZEL
