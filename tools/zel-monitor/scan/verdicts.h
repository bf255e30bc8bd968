#ifndef ZEL_TOOLS_SCAN_VERDICTS_H_
#define ZEL_TOOLS_SCAN_VERDICTS_H_

#include <zel/algo/algo_types.h>

#include "scan/event_tracker.h"
#include "scan/kinds.h"

namespace zel_monitor::scan {

/// What the verdicts on one picture, or one audio period, show of each kind. Where one fault implies another
/// only the first is present: a black or green picture is not also frozen, and silence is not also low voice
/// or no voice. Kinds of another source are unknown.
PerKind<Sight> sightsOf(const ZELAlgo::ZELVideoResult& result);
PerKind<Sight> sightsOf(const ZELAlgo::ZELAudioResult& result);

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_VERDICTS_H_
