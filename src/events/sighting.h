#ifndef ZEL_SRC_EVENTS_SIGHTING_H_
#define ZEL_SRC_EVENTS_SIGHTING_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "judges/stretch.h"

namespace ZEL {

/// What is seen of a fault over one stretch. Unknown: another fault hides it; it passes time, but is counted
/// neither for nor against the event's share.
enum class Sight : uint8_t { kAbsent, kPresent, kUnknown };

/// What a judge or a verdict has told of one kind.
struct Sighting {
    EventKind kind;
    TimeSpan span;
    Sight sight;
    std::optional<Evidence> evidence = {};
    bool apart = false;  ///< begins another event, even where the fault was present up to here
};

inline Sight sightOf(bool present) {
    return present ? Sight::kPresent : Sight::kAbsent;
}

/// Appends what a judge has settled of a kind.
inline void append(std::vector<Sighting>& sightings, EventKind kind,
                   std::span<const ZELJudges::Stretch> stretches) {
    for (const ZELJudges::Stretch& stretch : stretches) {
        sightings.push_back({kind,
                             {stretch.start_s, stretch.end_s},
                             sightOf(stretch.present),
                             Evidence{stretch.value, stretch.limit},
                             stretch.apart});
    }
}

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_SIGHTING_H_
