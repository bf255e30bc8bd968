#ifndef ZEL_TOOLS_SERVE_METRICS_H_
#define ZEL_TOOLS_SERVE_METRICS_H_

#include <string>
#include <vector>

#include "serve/alarm_outlets.h"
#include "serve/stream_status.h"

namespace zel_monitor {

/// Everything that is measured, in Prometheus's text format: made of how things are now, so that nothing
/// stays of a stream that is gone.
std::string metricsText(const std::vector<StreamStatus>& streams, const AlarmOutlets::Counts& outlets);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_METRICS_H_
