#ifndef ZEL_SRC_EVENTS_EVIDENCE_MEAN_H_
#define ZEL_SRC_EVENTS_EVIDENCE_MEAN_H_

#include <zel/events/event.h>

#include <array>
#include <optional>

namespace ZEL {

/// The mean of what was measured of one event. Some kinds are measured in two ways, which their limits tell
/// apart; they are not mixed.
class EvidenceMean {
  public:
    /// `seconds` of the event showed this. A third limit is left out.
    void add(const Evidence& evidence, double seconds);

    /// Of the measure that was there longest; nothing if none was.
    std::optional<Evidence> mean() const;

  private:
    struct Measure {
        double limit;
        double sum;  // value times seconds
        double seconds;
    };
    std::array<std::optional<Measure>, 2> measures_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_EVIDENCE_MEAN_H_
