#ifndef ZEL_TOOLS_INPUT_GAP_SUM_H_
#define ZEL_TOOLS_INPUT_GAP_SUM_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zel_monitor {

/// Sums up the gaps of a track that are each too small for a stall.
class GapSum {
  public:
    /// Whether frames state their own length, as sound does, or are judged by how far they are apart.
    explicit GapSum(bool states_length) : states_length_(states_length) {}

    void add(double time_s, double length_s);

    /// Share of the stream that is missing in such gaps, 0 to 1. None of a stream of frames that are not
    /// alike, in which nothing is known to be missing.
    double share() const;

  private:
    static constexpr size_t kSlots = 1000;  // of a millisecond

    double missingOfAlike() const;

    bool states_length_;
    std::optional<double> last_s_ = {};
    double last_length_s_ = 0.0;
    double covered_s_ = 0.0;  // from frame to frame, but for what is longer than a small gap
    double excess_s_ = 0.0;   // of that, what no frame covers by its length
    std::array<uint32_t, kSlots> distances_{};  // how many frames are so far apart
    uint64_t frames_ = 0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_GAP_SUM_H_
