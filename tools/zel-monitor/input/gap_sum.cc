#include "input/gap_sum.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr double kMostS = 1.0;         // what is longer is a stall, or a discontinuity
constexpr uint64_t kLeastFrames = 20;  // to tell how far apart they usually are
constexpr double kMostDeviation =
    0.25;  // of frames that are alike; timestamps may be rounded to milliseconds
constexpr double kMostRoundingMs = 2.0;
constexpr double kLeastAlike = 0.6;  // of all frames
constexpr double kGap = 1.6;         // as far apart as that many frames

}  // namespace

void GapSum::add(double time_s, double length_s) {
    const double distance_s = last_s_ ? time_s - *last_s_ : 0.0;
    if (last_s_ && std::abs(distance_s - last_length_s_) < kMostS && distance_s >= 0.0) {
        covered_s_ += distance_s;
        excess_s_ += distance_s - last_length_s_;
        const auto slot = static_cast<size_t>(std::lround(distance_s * kSlots));
        ++distances_[std::min(slot, kSlots - 1)];
        ++frames_;
    }
    last_s_ = time_s;
    last_length_s_ = length_s;
}

double GapSum::share() const {
    if (covered_s_ <= 0.0 || (!states_length_ && frames_ < kLeastFrames)) {
        return 0.0;
    }
    return std::clamp((states_length_ ? excess_s_ : missingOfAlike()) / covered_s_, 0.0, 1.0);
}

/// Of frames most of which are as far apart as the one in the middle, by their distances.
double GapSum::missingOfAlike() const {
    size_t median_ms = 0;
    for (uint64_t below = 0; median_ms < kSlots; ++median_ms) {
        below += distances_[median_ms];
        if (2 * below >= frames_) {
            break;
        }
    }
    const auto usual_ms = static_cast<double>(median_ms);
    const double most_off_ms = std::max(kMostRoundingMs, kMostDeviation * usual_ms);
    uint64_t alike = 0;
    double missing_ms = 0.0;
    for (size_t ms = 0; ms < kSlots; ++ms) {
        const auto distance_ms = static_cast<double>(ms);
        if (std::abs(distance_ms - usual_ms) <= most_off_ms) {
            alike += distances_[ms];
        } else if (distance_ms >= kGap * usual_ms) {
            missing_ms += distances_[ms] * (distance_ms - usual_ms);
        }
    }
    const bool are_alike = static_cast<double>(alike) >= kLeastAlike * static_cast<double>(frames_);
    return are_alike ? missing_ms / kSlots : 0.0;
}

}  // namespace zel_monitor
