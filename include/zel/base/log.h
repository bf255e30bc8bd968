#ifndef ZEL_BASE_LOG_H_
#define ZEL_BASE_LOG_H_

#include <cstddef>

namespace ZEL {

/// Takes one whole log message of `length` bytes (usually ending in a newline; not zero-terminated by
/// contract) and the context given to setLogSink. Called from any thread, one message at a time. A sink
/// must not throw nor call the library.
using LogSink = void (*)(const char* text, size_t length, void* context);

/// Sends all log messages of the process to `function`; null restores the output that the environment
/// chooses ("ZEL_LOG", see <zel/zel.h>), which is standard output if it chooses none. When it returns, the
/// previous sink is no longer running and will not be called again. Any thread, but not from inside a sink.
void setLogSink(LogSink function, void* context);

}  // namespace ZEL

#endif  // ZEL_BASE_LOG_H_
