#ifndef ZEL_TOOLS_CLI_BACKOFF_H_
#define ZEL_TOOLS_CLI_BACKOFF_H_

#include <algorithm>
#include <random>

namespace zel_monitor {

/// Waiting times that double from `first_s` to `most_s` seconds, each shortened at random by up to a half, so
/// that those who failed together do not come back together.
class Backoff {
  public:
    Backoff(double first_s, double most_s, unsigned seed)
        : first_s_(first_s), most_s_(most_s), next_s_(first_s), random_(seed) {}

    double next() {
        const double whole_s = next_s_;
        next_s_ = std::min(2.0 * next_s_, most_s_);
        return whole_s * std::uniform_real_distribution<double>(0.5, 1.0)(random_);
    }
    /// It worked: the next failure waits as the first one.
    void reset() { next_s_ = first_s_; }

  private:
    double first_s_;
    double most_s_;
    double next_s_;
    std::minstd_rand random_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_BACKOFF_H_
