#ifndef ZEL_SRC_EVENTS_IMPLIED_H_
#define ZEL_SRC_EVENTS_IMPLIED_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <cstddef>
#include <deque>
#include <limits>
#include <vector>

#include "events/sighting.h"

namespace ZEL {

/// Hides what another fault implies, so that one fact is told once: a black frame is not also frozen, silence
/// has no voice. Judges settle each at its own time, so a sighting waits until all that may hide it have come
/// as far. What is hidden is unknown.
class Implied {
  public:
    /// So many sightings of a kind wait for one that does not come, then the oldest wait no longer.
    static constexpr size_t kMostWaiting = 512;

    /// The next sighting of its kind.
    void see(const Sighting& sighting);

    /// A fault that there are no sightings of, but which is told before whatever follows it.
    void cover(EventKind fault, TimeSpan span);

    /// Takes out what is settled: each kind in order.
    std::vector<Sighting> takeSettled();

    /// The stream is over: takes out the rest.
    std::vector<Sighting> takeRest();

  private:
    struct Kind {
        std::deque<Sighting> waiting;
        std::vector<TimeSpan> seen;  ///< where it is, as long as that may hide something
        double told_s = -std::numeric_limits<double>::infinity();   ///< how far its sightings have come
        double taken_s = -std::numeric_limits<double>::infinity();  ///< and those that were taken out
    };

    static void remember(Kind& kind, TimeSpan span);
    double settledFor(EventKind kind) const;
    void take(const Sighting& sighting, std::vector<Sighting>& taken) const;
    bool isHidden(EventKind kind, double time_s, double& until_s) const;
    void forget(EventKind fault);

    PerEventKind<Kind> kinds_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_IMPLIED_H_
