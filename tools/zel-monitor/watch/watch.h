#ifndef ZEL_TOOLS_WATCH_WATCH_H_
#define ZEL_TOOLS_WATCH_WATCH_H_

#include <atomic>

#include "cli/console.h"
#include "watch/options.h"

namespace zel_monitor {

/// Plays the input into the library at its own pace and writes the reports; the exit status. Throws
/// MediaError if the input cannot be opened. Once `stop` is set, it ends as at the end of the stream, or at
/// once if the input is still being opened.
int runWatch(const WatchOptions& options, Console& console, const std::atomic<bool>& stop);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_WATCH_H_
