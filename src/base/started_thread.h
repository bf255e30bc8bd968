#ifndef ZEL_SRC_BASE_STARTED_THREAD_H_
#define ZEL_SRC_BASE_STARTED_THREAD_H_

#include <functional>
#include <string>
#include <thread>

namespace ZEL {

/// Starts a thread that names itself and then runs `body`; returns when it is named. `name_of` is called on
/// the new thread. Throws std::system_error if no thread is to be had.
std::thread startThread(const std::function<std::string()>& name_of, std::function<void()> body);

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_STARTED_THREAD_H_
