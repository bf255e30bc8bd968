#ifndef ZEL_SRC_BASE_THREAD_NAME_H_
#define ZEL_SRC_BASE_THREAD_NAME_H_

#include <string>

namespace ZEL {

/// Names the calling thread for debuggers and profilers. Linux keeps the first 15 bytes.
void setThreadName(const std::string& name);

/// The operating system's id of the calling thread.
unsigned long threadId();

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_THREAD_NAME_H_
