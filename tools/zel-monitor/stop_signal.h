#ifndef ZEL_TOOLS_STOP_SIGNAL_H_
#define ZEL_TOOLS_STOP_SIGNAL_H_

#include <atomic>

namespace zel_monitor {

/// From now on the first Ctrl-C or SIGTERM only sets the flag that is returned, and cuts short the system
/// call that the main thread waits in; the second one ends the program.
const std::atomic<bool>& watchStopSignals();

/// Sets the same flag. Any thread.
void requestStop();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_STOP_SIGNAL_H_
