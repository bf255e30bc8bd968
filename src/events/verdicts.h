#ifndef ZEL_SRC_EVENTS_VERDICTS_H_
#define ZEL_SRC_EVENTS_VERDICTS_H_

#include <zel/algo/algo_types.h>
#include <zel/events/kinds.h>

#include <optional>

#include "events/event_tracker.h"

namespace ZEL {

/// What is seen of each kind that was looked for.
using Sights = PerEventKind<std::optional<Sight>>;

/// What the verdicts on one frame, one period for silence or one period for speech show. Where one fault
/// implies another only the first is present: a black or green frame is not also frozen, and silence is not
/// also low voice or no voice.
Sights frameSights(const ZELAlgo::ZELVideoResult& result);
Sights silenceSights(const ZELAlgo::ZELAudioResult& result);
Sights voiceSights(const ZELAlgo::ZELAudioResult& result);

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_VERDICTS_H_
