#ifndef ZEL_SRC_BASE_STARTED_THREAD_H_
#define ZEL_SRC_BASE_STARTED_THREAD_H_

#include <functional>
#include <thread>

#include "base/thread_name.h"

namespace ZEL {

/// Starts a thread that names itself and then runs `body`, which must not throw; returns when it is named.
/// `name_of` is called on the new thread, which takes no signals meant for the process. Throws
/// std::system_error if no thread is to be had and std::bad_alloc if there is no memory; the new thread
/// itself needs none.
std::thread startThread(const std::function<ThreadName()>& name_of, std::function<void()> body);

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_STARTED_THREAD_H_
