#ifndef ZEL_TOOLS_WATCH_WATCH_H_
#define ZEL_TOOLS_WATCH_WATCH_H_

#include "watch/watch_options.h"

namespace zel_monitor {

/// Plays the input into the library at its own pace, writes the reports and gives the exit status. The first
/// Ctrl-C ends it as at the end of the stream, or at once if the input is still being opened. Throws
/// MediaError if the input cannot be opened, and OutputError.
int runWatch(const WatchOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_WATCH_H_
