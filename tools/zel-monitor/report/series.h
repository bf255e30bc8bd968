#ifndef ZEL_TOOLS_REPORT_SERIES_H_
#define ZEL_TOOLS_REPORT_SERIES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace zel_monitor {

/// A measurement over stream time in a bounded number of equal steps: when they are used up, each two become
/// one, so that a long stream costs no more than a short one.
class Series {
  public:
    explicit Series(double step_s, size_t most_steps = kMostSteps)
        : step_s_(step_s), most_steps_(most_steps) {}

    void add(double time_s, double value);

    double step() const { return step_s_; }
    size_t size() const { return steps_.size(); }
    /// Mean of what fell into step `i`; none if nothing did.
    std::optional<double> at(size_t i) const;

  private:
    static constexpr size_t kMostSteps = 2000;

    struct Step {
        double sum = 0.0;
        uint32_t count = 0;
    };
    void halve();

    double step_s_;
    size_t most_steps_;
    std::vector<Step> steps_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_SERIES_H_
