#ifndef ZEL_SRC_JUDGES_SMALL_MOTION_H_
#define ZEL_SRC_JUDGES_SMALL_MOTION_H_

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace ZELJudges {

/// Follows something small that moves over a plain ground: it leaves one place as it comes to another. A
/// title that is faded or typed in does not, and a cut is no motion.
class SmallMotion {
  public:
    struct Span {
        double start_s;
        double end_s;
    };

    /// The cells of the next frame, as many as those before.
    void see(const std::vector<uint16_t>& cells, double time_s);

    /// Whether it had moved for a while when a stretch began that looks frozen from some point in its first
    /// half on.
    bool ledTo(Span still) const;

    /// Whether it goes on after a stretch that it led to, without a cut; unknown while that may be.
    std::optional<bool> goesOnAfter(Span still) const;

  private:
    enum class Change { kNone, kMotion, kCut };

    Change changeTo(const std::vector<uint16_t>& cells) const;

    std::vector<uint16_t> before_;
    double before_s_ = 0.0;
    double cut_s_ = -std::numeric_limits<double>::infinity();  // the last one
    std::vector<Span> spans_;                                  // in which something moved all the time
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_SMALL_MOTION_H_
