#ifndef ZEL_SRC_EVENTS_VERDICTS_H_
#define ZEL_SRC_EVENTS_VERDICTS_H_

#include <zel/algo/algo_types.h>
#include <zel/events/kinds.h>

#include "events/event_tracker.h"

namespace ZEL {

/// What the verdicts on one picture, or one audio period, show of each kind. Where one fault implies another
/// only the first is present: a black or green picture is not also frozen, and silence is not also low voice
/// or no voice. Kinds of another source are unknown.
PerEventKind<Sight> sightsOf(const ZELAlgo::ZELVideoResult& result);
PerEventKind<Sight> sightsOf(const ZELAlgo::ZELAudioResult& result);

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_VERDICTS_H_
