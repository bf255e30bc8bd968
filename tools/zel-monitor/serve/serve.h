#ifndef ZEL_TOOLS_SERVE_SERVE_H_
#define ZEL_TOOLS_SERVE_SERVE_H_

#include "serve/serve_options.h"

namespace zel_monitor {

/// Monitors the streams of the configuration until Ctrl-C or SIGTERM, and gives the exit status.
int runServe(const ServeOptions& options);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_SERVE_H_
