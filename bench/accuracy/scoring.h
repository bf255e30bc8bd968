#ifndef ZEL_BENCH_ACCURACY_SCORING_H_
#define ZEL_BENCH_ACCURACY_SCORING_H_

#include <zel/events/event.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace bench::accuracy {

/// Length of what both share over the length of what either covers, 0 to 1.
double overlap(ZEL::TimeSpan a, ZEL::TimeSpan b);

/// How well what was found fits what is there.
struct Score {
    size_t hits = 0;          ///< found, with an overlap of at least one half
    size_t misses = 0;        ///< there, but not found
    size_t false_alarms = 0;  ///< found, but not there
    double onset_sum_s = 0.0;
    double length_error_sum_s = 0.0;

    void add(const Score& other);
    std::optional<double> precision() const;  ///< none if nothing was found
    std::optional<double> recall() const;     ///< none if nothing was there
    /// Mean over the hits of how much later they begin than the truth.
    std::optional<double> onsetDelay() const;
    /// Mean over the hits of how much the lengths differ, either way.
    std::optional<double> lengthError() const;
    /// Right answers over all that were given or due; 1 if there were none.
    double accuracy() const;
};

/// Pairs each true stretch with the found one that overlaps it best. What is found mostly within `ignored`
/// stretches is no false alarm.
Score scoreOf(const std::vector<ZEL::TimeSpan>& truth, const std::vector<ZEL::TimeSpan>& found,
              const std::vector<ZEL::TimeSpan>& ignored = {});

/// For faults that come and go within a true stretch: each that lies there with more than 70 % of its length
/// is right, and one is enough.
Score scoreWithin(const std::vector<ZEL::TimeSpan>& truth, const std::vector<ZEL::TimeSpan>& found,
                  const std::vector<ZEL::TimeSpan>& ignored = {});

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_SCORING_H_
