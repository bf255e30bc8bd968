#ifndef ZEL_TOOLS_INPUT_GAP_SUM_H_
#define ZEL_TOOLS_INPUT_GAP_SUM_H_

#include <zel/events/event.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zel_monitor {

/// Sums up the gaps of a track that are each too small for a stall.
class GapSum {
  public:
    /// Whether frames state their own length for certain, as sound does, or are judged by how far they are
    /// apart.
    explicit GapSum(bool states_length) : states_length_(states_length) {}

    void add(double time_s, double length_s);

    /// What is missing in small gaps.
    struct Missing {
        double share = 0.0;       ///< of the stream, 0 to 1
        ZEL::TimeSpan span = {};  ///< from the first gap to the last
    };
    /// None of a stream of frames that are not alike, in which nothing is known to be missing.
    Missing missing() const;

  private:
    /// Frames that are so many milliseconds apart.
    struct Slot {
        uint32_t frames = 0;
        uint32_t gaps = 0;        ///< those of them that end before the next one begins
        ZEL::TimeSpan span = {};  ///< of the gaps
    };
    static constexpr size_t kSlots = 1000;

    Missing missingOfAlike() const;

    bool states_length_;
    std::optional<double> last_s_ = {};
    double last_length_s_ = 0.0;
    double covered_s_ = 0.0;  // from frame to frame, but for what is longer than a small gap
    double excess_s_ = 0.0;   // of that, what no frame covers by its length
    std::array<Slot, kSlots> slots_{};
    uint64_t frames_ = 0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_GAP_SUM_H_
