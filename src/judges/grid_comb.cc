#include "judges/grid_comb.h"

#include <algorithm>
#include <cmath>

namespace ZELJudges {
namespace {

constexpr size_t kShortestPeriod = 8;
constexpr size_t kFewestTeeth = 6;  // a comb of fewer is chance
constexpr float kTrimmedShare =
    0.25F;                            // of a comb's boundaries, those that show most: one texture is no grid
constexpr float kLivingShare = 0.5F;  // of all strips count as living at least
constexpr size_t kPhaseSlack = 2;     // an edge is a few samples wide

/// The largest of the shares of phases more than kPhaseSlack away from `phase`, around the ring.
float largestElsewhere(const std::vector<float>& shares, size_t phase) {
    float largest = 0.0F;
    for (size_t p = 0; p < shares.size(); ++p) {
        const size_t apart = p > phase ? p - phase : phase - p;
        if (std::min(apart, shares.size() - apart) > kPhaseSlack) {
            largest = std::max(largest, shares[p]);
        }
    }
    return largest;
}

/// How much the best phase stands out, if `same` at a phase is what both must show and `either` what one
/// does.
float standingOut(const std::vector<float>& same, const std::vector<float>& either) {
    const size_t best = static_cast<size_t>(std::max_element(same.begin(), same.end()) - same.begin());
    return std::max(0.0F, same[best] - largestElsewhere(either, best));
}

}  // namespace

float GridComb::trimmedShare(size_t phase, size_t period) {
    const size_t size = counts_->living.size();
    teeth_.clear();
    for (size_t b = kGridMargin + (phase + period - kGridMargin % period) % period; b + kGridMargin < size;
         b += period) {
        const auto incoherent = static_cast<float>(counts_->incoherent[b]);
        const auto living = static_cast<float>(counts_->living[b]);
        teeth_.push_back({incoherent / std::max(living, 1.0F), incoherent, living});
    }
    const auto kept =
        static_cast<std::ptrdiff_t>(std::ceil(static_cast<float>(teeth_.size()) * (1.0F - kTrimmedShare)));
    if (kept == 0) {
        return 0.0F;
    }
    const auto end = teeth_.begin() + kept;
    if (end != teeth_.end()) {
        std::nth_element(teeth_.begin(), end, teeth_.end(),
                         [](const Tooth& a, const Tooth& b) { return a.share < b.share; });
    }
    float incoherent = 0.0F;
    float living = 0.0F;
    std::for_each(teeth_.begin(), end, [&](const Tooth& tooth) {
        incoherent += tooth.incoherent;
        living += tooth.living;
    });
    return incoherent / std::max(living, least_living_ * static_cast<float>(kept));
}

void GridComb::measurePhases(size_t period) {
    shares_.resize(period);
    for (size_t phase = 0; phase < period; ++phase) {
        shares_[phase] = trimmedShare(phase, period);
    }
}

CombStrength GridComb::strength(const EdgeProfile::Counts& counts, size_t strips, size_t longest,
                                size_t period_step) {
    counts_ = &counts;
    least_living_ = std::max(1.0F, kLivingShare * static_cast<float>(strips));
    CombStrength strength;
    for (size_t period = kShortestPeriod; period <= longest; period += period_step) {
        if (counts.living.size() < 2 * kGridMargin + kFewestTeeth * period) {
            break;
        }
        measurePhases(period);
        strength.any = std::max(strength.any, standingOut(shares_, shares_));
        if (period == 2 * kShortestPeriod) {
            std::vector<float> both(kShortestPeriod);
            std::vector<float> either(kShortestPeriod);
            for (size_t p = 0; p < kShortestPeriod; ++p) {
                both[p] = std::min(shares_[p], shares_[p + kShortestPeriod]);
                either[p] = std::max(shares_[p], shares_[p + kShortestPeriod]);
            }
            strength.eight = standingOut(both, either);
        }
    }
    return strength;
}

}  // namespace ZELJudges
