#include "input/gap_sum.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr double kMostS = 0.99;          // what is longer is a stall, or a discontinuity
constexpr uint64_t kLeastFrames = 20;    // to tell how far apart they usually are
constexpr double kMostDeviation = 0.25;  // of frames that are alike; timestamps may be rounded
constexpr double kMostRoundingMs = 2.0;
constexpr double kLeastAlike = 0.6;  // of all frames
constexpr double kGap = 1.6;         // as far apart as that many frames

void extend(ZEL::TimeSpan& span, bool is_first, ZEL::TimeSpan other) {
    span = is_first ? other
                    : ZEL::TimeSpan{std::min(span.start_s, other.start_s), std::max(span.end_s, other.end_s)};
}

}  // namespace

void GapSum::add(double time_s, double length_s) {
    const double distance_s = last_s_ ? time_s - *last_s_ : 0.0;
    const double excess_s = distance_s - last_length_s_;
    if (last_s_ && std::abs(excess_s) < kMostS && distance_s >= 0.0) {
        covered_s_ += distance_s;
        excess_s_ += excess_s;
        Slot& slot = slots_[std::min(static_cast<size_t>(std::lround(distance_s * kSlots)), kSlots - 1)];
        ++slot.frames;
        if (distance_s >= kGap * last_length_s_) {
            extend(slot.span, slot.gaps == 0, {time_s - std::max(excess_s, 0.0), time_s});
            ++slot.gaps;
        }
        ++frames_;
    }
    last_s_ = time_s;
    last_length_s_ = length_s;
}

GapSum::Missing GapSum::missing() const {
    if (covered_s_ <= 0.0 || (!states_length_ && frames_ < kLeastFrames)) {
        return {};
    }
    Missing missing = missingOfAlike();
    missing.share = std::clamp((states_length_ ? excess_s_ : missing.share) / covered_s_, 0.0, 1.0);
    return missing;
}

/// Of frames most of which are as far apart as the one in the middle, by their distances: seconds.
GapSum::Missing GapSum::missingOfAlike() const {
    size_t median_ms = 0;
    for (uint64_t below = 0; median_ms < kSlots; ++median_ms) {
        below += slots_[median_ms].frames;
        if (2 * below >= frames_) {
            break;
        }
    }
    const auto usual_ms = static_cast<double>(median_ms);
    const double most_off_ms = std::max(kMostRoundingMs, kMostDeviation * usual_ms);
    uint64_t alike = 0;
    uint64_t gaps = 0;
    double missing_ms = 0.0;
    Missing missing;
    for (size_t ms = 0; ms < kSlots; ++ms) {
        const Slot& slot = slots_[ms];
        const auto distance_ms = static_cast<double>(ms);
        if (std::abs(distance_ms - usual_ms) <= most_off_ms) {
            alike += slot.frames;
        } else if (distance_ms >= kGap * usual_ms && slot.gaps > 0) {
            missing_ms += slot.gaps * (distance_ms - usual_ms);
            extend(missing.span, gaps == 0, slot.span);
            gaps += slot.gaps;
        }
    }
    const bool are_alike = static_cast<double>(alike) >= kLeastAlike * static_cast<double>(frames_);
    missing.share = are_alike ? missing_ms / kSlots : 0.0;
    return missing;
}

}  // namespace zel_monitor
